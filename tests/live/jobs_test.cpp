// Many jobs at once, and for long: every job gets its own companions' replies, every line of the
// log is whole, and nothing grows. VOK_TEST_LONG=1 runs the long measures.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "common/settings.h"
#include "live_test.h"

namespace vok::test {
namespace {

/// The long measure, or its short part.
std::size_t measure(std::size_t whole, std::size_t part) {
    return std::getenv("VOK_TEST_LONG") != nullptr ? whole : part;
}

void expectWholeLines(const std::vector<std::string>& lines) {
    const std::regex whole(
        R"(\d{4}/\d{2}/\d{2}-\d{2}:\d{2}:\d{2}\.\d{3} VOK        +[-+]?[A-Za-z0-9].*)");
    for (const std::string& line : lines) {
        if (!std::regex_match(line, whole))
            ADD_FAILURE() << "torn: '" << line << "'";
    }
}

class LiveJobsTest : public LiveRouteTest {
  protected:
    static constexpr std::size_t threads = 16;
    static constexpr std::size_t printers = 8;

    void addPrinters() {
        for (const char* event : {"OPENJOB", "STARTPAGE", "ENDPAGE"})
            script("NEMB", event, "sum");
        script("DRAL", "STARTPAGE", "sum");
        for (std::size_t number = 0; number < printers; ++number) {
            names_.push_back(machine().addPrinter("Crowd " + std::to_string(number)));
            LiveJob job(library(), names_.back(), 0);
            ASSERT_TRUE(job.reach());
            ASSERT_TRUE(waitForWindows(names_.back()));
        }
    }

    void expectReply(LONG reply, LONG expected, const char* what) {
        ++replies_;
        EXPECT_EQ(reply, expected) << what;
    }

    void runJob(const std::string& printer, DWORD number) {
        LiveJob job(library(), printer, number);
        expectReply(job.launch(), TRUE, "launch");
        expectReply(job.dral(SM_OPENJOB), YESPRINT, "DRAL opens");
        LONG reply = job.nemb(SM_OPENJOB);
        expectReply(reply, job.sum(), "NEMB opens");
        for (job.page = 1; job.page <= 2; ++job.page) {
            reply = job.dral(SM_STARTPAGE);
            expectReply(reply, job.sum(), "DRAL's page");
            reply = job.nemb(SM_STARTPAGE);
            expectReply(reply, fromNemb(job.sum()), "NEMB's page");
        }
        expectReply(job.dral(SM_CLOSEJOB), YESPRINT, "DRAL closes");
        expectReply(job.nemb(SM_CLOSEJOB), YESPRINT, "NEMB closes");
    }

    std::vector<std::string> names_;
    std::atomic<std::size_t> replies_{0};
};

TEST_P(LiveJobsTest, SixteenThreadsPrintToEightPrintersWhileTheConfigurationComesAndGoes) {
    addPrinters();
    const std::size_t jobs = measure(200, 10);
    std::atomic<std::size_t> running{threads};
    std::vector<std::unique_ptr<Caller>> callers;
    for (std::size_t thread = 0; thread < threads; ++thread) {
        callers.push_back(std::make_unique<Caller>([&, thread] {
            for (std::size_t job = 0; job < jobs; ++job)
                runJob(names_[thread % printers], static_cast<DWORD>(thread * 1000 + job));
            --running;
            return 0;
        }));
    }
    const std::string file = machine().programs() + "\\" + livePrefix() + "cfg.dll";
    const std::string away = machine().folder() + "\\away.dll";
    std::size_t gone = 0;
    while (running > 0) {
        gone += MoveFileA(file.c_str(), away.c_str()) != 0 ? 1U : 0U;
        Sleep(3);
        MoveFileA(away.c_str(), file.c_str());
        Sleep(30);
    }
    callers.clear();
    EXPECT_EQ(replies_, threads * jobs * 9);
    EXPECT_GT(gone, 0U);
    const std::vector<std::string> lines = readLines(machine().logPath());
    expectWholeLines(lines);
    std::printf(
        "%u threads, %u printers, %u jobs each by %s: %u replies, %u log lines, the "
        "configuration library went %u times\n",
        static_cast<unsigned>(threads), static_cast<unsigned>(printers),
        static_cast<unsigned>(jobs), toText(GetParam()).c_str(),
        static_cast<unsigned>(replies_.load()), static_cast<unsigned>(lines.size()),
        static_cast<unsigned>(gone));
}

INSTANTIATE_TEST_SUITE_P(By, LiveJobsTest, testing::ValuesIn(liveRoutes()),
                         [](const auto& test) { return toText(test.param); });

class LiveLogTest : public LiveTest {
  protected:
    static constexpr unsigned processes = 8;
    /// Entry and exit of two functions, and two messages.
    static constexpr std::size_t lines_of_a_call = 6;

    HANDLE startWriter(unsigned number, std::size_t calls) {
        std::string line = "\"" VOK_LIVE_FIXTURES "\\live_log_writer.exe\" \"" + library_ + "\" W" +
                           std::to_string(number) + " " + std::to_string(calls);
        STARTUPINFOA startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process{};
        EXPECT_TRUE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                   nullptr, &startup, &process))
            << line << ": error " << GetLastError();
        CloseHandle(process.hThread);
        return process.hProcess;
    }

