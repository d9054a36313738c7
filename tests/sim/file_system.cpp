#include "file_system.h"

#include <memory>
#include <string>
#include <vector>

namespace vok::test {

std::string FileSystem::text(const std::string& path) const {
    const auto data = find(path);
    return data ? data->content : "";
}

std::vector<std::string> FileSystem::lines(const std::string& path) const {
    std::vector<std::string> result;
    const std::string all = text(path);
    size_t begin = 0;
    while (begin < all.size()) {
        const size_t end = all.find("\r\n", begin);
        if (end == std::string::npos) {
            result.push_back(all.substr(begin));
            break;
        }
        result.push_back(all.substr(begin, end - begin));
        begin = end + 2;
    }
    return result;
}

std::vector<std::string> FileSystem::paths() const {
    std::vector<std::string> result;
    for (const auto& [path, data] : files_) {
        result.push_back(path);
    }
    return result;
}

void FileSystem::put(const std::string& path, const std::string& content) {
    create(path)->content = content;
}

const FileData* FileSystem::file(const std::string& path) const {
    return find(path).get();
}

void FileSystem::pretendSize(const std::string& path, ULONGLONG size) {
    const auto data = create(path);
    data->extraSize = size - data->content.size();
}

DWORD FileSystem::refusal(const std::string& path) const {
    const auto it = errors_.find(path);
    return it == errors_.end() ? ERROR_SUCCESS : it->second;
}

std::shared_ptr<FileData> FileSystem::find(const std::string& path) const {
    const auto it = files_.find(path);
    return it == files_.end() ? nullptr : it->second;
}

std::shared_ptr<FileData> FileSystem::create(const std::string& path) {
    auto& data = files_[path];
    if (!data) {
        data = std::make_shared<FileData>();
        data->path = path;
    }
    return data;
}

}  // namespace vok::test
