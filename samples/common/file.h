/**
 * @file file.h
 * Reads the document that is to be printed.
 */
#pragma once

#include <optional>
#include <string>

namespace vok::sample {

/// All bytes of a file; says on standard error why when it can't be read, and returns nothing.
std::optional<std::string> readFile(const std::string& path);

}  // namespace vok::sample
