// A long life in one process: what grows is what has to grow, and nothing else. The usual run is a
// fiftieth of the long one (VOK_TEST_LONG=1), which has 1,000,000 events and 100,000 launches.
#include <gtest/gtest.h>

#include <windows.h>

#include <psapi.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <ratio>
#include <string>

#include "faults/job.h"
#include "faults/restarted_library.h"
#include "faults/watched_heap.h"

namespace vok::test {
namespace {

constexpr size_t longEvents = 1000000;
constexpr size_t longLaunches = 100000;
constexpr size_t shortenedBy = 50;
constexpr size_t descriptorSize = 40;
// Of one call: the model prefix and "Vok".
constexpr size_t criticalNameGrowth = 7;
// A text doubles its room as it grows.
constexpr size_t textRoomFactor = 2;
// For each companion: two to compare the sessions, one for the environment, two for the token.
constexpr size_t systemLoadsOfALaunch = 10;
constexpr size_t logEmptiedEvery = 1000;  // calls; the log's growth is the disk's concern

size_t shortened(size_t count) {
    return std::getenv("VOK_TEST_LONG") ? count : count / shortenedBy;
}

size_t privateBytes() {
    PROCESS_MEMORY_COUNTERS_EX counters{};
    counters.cb = sizeof(counters);
    ::GetProcessMemoryInfo(::GetCurrentProcess(),
                           reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters), sizeof(counters));
    return counters.PrivateUsage ? counters.PrivateUsage : counters.PagefileUsage;
}

// 0 where the system does not tell, as under Wine.
size_t openHandles() {
    DWORD count = 0;
    ::GetProcessHandleCount(::GetCurrentProcess(), &count);
    return count;
}

// What is held at one moment.
struct Holdings {
    size_t libraryBytes = 0;  // of the library's heap
    size_t libraryBlocks = 0;
    size_t processHandles = 0;
    std::map<Kind, size_t> handles;  // of the simulated system
};

class Soak : public ::testing::Test {
  protected:
    Soak() {
        system.calls.on = false;
        system.clock.stepPerRead = 1;
        system.addPrinter("Office").startLog();
    }

    static RestartedLibrary& library() {
        static RestartedLibrary one(heap::overrides());
        return one;
    }

    Holdings holdings() const {
        Holdings now;
        now.libraryBytes = heap::liveBytes();
        now.libraryBlocks = heap::liveSizes().size();
        now.processHandles = openHandles();
        for (const Kind kind : {Kind::file, Kind::mutex, Kind::pipe, Kind::token, Kind::printer,
                                Kind::key, Kind::options, Kind::module, Kind::environment}) {
            now.handles[kind] = system.handles.countOpen(kind);
        }
        return now;
    }

    // Runs `once` so often; prints and keeps what is held at 1 %, 50 % and 100 %.
    template <class Once>
    void repeat(const char* what, size_t count, const Once& once) {
        auto begin = std::chrono::steady_clock::now();
        size_t since = 0;
        for (size_t i = 1; i <= count; ++i) {
            once();
            ++since;
            if (i % logEmptiedEvery == 0) {
                system.files.remove(system.logPath());
                system.registry.openings.clear();
            }
            if (i == count / 100 || i == count / 2 || i == count) {
                const std::chrono::duration<double, std::micro> spent =
                    std::chrono::steady_clock::now() - begin;
                note(what, i * 100 / count, spent.count() / static_cast<double>(since));
                begin = std::chrono::steady_clock::now();
                since = 0;
            }
        }
    }

    void note(const char* what, size_t percent, double microseconds) {
        const Holdings now = holdings();
        std::printf(
            "%s, %3zu %%: handles %zu, private memory %zu KB, library's heap %zu bytes in "
            "%zu blocks, %.1f us a call\n",
            what, percent, now.processHandles, privateBytes() / 1024, now.libraryBytes,
            now.libraryBlocks, microseconds);
        if (percent < 100) {
            early = percent < 50 ? now : early;
        } else {
            late = now;
        }
    }

    // The critical log's name has grown with every call.
    size_t nameRoom(size_t calls) const { return calls * criticalNameGrowth * textRoomFactor; }

    void expectNoMoreHandles() const {
        for (const auto& [kind, count] : late.handles) {
            EXPECT_EQ(count, early.handles.at(kind)) << kindName(kind);
        }
        EXPECT_LE(late.processHandles, early.processHandles + 2);
    }

