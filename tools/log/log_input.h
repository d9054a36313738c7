// The lines of a log file of any size, compressed or not, or of the standard input. Text in UTF-16,
// as editors and shells make it of a log, is handed out as UTF-8; a mark at the beginning is not.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

struct gzFile_s;

namespace vok::log {

struct InputLine {
    std::string_view text;  // without its end; valid until the next line is read
    bool whole = true;      // false when its end is missing, or too far away
};

// The volume and the number on it of a file that has a name, or that is open, whatever its name or
// link; nothing for what is no regular file.
using FileIdentity = std::pair<std::uint64_t, std::uint64_t>;
std::optional<FileIdentity> identityOf(const std::string& path);
std::optional<FileIdentity> identityOf(int descriptor);

class LogInput {
  public:
    // Lines beyond this length are handed out in part, and are not whole.
    static constexpr std::size_t maxLine = std::size_t{64} * 1024;
    static constexpr const char* standardInput = "-";

    // Throws std::runtime_error for what can't be opened or is no file. A growing file is no
    // compressed one, and may be renamed and deleted while it is read.
    explicit LogInput(const std::string& path, bool growing = false);

    // Nothing at the end of the file, or where it can't be read any further. In a growing file the
    // next call may find more, and a line without its end waits for it.
    std::optional<InputLine> next();

    // Whether another file has the growing one's name now, or none, or it was cut short.
    bool beganAnew() const;
    // The file grows no more: its last line is handed out as it is.
    void endGrowth() { growing_ = false; }

    // True when the end came too early: the file is damaged or incomplete.
    bool damaged() const { return damaged_; }

    // How much of the file is read, in bytes as they are on the disk.
    std::uint64_t position() const;
    // 0 when it can't be known.
    std::uint64_t size() const { return size_; }

  private:
    enum class Encoding { Unknown, Bytes, Utf16Little, Utf16Big };

    bool fill();
    void take(std::string_view raw);
    InputLine hand(std::size_t length, bool whole);

    std::string path_;
    bool growing_;
    std::unique_ptr<gzFile_s, int (*)(gzFile_s*)> file_;
    std::optional<FileIdentity> identity_;
    std::uint64_t size_ = 0;
    std::uint64_t taken_ = 0;  // bytes that were read, as they are without compression
    std::string raw_;          // as it was read
    std::string text_;         // in UTF-8
    std::size_t begin_ = 0;    // of what is not handed out yet
    Encoding encoding_ = Encoding::Unknown;
    char16_t surrogate_ = 0;             // the first of two units
    std::optional<unsigned char> half_;  // of a unit
    bool skipping_ = false;              // the rest of a line that was too long
    bool atEnd_ = false;
    bool damaged_ = false;
};

}  // namespace vok::log
