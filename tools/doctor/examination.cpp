#include "examination.h"

#include <vok/companion.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>

#include "common/agreement.h"
#include "common/system.h"
#include "launch/printer_lookup.h"
#include "launch/system_directory.h"

namespace vok::doctor {

std::string Examination::companionPath(const char* fileName) const {
    const std::string name = prefix + fileName;
    return family == family9x ? pathInSystemDirectory(name.c_str()).text() : driverFolder() + name;
}

std::string Examination::hiddenWindow(const Printer& printer) const {
    return VOK_DRAL_HIDDEN +
           (options.suffix.empty() ? sample::titleSuffix(printer.name) : options.suffix);
}

std::string driverFolder() {
    NameBuffer folder;
    GetPrinterDriverDir(folder.data(), NameBuffer::size);
    return folder.text();
}

std::string textOf(const Win32Exception& failure) {
    return failure.getMessage() + " " + tools::errorText(failure.getErrorCode());
}

std::string bitNames(std::uint32_t bits,
                     std::initializer_list<std::pair<std::uint32_t, const char*>> names) {
    std::string text;
    for (const auto& [bit, name] : names) {
        if ((bits & bit) != 0) {
            text += (text.empty() ? "" : ", ") + std::string(name);
        }
    }
    return text;
}

}  // namespace vok::doctor
