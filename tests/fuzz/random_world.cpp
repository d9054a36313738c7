#include "fuzz/random_world.h"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace vok::test {
namespace {

constexpr const char* printers = R"(System\CurrentControlSet\control\Print\Printers\)";
constexpr const char* hiddenWindow = "DRAL Hidden Window-";
constexpr const char* options[] = {
    "startLog",          "CommonLog",          "All", "VOK", "Clocktime_In_Header",
    "Proc_Id_In_Header", "Thread_Id_In_Header"};

std::unique_ptr<GuardedBytes> guarded(const std::string& bytes) {
    return std::make_unique<GuardedBytes>(bytes.data(), bytes.size(), GuardedBytes::Use::readOnly);
}

std::unique_ptr<GuardedBytes> guardedText(Chance& chance, const std::string& text) {
    return chance.oneIn(20) ? nullptr : guarded(text + '\0');
}

std::string printerOf(Chance& chance) {
    return chance.oneIn(4) ? chance.name() : chance.of<const char*>({"Office", "Office", "A&B"});
}

RegistryValue randomValue(Chance& chance) {
    const DWORD type = chance.of<DWORD>({REG_SZ, REG_DWORD, REG_DWORD, REG_BINARY, REG_NONE});
    const size_t size = chance.of<size_t>({0, 1, 4, 4, 5, 50, 260, 300});
    std::string data = chance.bytes(size);
    if (type == REG_DWORD && size == sizeof(DWORD)) {
        const DWORD number = chance.of<DWORD>({0, 1, 1, 2, 8, 5, 0xFFFFFFFF});
        std::memcpy(data.data(), &number, sizeof(number));
    }
    return {type, data};
}

// A companion that asks to be waited for again and again would keep a 9x system waiting for good.
std::vector<LRESULT> randomReplies(Chance& chance) {
    std::vector<LRESULT> replies;
    for (size_t count = chance.below(4); count > 0; --count) {
        replies.push_back(chance.of<LRESULT>({0, 1, 2, 2, 7, -1, 0x100000002}));
    }
    replies.push_back(chance.of<LRESULT>({0, 1, 1, 3, -2}));
    return replies;
}

PipeClient randomClient(Chance& chance) {
    PipeClient client;
    client.answers.clear();
    for (size_t count = 1 + chance.below(3); count > 0; --count) {
        client.answers.push_back(chance.oneIn(2) ? replyBytes(static_cast<LONG>(chance.below(4)))
                                                 : chance.bytes(chance.below(9)));
    }
    client.comes = chance.of({PipeClient::Comes::whileWaiting, PipeClient::Comes::beforeWaiting});
    client.connectError = chance.of<DWORD>({0, 0, 0, 0, ERROR_NO_DATA, ERROR_PIPE_LISTENING});
    client.takes = chance.oneIn(4) ? chance.below(600) : ~size_t{0};
    return client;
}

void addCompanions(Chance& chance, System& system, const std::string& printer) {
    const char* titles[] = {"DEMODRAL - ", "DRAL - ", "DEMONEMB - "};
    for (const char* title : titles) {
        if (chance.oneIn(2)) {
            const std::string className =
                chance.of<const char*>({"DEMONEMB - ", hiddenWindow, "x"});
            system.desktop.add(className, title + printer, randomReplies(chance)).hiddenFor =
                chance.oneIn(4) ? chance.below(250) : 0;
        }
    }
    system.pipes.client(R"(\\.\pipe\DRAL)" + printer) = randomClient(chance);
    system.pipes.client(R"(\\.\pipe\NEMB)" + printer) = randomClient(chance);
    if (chance.oneIn(4)) {
        system.mutexes.add("Global\\DEMONEMB - OFFICE");
    }
}

void fillRegistry(Chance& chance, System& system) {
    for (const char* option : options) {
        if (!chance.oneIn(3)) {
            system.registry.setValue(system.loggerKey(), option, randomValue(chance));
        }
    }
    if (!chance.oneIn(3)) {
        system.registry.setNumber(system.loggerKey(), "startLog", 1);
    }
    if (chance.oneIn(4)) {
        system.registry.setValue(
            R"(SYSTEM\CurrentControlSet\Control\ComputerName\ActiveComputerName)", "ComputerName",
            randomValue(chance));
    }
    if (chance.oneIn(10)) {
        system.registry.deny(system.loggerKey());
    }
}

void fillConfiguration(Chance& chance, System& system) {
    ConfigLibrary& config = system.modules.config;
    config.inSearchPath = !chance.oneIn(6);
    config.inDriverDirectory = chance.oneIn(3);
    config.hasExport = !chance.oneIn(10);
    config.sizingResult = chance.of<DWORD>({3, 3, 3, 3, 3, 0, 2});
    if (chance.oneIn(8)) {
        config.reportedSize = chance.of<DWORD>({0, 1, 272, 273, 70000});
        if (!system.greedyBuffers && chance.oneIn(10)) {
            config.reportedSize = 0xFFFFFFFF;
        }
    }
    if (chance.oneIn(8)) {
        config.item = chance.bytes(chance.below(600));
    }
    system.registry.addKey(config.item.c_str());
}

HANDLE randomHandle(Chance& chance, System& system, Kind usual) {
    switch (chance.below(6)) {
        case 0:
            return nullptr;
        case 1:
            return INVALID_HANDLE_VALUE;
        case 2:
            return handleOf(usual, 9999);  // never given out
        case 3:
            return system.pipes.open(R"(\\.\pipe\any)", randomClient(chance), chance.oneIn(2));
        default:
            return system.desktop.add("any", "any", randomReplies(chance)).handle;
    }
}

VKDATA randomRecord(Chance& chance, System& system) {
    VKDATA record{};
    if (chance.oneIn(2)) {
        record.hDRAL = randomHandle(chance, system, Kind::pipe);
        record.hNEMB = randomHandle(chance, system, Kind::window);
        record.hDRALProc = chance.oneIn(2) ? system.processes.open() : nullptr;
        record.hNEMBProc = chance.oneIn(2) ? system.processes.open() : nullptr;
        record.epDoc = chance.number();
        record.dralMode = static_cast<DWORD>(chance.below(4));
        record.nembMode = static_cast<DWORD>(chance.below(4));
    }
    std::memset(record.dralTitleSuffix, 'S', sizeof(record.dralTitleSuffix));
    if (!chance.oneIn(10)) {
        record.dralTitleSuffix[chance.below(sizeof(record.dralTitleSuffix))] = '\0';
    }
    return record;
}

}  // namespace

