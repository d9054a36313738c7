// Where the account goes: a file, or the standard output.
#pragma once

#include <fmt/format.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace vok::log {

// A file is written beside its place and takes it when it is whole; until then, and after a
// failure, what was there stays.
class Writer {
  public:
    static constexpr const char* standardOutput = "-";

    // Throws std::runtime_error, as all of it does.
    explicit Writer(const std::string& path);
    ~Writer();
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void write(std::string_view text);
    template <typename... Values>
    void print(fmt::format_string<Values...> form, Values&&... values) {
        write(fmt::format(form, std::forward<Values>(values)...));
    }
    // What was written is there for others.
    void flush();
    // Everything is where it belongs once this has returned.
    void close();

  private:
    [[noreturn]] void fail() const;
    void openBeside();

    std::string path_;
    std::filesystem::path place_;   // empty where the file is written directly
    std::filesystem::path beside_;  // empty once it has taken its place
    std::FILE* file_ = nullptr;
};

}  // namespace vok::log
