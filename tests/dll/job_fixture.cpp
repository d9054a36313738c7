#include "dll/job_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace vok::test {
namespace {

constexpr size_t pageSize = 4096;
constexpr const char* libraryPath = R"(C:\WINDOWS\system32\spool\prtprocs\x64\DEMOvok.dll)";

size_t pagesFor(size_t size) {
    return (size + pageSize - 1) / pageSize * pageSize;
}

// As one text, of which a failure shows the differing lines.
std::string joined(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

// What an export does first, where there is no configuration library.
Lines frameCalls(const System& system) {
    const std::string quoted = '"' + system.spooler.driverDirectory + '"';
    const std::string path = system.modules.libraryPath;
    return {"GetModuleFileNameA(library, out, 260) = " + std::to_string(path.size()) + " -> \"" +
                path + '"',
            "GetPrinterDriverDirectoryA(null, null, 1, out, 260, out) = 1 -> " + quoted,
            "LoadLibraryA(\"DEMOcfg.dll\") = null (error 126)",
            "LoadLibraryA(\"" + system.driverPath() + "DEMOcfg.dll\") = null (error 126)"};
}

}  // namespace

GuardedBytes::GuardedBytes(size_t size)
    : pages_(static_cast<BYTE*>(::VirtualAlloc(nullptr, pagesFor(size) + pageSize,
                                               MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE))),
      data_(pages_ + pagesFor(size) - size),
      size_(size) {
    DWORD before = 0;
    ::VirtualProtect(pages_ + pagesFor(size), pageSize, PAGE_NOACCESS, &before);
}

GuardedBytes::~GuardedBytes() {
    ::VirtualFree(pages_, 0, MEM_RELEASE);
}

Job::Job(const OsRelease& os, Log log) : system(os) {
    system.modules.libraryPath = libraryPath;
    system.addPrinter("Office");
    if (log == Log::on) {
        system.startLog();
    }
    for (size_t i = 0; i < VOK_NEMB_BLOCK_SIZE; ++i) {
        nembBlock.data()[i] = static_cast<BYTE>(i + 1);
    }
    std::memcpy(nembBlock.data(), "Office", sizeof "Office");
    for (size_t i = 0; i < VOK_DRAL_BLOCK_SIZE; ++i) {
        dralBlock.data()[i] = static_cast<BYTE>(i + 1);
    }
    system.calls.clear();
}

Lines Job::newLines() {
    constexpr std::string_view category = "VOK        ";
    Lines lines;
    for (const std::string& line : system.logLines()) {
        EXPECT_TRUE(line.starts_with(category)) << line;
        lines.push_back(line.substr(std::min(category.size(), line.size())));
    }
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(linesSeen_));
    linesSeen_ += lines.size();
    return lines;
}

void Job::expectNewLines(const Lines& expected) {
    EXPECT_EQ(joined(newLines()), joined(expected));
}

Lines Job::newCalls() {
    Lines calls = system.calls.lines();
    const Lines frame = frameCalls(system);
    system.calls.clear();
    if (calls.size() < frame.size() || !std::equal(frame.begin(), frame.end(), calls.begin())) {
        ADD_FAILURE() << "the frame's calls: " << testing::PrintToString(calls);
        return calls;
    }
    calls.erase(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(frame.size()));
    return calls;
}

void Job::expectNewCalls(const Lines& expected) {
    EXPECT_EQ(joined(newCalls()), joined(expected));
}

void Job::expectNothingOpenBut(const Lines& left) const {
    Lines open;
    for (const std::string& name : system.handles.openNames()) {
        if (!name.starts_with("module#") && !name.starts_with("window#")) {
            open.push_back(name);
        }
    }
    EXPECT_EQ(open, left);
    EXPECT_EQ(system.complaints, Lines());
}

Lines operator+(Lines first, const Lines& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Lines traceOf(const std::string& name) {
    return {"+" + name, "-" + name};
}

}  // namespace vok::test
