/**
 * @file main.cpp
 * vok-drive FILE --output PATH [--printer NAME] [--title TEXT] [--job NUMBER]
 *           [--cancel-after MILLISECONDS]
 *
 * Stands in for spooler and print processor where there is no spooler that loads ours, as on a 9x
 * system under Wine: drives one job through the library with the print processor's own job driver,
 * and writes the document to a file. The job can be cancelled that long after its start. Exit
 * status: 0 printed, refused or cancelled as the account says, 1 failed, 2 misused or no such file
 * or printer.
 */
#include <windows.h>
#include <winspool.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "common/file.h"
#include "common/machine.h"
#include "common/options.h"
#include "common/trace.h"
#include "job/job_driver.h"

namespace vok::sample {
namespace {

/// A document in memory that is printed into a file.
class FileJob final : public JobHost {
  public:
    FileJob(std::string document, std::string output, DWORD cancelAfter)
        : document_(std::move(document)), output_(std::move(output)), cancelAfter_(cancelAfter) {}

    ~FileJob() override {
        if (file_ != INVALID_HANDLE_VALUE)
            CloseHandle(file_);
    }

    bool read(char* buffer, DWORD size, DWORD& count) override {
        const std::size_t rest = document_.size() - position_;
        count = static_cast<DWORD>(std::min<std::size_t>(size, rest));
        std::memcpy(buffer, document_.data() + position_, count);
        position_ += count;
        return true;
    }

    bool openPort() override {
        file_ = CreateFileA(output_.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file_ == INVALID_HANDLE_VALUE)
            say(withError("the port can't be opened", GetLastError()));
        return file_ != INVALID_HANDLE_VALUE;
    }

    bool write(std::string_view bytes) override {
        DWORD written = 0;
        const bool done = WriteFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                                    nullptr) != 0 &&
                          written == bytes.size();
        if (!done)
            say(withError("the port can't be written", GetLastError()));
        return done;
    }

    bool cancelled() override { return ticks() - start_ >= cancelAfter_; }
    void pause(DWORD milliseconds) override { Sleep(milliseconds); }
    DWORD ticks() override { return GetTickCount(); }
    void say(const std::string& text) override { trace("driver", text); }

  private:
    std::string document_;
    std::string output_;
    DWORD start_ = GetTickCount();
    DWORD cancelAfter_;
    std::size_t position_ = 0;
    HANDLE file_ = INVALID_HANDLE_VALUE;
};

// The name by value, because OpenPrinterA wants it writable.
// cppcheck-suppress passedByValue
bool canOpen(std::string printer) {
    HANDLE handle = nullptr;
    if (OpenPrinterA(printer.data(), &handle, nullptr) == 0) {
        complain(withError("can't open the printer '" + printer + "'", GetLastError()));
        return false;
    }
    ClosePrinter(handle);
    return true;
}

int run(const Options& options) {
    const std::string output = options.get("--output", "");
    if (options.argument.empty() || output.empty()) {
        complain("say which FILE to print, and with --output PATH where to");
        return ExitMisused;
    }
    std::optional<std::string> document = readFile(options.argument);
    const std::string printer = options.get("--printer", default_printer);
    if (!document || !canOpen(printer))
        return ExitMisused;
    VokLibrary library;
    const DWORD error = library.load(companionDirectory(), VOK_MODEL_PREFIX);
    if (error != ERROR_SUCCESS) {
        complain(withError("can't load " + library.path(), error));
        return ExitFailed;
    }
    const std::string cancelAfter = options.get("--cancel-after", std::to_string(MAXDWORD));
    FileJob job(std::move(*document), output, std::strtoul(cancelAfter.c_str(), nullptr, 10));
    const std::string title =
        options.get("--title", options.argument.substr(options.argument.find_last_of("\\/") + 1));
    const std::string number = options.get("--job", std::to_string(GetCurrentProcessId()));
    const JobTicket ticket{printer, output, title, std::strtoul(number.c_str(), nullptr, 10)};
    const JobEnd end = JobDriver(library.calls(), job, ticket, JobLimits{}).run();
    std::printf("the job was %s\n", toText(end));
    return end == JobEnd::Failed ? ExitFailed : ExitDone;
}

}  // namespace
}  // namespace vok::sample

int main(int count, char** words) {
    const auto options = vok::sample::parseOptions(
        count, words, {"--printer", "--output", "--title", "--job", "--cancel-after"});
    return options ? vok::sample::run(*options) : vok::sample::ExitMisused;
}
