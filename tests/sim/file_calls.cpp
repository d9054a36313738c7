#include <algorithm>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "call.h"
#include "real.h"
#include "substitutes.h"
#include "system.h"

namespace vok::test {
namespace {

// Sharing: each opening must allow what the others do.
bool allowsSharing(const OpenedFile& one, DWORD access, DWORD share) {
    const auto clash = [](DWORD wanted, DWORD allowed) {
        return ((wanted & GENERIC_READ) && !(allowed & FILE_SHARE_READ)) ||
               ((wanted & GENERIC_WRITE) && !(allowed & FILE_SHARE_WRITE));
    };
    return !clash(access, one.share) && !clash(one.access, share);
}

bool isShared(FileSystem& files, const FileData& data, DWORD access, DWORD share) {
    std::erase_if(files.opened, [](const auto& weak) { return weak.expired(); });
    return std::all_of(files.opened.begin(), files.opened.end(), [&](const auto& weak) {
        const auto open = weak.lock();
        return open->data.get() != &data || allowsSharing(*open, access, share);
    });
}

DWORD openingError(FileSystem& files, const FileData* data, DWORD disposition, DWORD access,
                   DWORD share) {
    const bool mustExist = disposition == OPEN_EXISTING || disposition == TRUNCATE_EXISTING;
    if (!data && mustExist) {
        return ERROR_FILE_NOT_FOUND;
    }
    if (data && disposition == CREATE_NEW) {
        return ERROR_FILE_EXISTS;
    }
    return data && !isShared(files, *data, access, share) ? ERROR_SHARING_VIOLATION : 0;
}

HANDLE WINAPI createFileA(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                          DWORD disposition, DWORD flags, HANDLE pattern) {
    Call call("CreateFileA", path, hex(access), share,
              static_cast<const SECURITY_ATTRIBUTES*>(security), disposition, hex(flags),
              static_cast<const void*>(pattern));
    if (call.fails()) {
        return call.failed<HANDLE>();
    }
    System& system = call.system();
    if (const DWORD refusal = system.files.refusal(path)) {
        return call.done(INVALID_HANDLE_VALUE, refusal);
    }
    auto data = system.files.find(path);
    if (const DWORD e = openingError(system.files, data.get(), disposition, access, share)) {
        return call.done(INVALID_HANDLE_VALUE, e);
    }
    const bool isNew = !data;
    if (isNew) {
        data = system.files.create(path);
        data->security = describe(static_cast<const SECURITY_ATTRIBUTES*>(security));
    } else if (disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING) {
        data->content.clear();
    }
    ++data->openings;
    auto opened = std::make_shared<OpenedFile>(OpenedFile{data, access, share, 0});
    system.files.opened.push_back(opened);
    const bool tellsOfOld = disposition == OPEN_ALWAYS || disposition == CREATE_ALWAYS;
    call.setError(!isNew && tellsOfOld ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return call.done(system.handles.open(Kind::file, std::move(opened)));
}

ULONGLONG sizeOf(const FileData& data) {
    return data.content.size() + data.extraSize;
}

DWORD WINAPI getFileSize(HANDLE handle, LPDWORD high) {
    if (handle && handle != INVALID_HANDLE_VALUE && !isSimulated(handle)) {
        return real.getFileSize(handle, high);
    }
    Call call("GetFileSize", handle, Out{high});
    if (call.fails()) {
        return call.failed<DWORD>();
    }
    const auto* file = call.system().handles.get<OpenedFile>(handle, Kind::file);
    if (!file) {
        call.complain("not an open file: " + handleName(handle));
        return call.done(INVALID_FILE_SIZE, DWORD{ERROR_INVALID_HANDLE});
    }
    const ULONGLONG size = sizeOf(*file->data);
    if (high) {
        *high = static_cast<DWORD>(size >> 32);
    }
    return call.done(static_cast<DWORD>(size));
}

DWORD WINAPI setFilePointer(HANDLE handle, LONG distance, PLONG high, DWORD method) {
    if (handle && handle != INVALID_HANDLE_VALUE && !isSimulated(handle)) {
        return real.setFilePointer(handle, distance, high, method);
    }
    Call call("SetFilePointer", handle, distance, Out{high}, method);
    if (call.fails()) {
        return call.failed<DWORD>();
    }
    auto* file = call.system().handles.get<OpenedFile>(handle, Kind::file);
    if (!file) {
        call.complain("not an open file: " + handleName(handle));
        return call.done(INVALID_SET_FILE_POINTER, DWORD{ERROR_INVALID_HANDLE});
    }
    const ULONGLONG bases[] = {0, file->position, sizeOf(*file->data)};
    const LONGLONG target = static_cast<LONGLONG>(bases[method % 3]) + distance;
    if (high) {
        call.complain("distances of 64 bits are not simulated");
    }
    if (target < 0) {
        return call.done(INVALID_SET_FILE_POINTER, DWORD{ERROR_NEGATIVE_SEEK});
    }
    file->position = static_cast<ULONGLONG>(target);
    return call.done(static_cast<DWORD>(target));
}

// Writes at the file's position; a pretended size lies before the content's end.
void writeContent(OpenedFile& file, const char* data, size_t size) {
    FileData& to = *file.data;
    const ULONGLONG end = sizeOf(to);
    const size_t offset = file.position >= end ? to.content.size()
                                               : std::min<size_t>(file.position, to.content.size());
    if (to.content.size() < offset + size) {
        to.content.resize(offset + size);
    }
    to.content.replace(offset, size, data, size);
    file.position += size;
    ++to.writes;
}

BOOL writeFileData(Call& call, HANDLE handle, const void* data, DWORD size, DWORD* moved) {
    auto* file = call.system().handles.get<OpenedFile>(handle, Kind::file);
    if (!file) {
        call.complain("not open for writing: " + handleName(handle));
        return call.done(FALSE, DWORD{ERROR_INVALID_HANDLE});
    }
    if (!(file->access & GENERIC_WRITE)) {
        return call.done(FALSE, DWORD{ERROR_ACCESS_DENIED});
    }
    if (call.system().files.diskFull) {
        return call.done(FALSE, DWORD{ERROR_DISK_FULL});
    }
    writeContent(*file, static_cast<const char*>(data), size);
    *moved = size;
    return call.done(TRUE);
}

std::string writtenText(HANDLE handle, const void* data, DWORD size) {
    if (isSimulated(handle) && kindOf(handle) == Kind::file) {
        std::string text(static_cast<const char*>(data), size);
        if (text.ends_with("\r\n")) {
            text.resize(text.size() - 2);
        }
        return "\"" + text + "\"";
    }
    return describe(Bytes{data, size});
}

BOOL WINAPI writeFile(HANDLE handle, LPCVOID data, DWORD size, LPDWORD written,
                      LPOVERLAPPED overlapped) {
    if (handle && handle != INVALID_HANDLE_VALUE && !isSimulated(handle)) {
        return real.writeFile(handle, data, size, written, overlapped);
    }
    Call call("WriteFile", handle, writtenText(handle, data, size), size, Out{written},
              Out{overlapped});
    DWORD ignored = 0;
    DWORD* moved = written ? written : &ignored;
    *moved = 0;
    if (!written && !overlapped) {
        call.complain("neither a place for the count nor an overlapped structure");
    }
    if (call.fails()) {
        *moved = std::min(call.failure().count, size);
        return call.failed<BOOL>();
    }
    if (isSimulated(handle) && kindOf(handle) == Kind::pipe) {
        return call.system().pipes.write(call, handle, data, size, moved);
    }
    return writeFileData(call, handle, data, size, moved);
}

BOOL readFileData(Call& call, HANDLE handle, void* data, DWORD size, DWORD* moved) {
    auto* file = call.system().handles.get<OpenedFile>(handle, Kind::file);
    if (!file || !(file->access & GENERIC_READ)) {
        return call.done(FALSE,
                         static_cast<DWORD>(file ? ERROR_ACCESS_DENIED : ERROR_INVALID_HANDLE));
    }
    const std::string& content = file->data->content;
    const size_t offset = std::min<size_t>(file->position, content.size());
    const size_t count = std::min<size_t>(size, content.size() - offset);
    std::memcpy(data, content.data() + offset, count);
    file->position += count;
    *moved = static_cast<DWORD>(count);
    return call.done(TRUE, describe(count) + " bytes");
}

BOOL WINAPI readFile(HANDLE handle, LPVOID data, DWORD size, LPDWORD read,
                     LPOVERLAPPED overlapped) {
    if (handle && handle != INVALID_HANDLE_VALUE && !isSimulated(handle)) {
        return real.readFile(handle, data, size, read, overlapped);
    }
    Call call("ReadFile", handle, Out{data}, size, Out{read}, Out{overlapped});
    DWORD ignored = 0;
    DWORD* moved = read ? read : &ignored;
    *moved = 0;
    if (call.fails()) {
        *moved = std::min(call.failure().count, size);
        std::memset(data, 0, *moved);
        return call.failed<BOOL>();
    }
    if (isSimulated(handle) && kindOf(handle) == Kind::pipe) {
        return call.system().pipes.read(call, handle, data, size, moved);
    }
    return readFileData(call, handle, data, size, moved);
}

BOOL WINAPI deleteFileA(LPCSTR path) {
    Call call("DeleteFileA", path);
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    FileSystem& files = call.system().files;
    if (const DWORD refusal = files.refusal(path)) {
        return call.done(FALSE, refusal);
    }
    if (!files.exists(path)) {
        return call.done(FALSE, DWORD{ERROR_FILE_NOT_FOUND});
    }
    files.remove(path);
    return call.done(TRUE);
}

// The runtime closes its own, real handles by the same import.
BOOL WINAPI closeHandle(HANDLE handle) {
    if (handle && handle != INVALID_HANDLE_VALUE && !isSimulated(handle)) {
        return real.closeHandle(handle);
    }
    Call call("CloseHandle", handle);
    if (call.fails()) {
        call.system().handles.close(handle);
        return call.failed<BOOL>();
    }
    if (handle == INVALID_HANDLE_VALUE) {
        return call.done(TRUE);  // the same value as the current process's handle
    }
    if (!handle) {
        return call.done(FALSE, DWORD{ERROR_INVALID_HANDLE});
    }
    return call.system().closeHandle(call, handle, kindOf(handle))
               ? call.done(TRUE)
               : call.done(FALSE, DWORD{ERROR_INVALID_HANDLE});
}

}  // namespace

std::span<const Substitute> fileSubstitutes() {
    static const Substitute all[] = {
        substitute("CreateFileA", createFileA),
        substitute("GetFileSize", getFileSize),
        substitute("SetFilePointer", setFilePointer),
        substitute("WriteFile", writeFile),
        substitute("ReadFile", readFile),
        substitute("DeleteFileA", deleteFileA),
        substitute("CloseHandle", closeHandle),
    };
    return all;
}

}  // namespace vok::test
