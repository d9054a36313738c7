// What is measured on the real system.
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "live_job.h"
#include "measure.h"
#include "programs.h"
#include "threads.h"

namespace vok::bench {
namespace {

constexpr size_t warmUp = 10;
constexpr size_t pairs = 200;
constexpr const char* libraryFile = VOK_MODEL_PREFIX "vok.dll";
constexpr const char* floorFile = VOK_MODEL_PREFIX "floor.dll";
constexpr const char* printer = "Bench";

void timeCase(const Case& one, Logging logging, const Companions& companions,
              const LiveModule& library, const LiveModule& floor) {
    setLiveLogging(logging);
    LiveJob job(one, companions);
    const size_t perSample = one.isGetter() ? 10000 : 1;
    const auto side = [&](const LiveModule& module) {
        return Side{[&] { job.prepare(); },
                    [&] {
                        for (size_t i = 0; i < perSample; ++i) {
                            job.perform(module.exports());
                        }
                    }};
    };
    Line("time")
        .text("where", "live")
        .text("case", one.title())
        .text("logging", nameOf(logging))
        .number("perSample", static_cast<double>(perSample))
        .comparison(compare(warmUp, pairs, side(library), side(floor)))
        .print();
}

void printTransport(const char* name, const Work& run) {
    const Comparison result = compare(warmUp, pairs, {{}, run}, {{}, run});
    Line("transport").text("case", name).number("time", result.library).print();
}

void timeMessages(const Companions& companions) {
    std::array<BYTE, VOK_NEMB_BLOCK_SIZE> block{};
    COPYDATASTRUCT data{SM_STARTPAGE, VOK_DRAL_BLOCK_SIZE, block.data()};
    const auto send = [&](HWND window, DWORD size) {
        data.cbData = size;
        SendMessageA(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data));
    };
    printTransport("one message to DRAL", [&] { send(companions.dral(), VOK_DRAL_BLOCK_SIZE); });
    printTransport("one message to NEMB", [&] { send(companions.nemb(), VOK_NEMB_BLOCK_SIZE); });
}

void timeFrames() {
    std::array<BYTE, sizeof(VokNembFrame)> frame{};
    DWORD moved = 0;
    LONG reply = 0;
    const HANDLE dral = LiveJob::connectedPipe(std::string(VOK_DRAL_PIPE) + printer);
    printTransport("one frame to DRAL and its answer", [&] {
        WriteFile(dral, frame.data(), sizeof(VokDralFrame), &moved, nullptr);
        ReadFile(dral, &reply, sizeof reply, &moved, nullptr);
    });
    CloseHandle(dral);
    const HANDLE nemb = LiveJob::connectedPipe(std::string(VOK_NEMB_PIPE) + printer);
    printTransport("one frame to NEMB and its answer", [&] {
        WriteFile(nemb, frame.data(), sizeof(DWORD), &moved, nullptr);
        WriteFile(nemb, frame.data(), VOK_NEMB_BLOCK_SIZE, &moved, nullptr);
        ReadFile(nemb, &reply, sizeof reply, &moved, nullptr);
    });
    CloseHandle(nemb);
}

void printGrowth(size_t events, double time) {
    Line("liveGrowth")
        .number("events", static_cast<double>(events))
        .number("time", time)
        .number("memory", memoryInUse())
        .print();
}

void growByEvents(const LiveModule& library, const Companions& companions) {
    constexpr size_t all = 10000;
    constexpr size_t step = 1000;
    LiveJob job(medianEvent(), companions);
    std::vector<double> times;
    for (size_t i = 1; i <= all; ++i) {
        job.prepare();
        const double begin = microseconds();
        job.perform(library.exports());
        times.push_back(microseconds() - begin);
        if (i % step == 0) {
            printGrowth(i, quantile(times, 0.5));
            times.clear();
        }
    }
}

void growByThreads(const LiveModule& library, const Companions& companions) {
    constexpr size_t events = 50;
    std::vector<std::unique_ptr<Companions>> others;
    std::vector<Job> separate;
    for (size_t count = 1; count <= mostThreads; ++count) {
        others.push_back(std::make_unique<Companions>(printer + std::to_string(count)));
        separate.push_back({others.back()->printer(), others.back()->dral(), nullptr, ""});
        const std::vector<Job> same(count, {printer, companions.dral(), nullptr, ""});
        printThreads("live", "separate", library.exports(), separate, events);
        printThreads("live", "one", library.exports(), same, events);
    }
}

}  // namespace

int timeLive(const char* route) {
    const bool isPipe = std::strcmp(route, nameOf(Route::pipe)) == 0;
    const Companions companions(printer);
    const LiveModule library(libraryFile, isPipe);
    const LiveModule floor(floorFile, isPipe);
    for (const Case& one : cases()) {
        if (std::strcmp(nameOf(one.route), route) != 0) {
            continue;
        }
        for (const Logging logging : {Logging::off, Logging::on, Logging::full}) {
            timeCase(one, logging, companions, library, floor);
        }
    }
    if (isPipe) {
        timeFrames();
    } else if (std::strcmp(route, nameOf(Route::message)) == 0) {
        timeMessages(companions);
    }
    return 0;
}

int growLive() {
    const Companions companions(printer);
    const LiveModule library(libraryFile, false);
    setLiveLogging(Logging::on);
    growByEvents(library, companions);
    growByThreads(library, companions);
    return 0;
}

int timeLoading() {
    const auto side = [](const char* name) {
        return Side{{}, [file = ownFile(name)] {
                        const HMODULE module = LoadLibraryA(file.c_str());
                        if (module == nullptr) {
                            throw std::runtime_error("can't load " + file);
                        }
                        FreeLibrary(module);
                    }};
    };
    const Comparison result = compare(warmUp, pairs, side(libraryFile), side("empty.dll"));
    Line("load").comparison(result).print();
    return 0;
}

}  // namespace vok::bench
