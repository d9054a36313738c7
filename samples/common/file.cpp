#include "file.h"

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "machine.h"
#include "options.h"

namespace vok::sample {

std::optional<std::string> readFile(const std::string& path) {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        complain(withError("can't open the file " + path, GetLastError()));
        return std::nullopt;
    }
    std::string bytes;
    std::vector<char> buffer(size_t{64} * 1024);
    DWORD count = 0;
    DWORD error = ERROR_SUCCESS;
    do {
        if (ReadFile(file, buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) == 0)
            error = GetLastError();
        bytes.append(buffer.data(), error == ERROR_SUCCESS ? count : 0);
    } while (error == ERROR_SUCCESS && count != 0);
    CloseHandle(file);
    if (error == ERROR_SUCCESS)
        return bytes;
    complain(withError("can't read the file " + path, error));
    return std::nullopt;
}

}  // namespace vok::sample
