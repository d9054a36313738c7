// What a log record belongs to.
#pragma once

#include <cstdint>
#include <string>

namespace vok {

// A name, which is also the name of the option that holds the category's mask, and the mask that
// counts where that option is missing. A trace only points at its category; XFilesLogger keeps a
// copy of its own.
class LogCategory {
  public:
    LogCategory(const std::string& name, std::uint32_t defaultMask);
    LogCategory(const LogCategory&) = default;
    LogCategory& operator=(const LogCategory&) = delete;

    virtual const std::string& name() const;
    virtual void setDefaultMask(std::uint32_t mask);
    virtual std::uint32_t defaultMask() const;
    virtual ~LogCategory();

  private:
    std::string name_;
    std::uint32_t defaultMask_;
};

}  // namespace vok