    std::string library_;
};

TEST_F(LiveLogTest, EightProcessesWriteOneLogAndNoLineIsTornOrLost) {
    const std::size_t calls = measure(10000, 500) / lines_of_a_call + 1;
    ASSERT_EQ(sample::writeSetting("\\XFiles\\Logger", "CommonLog", 1UL), ERROR_SUCCESS);
    library_ = machine().copyLibrary("common");
    std::vector<HANDLE> writers;
    for (unsigned number = 0; number < processes; ++number)
        writers.push_back(startWriter(number, calls));
    for (const HANDLE writer : writers) {
        ASSERT_EQ(WaitForSingleObject(writer, INFINITE), WAIT_OBJECT_0);
        DWORD status = 1;
        GetExitCodeProcess(writer, &status);
        EXPECT_EQ(status, 0U);
        CloseHandle(writer);
    }
    const std::vector<std::string> lines = readLines("C:\\" + livePrefix() + "XFiles.log");
    expectWholeLines(lines);
    EXPECT_EQ(lines.size(), processes * calls * lines_of_a_call);
    std::set<std::string> named;
    for (const std::string& line : lines) {
        const std::size_t name = line.find("FN=");
        if (name != std::string::npos)
            named.insert(line.substr(name));
    }
    EXPECT_EQ(named.size(), processes * calls);
    EXPECT_TRUE(readLines(machine().logPath()).empty());
    std::printf("%u processes wrote %u lines into one log\n", processes,
                static_cast<unsigned>(lines.size()));
}

// Both are counted by hand: the system's own counters are not kept everywhere.

DWORD openHandles() {
    constexpr ULONG_PTR highest = 0x8000;
    DWORD count = 0;
    for (ULONG_PTR value = 4; value < highest; value += 4) {
        DWORD flags = 0;
        if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0)
            ++count;
    }
    return count;
}

std::size_t privateMemory() {
    std::size_t size = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region) != 0;
         at = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            size += region.RegionSize;
    }
    return size;
}

class LiveSoakTest : public LiveTest {
  protected:
    struct Sample {
        DWORD handles = 0;
        std::size_t memory = 0;
        ULONGLONG time = 0;
    };

    static Sample look() { return {openHandles(), privateMemory(), GetTickCount64()}; }

    /// Runs `count` calls and looks after 1, 50 and 100 %.
    static std::array<Sample, 3> soak(const char* what, std::size_t count,
                                      const std::function<void(std::size_t)>& call);
};

std::array<LiveSoakTest::Sample, 3> LiveSoakTest::soak(
    const char* what, std::size_t count, const std::function<void(std::size_t)>& call) {
    const std::array<std::size_t, 3> points{std::max<std::size_t>(count / 100, 1), count / 2,
                                            count};
    std::array<Sample, 3> seen{};
    ULONGLONG start = GetTickCount64();
    std::size_t done = 0;
    for (std::size_t point = 0; point < points.size(); ++point) {
        const std::size_t from = done;
        for (; done < points[point]; ++done)
            call(done);
        seen[point] = look();
        std::printf(
            "%s, %u of %u: %lu handles, %u KiB, %.2f ms a call\n", what,
            static_cast<unsigned>(done), static_cast<unsigned>(count), seen[point].handles,
            static_cast<unsigned>(seen[point].memory / 1024),
            static_cast<double>(seen[point].time - start) / static_cast<double>(done - from));
        start = GetTickCount64();
    }
    return seen;
}

TEST_F(LiveSoakTest, NothingIsLeftOpenByEventsAndLaunches) {
    const std::string printer = machine().addPrinter("Soak");
    const std::array<Route, 2> routes{Route::Message, Route::Pipe};
    for (const Route route : routes) {
        LiveJob job(library(route), printer, 1);
        ASSERT_TRUE(job.reach());
        ASSERT_TRUE(waitForWindows(printer));
        ASSERT_EQ(job.dral(SM_OPENJOB), YESPRINT);
        ASSERT_EQ(job.nemb(SM_OPENJOB), YESPRINT);
        const auto event = [&](std::size_t number) {
            EXPECT_EQ(number % 2 == 0 ? job.dral(SM_STARTPAGE) : job.nemb(SM_STARTPAGE), YESPRINT);
        };
        const auto launch = [&](std::size_t) {
            EXPECT_TRUE(LiveJob(library(route), printer, 2).launch());
        };
        const std::string name = toText(route);
        const auto events = soak((name + " events").c_str(), measure(25000, 400), event);
        const auto launches = soak((name + " launches").c_str(), measure(1000, 40), launch);
        // What the system itself opens once may come late, so a few are granted; one a call is not.
        EXPECT_LE(events[2].handles, events[0].handles + 8);
        EXPECT_LE(launches[2].handles, launches[0].handles + 8);
        // The name of the critical log grows by seven characters a call, a pipe leaves its security
        // descriptor; nothing else may stay.
        constexpr std::size_t granted = std::size_t{2} << 20;
        EXPECT_LE(launches[2].memory, events[0].memory + granted);
    }
}

}  // namespace
}  // namespace vok::test