    // The caller owns processes and threads.
    void closeProcesses(VKDATA& record) {
        for (HANDLE* handle :
             {&record.hDRALProc, &record.hDRALThread, &record.hNEMBProc, &record.hNEMBThread}) {
            system.handles.close(*handle);
            *handle = nullptr;
        }
    }

    System system;
    Job job;
    Holdings early;
    Holdings late;
};

TEST_F(Soak, EventsByWindow) {
    Window& window = system.desktop.add("any", "any");
    const size_t count = shortened(longEvents / 2);
    {
        const Started started(library());
        repeat("events by window", count, [&] {
            job.record().hDRAL = window.handle;
            EXPECT_EQ(started->sendDralMsg(job.dralBlock(), SM_STARTPAGE, &job.record()), YESPRINT);
            window.received.clear();
        });
    }
    heap::clear();
    expectNoMoreHandles();
    EXPECT_EQ(late.libraryBlocks, early.libraryBlocks);
    EXPECT_LE(late.libraryBytes, early.libraryBytes + nameRoom(count));
    EXPECT_GE(late.libraryBytes, count * criticalNameGrowth);
}

TEST_F(Soak, EventsByPipe) {
    const size_t count = shortened(longEvents / 2);
    job.record().nembMode = VOK_MODE_PIPE;
    job.record().hNEMB = system.pipes.open(R"(\\.\pipe\NEMBOffice)");
    PipeData& pipe = system.pipes.last(R"(\\.\pipe\NEMBOffice)");
    {
        const Started started(library());
        repeat("events by pipe", count, [&] {
            EXPECT_EQ(started->sendNembMsg(job.nembBlock(), SM_STARTPAGE, &job.record()), YESPRINT);
            pipe.writes.clear();
        });
    }
    heap::clear();
    expectNoMoreHandles();
    EXPECT_EQ(late.libraryBlocks, early.libraryBlocks);
    EXPECT_LE(late.libraryBytes, early.libraryBytes + nameRoom(count));
}

// A job that ends closes its pipes; each pipe leaves its security descriptor.
TEST_F(Soak, LaunchesByPipe) {
    const size_t count = shortened(longLaunches / 2);
    system.separateSessions();
    size_t calls = 0;
    {
        const Started started(library());
        repeat("launches by pipe", count, [&] {
            VKDATA& record = job.record();
            EXPECT_EQ(started->launchXFiles(job.printer(), job.port(), &record), TRUE);
            started->sendNembMsg(job.nembBlock(), SM_CANCELJOB, &record);
            EXPECT_EQ(started->sendDralMsg(job.dralBlock(), SM_CANCELJOB, &record), YESPRINT);
            calls += 3;
            closeProcesses(record);
            system.processes.starts.clear();
            system.pipes.forgetClosed();
        });
    }
    heap::clear();
    expectNoMoreHandles();
    const size_t descriptors = 2 * (count - count / 100);
    EXPECT_EQ(late.libraryBlocks, early.libraryBlocks + descriptors);
    EXPECT_LE(late.libraryBytes,
              early.libraryBytes + descriptors * descriptorSize + nameRoom(calls));
    const size_t loads = system.calls.count("LoadLibraryA") - system.calls.count("FreeLibrary");
    std::printf("loads of system libraries that are not given back: %zu\n", loads);
    EXPECT_EQ(loads, count * systemLoadsOfALaunch);
}

// A search for NEMB's window leaves a printer open.
TEST_F(Soak, LaunchesAndSearchesByWindow) {
    const size_t count = shortened(longLaunches / 2);
    system.desktop.add("any", "DEMODRAL - Office");
    system.desktop.add("DEMONEMB - ", "DEMONEMB - Office");
    size_t printersAtFirst = 0;
    {
        const Started started(library());
        repeat("launches by window", count, [&] {
            VKDATA& record = job.record();
            EXPECT_EQ(started->launchXFiles(job.printer(), job.port(), &record), TRUE);
            record.hNEMB = nullptr;
            EXPECT_EQ(started->sendNembMsg(job.nembBlock(), SM_CANCELJOB, &record), YESPRINT);
            system.desktop.at(static_cast<HWND>(record.hNEMB))->received.clear();
        });
    }
    heap::clear();
    printersAtFirst = early.handles[Kind::printer];
    EXPECT_EQ(late.handles[Kind::printer], printersAtFirst + count - count / 100);
    early.handles[Kind::printer] = late.handles[Kind::printer];
    expectNoMoreHandles();
    EXPECT_EQ(late.libraryBlocks, early.libraryBlocks);
    EXPECT_LE(late.libraryBytes, early.libraryBytes + nameRoom(2 * count));
}

}  // namespace
}  // namespace vok::test
