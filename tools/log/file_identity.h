// Which file a path or an open stream is, whatever its name or link.
#ifndef VOK_LOG_FILE_IDENTITY_H
#define VOK_LOG_FILE_IDENTITY_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace vok::log {

// The volume and the file's number on it.
using FileIdentity = std::pair<std::uint64_t, std::uint64_t>;

// Nothing for what is no regular file.
std::optional<FileIdentity> identityOf(const std::string& path);
std::optional<FileIdentity> identityOf(int descriptor);

}  // namespace vok::log

#endif
