#include "dll/job_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace vok::test {
namespace {

constexpr const char* libraryPath = R"(C:\WINDOWS\system32\spool\prtprocs\x64\DEMOvok.dll)";

// A block of this beginning, then bytes that tell where they are.
std::string blockOf(std::string begin, size_t size) {
    while (begin.size() < size) {
        begin += static_cast<char>(begin.size() + 1);
    }
    return begin;
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

Job::Job(const OsRelease& os, Log log)
    : system(os),
      dralBlock(blockOf("", VOK_DRAL_BLOCK_SIZE).data(), VOK_DRAL_BLOCK_SIZE,
                GuardedBytes::Use::readOnly),
      nembBlock(blockOf({"Office", sizeof "Office"}, VOK_NEMB_BLOCK_SIZE).data(),
                VOK_NEMB_BLOCK_SIZE, GuardedBytes::Use::readOnly) {
    system.modules.libraryPath = libraryPath;
    system.addPrinter("Office");
    if (log == Log::on) {
        system.startLog();
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

GuardedBytes recordWithoutNul() {
    constexpr size_t suffix = offsetof(VKDATA, dralTitleSuffix);
    const std::string bytes = std::string(suffix, '\0') + std::string(sizeof(VKDATA) - suffix, 's');
    return {bytes.data(), bytes.size(), GuardedBytes::Use::readWrite};
}

Lines operator+(Lines first, const Lines& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Lines traceOf(const std::string& name) {
    return {"+" + name, "-" + name};
}

}  // namespace vok::test
