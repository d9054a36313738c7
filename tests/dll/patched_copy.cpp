#include "patched_copy.h"

#include <cstdio>
#include <fstream>
#include <ios>
#include <iterator>
#include <stdexcept>
#include <string>

#include "sim/loaded_library.h"

namespace vok::test {
namespace {

std::string readProduct() {
    std::ifstream file(productDll(), std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (bytes.empty()) {
        throw std::runtime_error("cannot read " + productDll());
    }
    return bytes;
}

std::string freshPath() {
    char folder[MAX_PATH + 1] = "";
    char path[MAX_PATH + 1] = "";
    ::GetTempPathA(sizeof(folder), folder);
    ::GetTempFileNameA(folder, "vok", 0, path);
    return path;
}

}  // namespace

PatchedCopy::PatchedCopy(const std::string& import, const std::string& instead) {
    std::string bytes = readProduct();
    const std::string name = import + '\0';
    const size_t place = bytes.find(name);
    if (place == std::string::npos || instead.size() > import.size()) {
        throw std::runtime_error("cannot replace the import " + import);
    }
    bytes.replace(place, name.size(), instead + std::string(name.size() - instead.size(), '\0'));
    path_ = freshPath();
    std::ofstream file(path_, std::ios::binary);
    if (!file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()))) {
        throw std::runtime_error("cannot write " + path_);
    }
}

PatchedCopy::~PatchedCopy() {
    std::remove(path_.c_str());
}

}  // namespace vok::test
