// What most sources of the library and the samples include, compiled once. Each includes what it
// uses all the same: the checks compile without this.
#include <windows.h>
#include <winspool.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
