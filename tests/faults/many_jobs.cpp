#include "faults/many_jobs.h"

#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace vok::test {
namespace {

constexpr size_t numberOffset = 28;  // of a job's number within its block
constexpr LONG firstNumber = 1000;   // no job's number is a reply with a meaning
constexpr DWORD endPage = 1136;
constexpr LONG accepted = YESPRINT;

std::string printerName(size_t printer) {
    return "Printer " + std::to_string(printer);
}

LONG numberIn(const std::string& block) {
    LONG number = 0;
    std::memcpy(&number, block.data() + numberOffset, sizeof(number));
    return number;
}

struct Block {
    char bytes[VOK_NEMB_BLOCK_SIZE] = {};
    Block(const std::string& printer, LONG number) {
        std::memcpy(bytes, printer.c_str(), printer.size() + 1);
        std::memcpy(bytes + numberOffset, &number, sizeof(number));
    }
};

// A companion opens every job and otherwise answers with the number of the job that asks.
LRESULT answerTo(DWORD messageId, const std::string& block) {
    return messageId == SM_OPENJOB ? LRESULT{YESPRINT} : numberIn(block);
}

void addWindows(System& system, const std::string& printer) {
    for (const std::string companion : {"DRAL - ", "NEMB - "}) {
        const std::string title = "DEMO" + companion + printer;
        Window& window = system.desktop.add("DEMO" + companion, title);
        window.reply = [](const Message& message) {
            return answerTo(static_cast<DWORD>(message.dataId), message.data);
        };
    }
}

// DRAL's frames carry no identifier: it answers every event with the job's number.
void addPipes(System& system, const std::string& printer) {
    system.pipes.client(R"(\\.\pipe\DRAL)" + printer).answer = [](const std::string& frame) {
        return replyBytes(numberIn(frame));
    };
    system.pipes.client(R"(\\.\pipe\NEMB)" + printer).answer = [](const std::string& frame) {
        return replyBytes(numberIn(frame.substr(sizeof(DWORD))));
    };
}

}  // namespace

ManyJobs::ManyJobs(System& system, Route route) : route_(route) {
    if (route == Route::pipes) {
        system.separateSessions();
    }
    for (size_t i = 0; i < jobPrinters; ++i) {
        system.addPrinter(printerName(i));
        addWindows(system, printerName(i));
        addPipes(system, printerName(i));
    }
}

void ManyJobs::doJob(const Exports& library, size_t printer, LONG number) {
    const std::string name = printerName(printer);
    const Block block(name, number);
    VKDATA record{};
    const bool pipes = route_ == Route::pipes;
    expect(library.launchXFiles(name.c_str(), "LPT1:", &record), 1);
    expect(library.sendDralMsg(block.bytes, SM_OPENJOB, &record), pipes ? number : accepted);
    expect(library.sendNembMsg(block.bytes, SM_OPENJOB, &record), pipes ? number : accepted);
    expect(library.sendNembMsg(block.bytes, endPage, &record), pipes ? accepted : number);
    expect(library.sendNembMsg(block.bytes, SM_CLOSEJOB, &record), pipes ? accepted : number);
    expect(library.sendDralMsg(block.bytes, SM_CANCELJOB, &record), number);
}

void ManyJobs::run(const Exports& library, size_t jobsOfEach) {
    std::vector<std::thread> threads;
    for (size_t thread = 0; thread < jobThreads; ++thread) {
        threads.emplace_back([this, &library, thread, jobsOfEach] {
            for (size_t job = 0; job < jobsOfEach; ++job) {
                doJob(library, thread % jobPrinters,
                      firstNumber + static_cast<LONG>(thread * jobsOfEach + job));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace vok::test