std::string Chance::bytes(size_t size) {
    std::string bytes;
    for (size_t i = 0; i < size; ++i) {
        char byte = static_cast<char>(engine_());
        bytes += byte == '\r' || byte == '\n' ? '.' : byte;
    }
    return bytes;
}

std::string Chance::name() {
    switch (below(8)) {
        case 0:
            return "";
        case 1:
            return std::string(200 + below(150), 'L');
        case 2:
            return std::string("%s%n%x\\..\\") + bytes(below(20)).c_str();
        case 3:
            return R"(\\HOST\queue)";
        case 4:
            return R"(\\HOST\\server\queue)";
        case 5:
            return R"(\\s\)";
        case 6:
            return bytes(below(300)).c_str();
        default:
            return "LPT1:";
    }
}

const OsRelease& randomRelease(Chance& chance) {
    return os::all[chance.below(os::all.size())];
}

void fillMachine(Chance& chance, System& system) {
    system.greedyBuffers = chance.oneIn(2);
    system.clock.stepPerRead = chance.of<DWORD>({0, 1, 1, 1, 3000});
    system.clock.setTick(chance.number());
    fillConfiguration(chance, system);
    fillRegistry(chance, system);
    for (const char* printer : {"Office", "A&B"}) {
        system.addPrinter(printer);
        addCompanions(chance, system, printer);
    }
    if (chance.oneIn(4)) {
        system.spooler.setData("Office", "Printer Prefix", randomValue(chance));
        system.registry.setValue(printers + std::string(R"(Office\PrinterDriverData)"),
                                 "Printer Prefix", randomValue(chance));
    }
    system.sessions.own = static_cast<DWORD>(chance.below(2));
    system.sessions.userTokenError = chance.of<DWORD>({0, 0, 0, ERROR_NO_TOKEN, 1314});
    system.processes.idleResult = chance.of<DWORD>({0, WAIT_TIMEOUT, WAIT_FAILED, 5});
    system.files.diskFull = chance.oneIn(20);
    if (chance.oneIn(20)) {
        system.files.lock(system.logPath());
    }
    if (chance.oneIn(20)) {
        system.modules.libraryPath = chance.of<const char*>({"DEM", R"(C:\x\DE)", R"(C:\)"});
    }
}

void armFaults(Chance& chance, System& system) {
    const auto functions = failingFunctions();
    for (size_t count = chance.below(4); count > 0; --count) {
        const auto lasting = chance.oneIn(4) ? Lasting::forEver : Lasting::once;
        if (chance.oneIn(2)) {
            system.faults.failCall(1 + chance.below(600), chance.below(3), lasting);
        } else {
            const auto function = functions[chance.below(functions.size())];
            system.faults.fail(function, chance.below(failureCount(function)), 1 + chance.below(6),
                               lasting);
        }
    }
}

RandomJob::RandomJob(Chance& chance, System& system) {
    const std::string printer = printerOf(chance);
    printer_ = guardedText(chance, printer);
    port_ = guardedText(chance, chance.name());
    if (!chance.oneIn(20)) {
        const VKDATA record = randomRecord(chance, system);
        record_ =
            std::make_unique<GuardedBytes>(&record, sizeof(record), GuardedBytes::Use::readWrite);
    }
    if (!chance.oneIn(20)) {
        std::string block = chance.oneIn(5) ? std::string() : printer + '\0';
        block += chance.bytes(VOK_NEMB_BLOCK_SIZE);
        block.resize(VOK_NEMB_BLOCK_SIZE);
        block_ = guarded(block);
    }
}

void callAny(Chance& chance, const Exports& library, const RandomJob& job) {
    const DWORD messageId =
        chance.oneIn(6)
            ? chance.number()
            : chance.of<DWORD>({SM_OPENJOB, SM_CLOSEJOB, SM_STARTPAGE, SM_CANCELJOB, 1136});
    VKDATA* record = job.record();
    switch (chance.below(7)) {
        case 0:
        case 1:
            library.launchXFiles(job.printer(), job.port(), record);
            break;
        case 2:
            library.sendDralMsg(job.block(), messageId, record);
            break;
        case 3:
        case 4:
            library.sendNembMsg(job.block(), messageId, record);
            break;
        case 5: {
            const HANDLE companion = record ? record->hDRAL : nullptr;
            const auto* data = static_cast<const BYTE*>(job.block());
            const auto length =
                static_cast<DWORD>(data ? chance.below(VOK_NEMB_BLOCK_SIZE + 1) : 0);
            library.sendMsgEx(job.printer(), companion, static_cast<DWORD>(chance.below(3)),
                              messageId, data, length);
            break;
        }
        default:
            library.getDral(record);
            library.getNemb(record);
    }
}

}  // namespace vok::test
