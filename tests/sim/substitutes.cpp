#include "substitutes.h"

#include <map>
#include <string_view>

namespace vok::test {
namespace {

using Table = std::map<std::string_view, void*>;

const Table& table() {
    static const Table made = [] {
        Table all;
        for (const auto& subject :
             {clockSubstitutes(), versionSubstitutes(), moduleSubstitutes(), fileSubstitutes(),
              fileStreamSubstitutes(), mutexSubstitutes(), pipeSubstitutes(), processSubstitutes(),
              tokenSubstitutes(), securitySubstitutes(), registrySubstitutes(),
              desktopSubstitutes(), spoolerSubstitutes(), lockSubstitutes()}) {
            for (const Substitute& one : subject) {
                all.emplace(one.name, one.function);
            }
        }
        return all;
    }();
    return made;
}

}  // namespace

void* substituteFor(std::string_view name) {
    const auto it = table().find(name);
    return it == table().end() ? nullptr : it->second;
}

}  // namespace vok::test
