// The printers of the simulated machine.
#pragma once
#include <windows.h>

#include <map>
#include <optional>
#include <string>

#include "registry.h"

namespace vok::test {

struct Printer {
    std::string name;
    std::map<std::string, RegistryValue, IgnoringCase> data;
    size_t openings = 0;
};

class Spooler {
  public:
    // Without the version's subdirectory, as the system reports it.
    std::string driverDirectory = R"(C:\WINDOWS\system32\spool\drivers\x64)";
    // What GetPrinterDriverDirectoryA fails with; nothing: it works.
    std::optional<DWORD> driverDirectoryError;

    Printer& add(const std::string& name);
    Printer* find(const std::string& name);
    void setData(const std::string& printer, const std::string& value, RegistryValue data);

  private:
    std::map<std::string, Printer, IgnoringCase> printers_;
};

}  // namespace vok::test
