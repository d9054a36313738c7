// The simulated disk, in memory. Paths ignore case; every folder exists.
#pragma once
#include <windows.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "registry.h"

namespace vok::test {

struct FileData {
    std::string path;
    std::string content;
    std::string security;     // as records show it, of the opening that made the file
    ULONGLONG extraSize = 0;  // what the system reports above the content's size
    size_t openings = 0;      // successful ones
    size_t writes = 0;        // successful ones
};

struct OpenedFile {  // a file handle
    std::shared_ptr<FileData> data;
    DWORD access = 0;
    DWORD share = 0;
    ULONGLONG position = 0;
};

class FileSystem {
  public:
    bool exists(const std::string& path) const { return files_.contains(path); }
    std::string text(const std::string& path) const;  // empty when there is no such file
    // The lines without their CR LF; what follows the last one counts as a line too.
    std::vector<std::string> lines(const std::string& path) const;
    std::vector<std::string> paths() const;
    void put(const std::string& path, const std::string& content = "");
    void remove(const std::string& path) { files_.erase(path); }
    const FileData* file(const std::string& path) const;

    // Makes a file seem larger than its content: a sparse file of that size.
    void pretendSize(const std::string& path, ULONGLONG size);

    // Another program holds the file open without sharing.
    void lock(const std::string& path) { errors_[path] = ERROR_SHARING_VIOLATION; }
    // Every opening of that path fails with that error.
    void refuse(const std::string& path, DWORD error) { errors_[path] = error; }
    void unlock(const std::string& path) { errors_.erase(path); }

    bool diskFull = false;  // writes fail with 112

    // For the substitutes.
    DWORD refusal(const std::string& path) const;
    std::shared_ptr<FileData> find(const std::string& path) const;
    std::shared_ptr<FileData> create(const std::string& path);
    std::vector<std::weak_ptr<OpenedFile>> opened;

  private:
    std::map<std::string, std::shared_ptr<FileData>, IgnoringCase> files_;
    std::map<std::string, DWORD, IgnoringCase> errors_;
};

}  // namespace vok::test
