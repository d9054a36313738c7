// The exceptions of the library. Only Win32Exception is ever thrown.
#pragma once

#include <cstdint>
#include <string>

namespace vok {

// What failed, with the system's error code and the place that raised it. Copyable; thrown by
// value, caught by reference.
class Exception {
  public:
    // message: class and method, then the failing system call. errorCode: 0 when no system call is
    // at fault. sourceFile: without directory and ending, may be empty. line: the number by which
    // the place is known; fixed, whatever line of its file the place is on today; 0 where none is
    // given.
    Exception(std::string message, std::uint32_t errorCode, std::string sourceFile,
              std::uint32_t line);
    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;
    virtual ~Exception();

    // The error code in decimal; empty for 0.
    virtual std::string getErrorText() const;
    virtual std::uint32_t getErrorCode() const;
    virtual std::string getMessage() const;

    // For catch sites that hold the object through the base.
    std::string errorText() const { return getErrorText(); }
    std::uint32_t code() const { return getErrorCode(); }

    const std::string& sourceFile() const { return sourceFile_; }
    std::uint32_t line() const { return line_; }

  private:
    std::string message_;
    std::uint32_t errorCode_;
    std::string sourceFile_;
    std::uint32_t line_;
};

class Win32Exception : public Exception {
  public:
    using Exception::Exception;

    // "Win32(" + code + the system's text for it, without a closing parenthesis; empty for code 0.
    std::string getErrorText() const override;
};

// The system's US English text for an error code, with every CR and LF taken out; when it has none,
// "Error getting message:" and the error of the look-up.
std::string systemMessage(std::uint32_t code);

}  // namespace vok
