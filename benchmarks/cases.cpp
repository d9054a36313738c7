#include "cases.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vok::bench {
namespace {

constexpr DWORD genericMessage = WM_APP + 1;

std::vector<Case> allCases() {
    using enum Case::Kind;
    std::vector<Case> all;
    for (const Route route : {Route::message, Route::pipe, Route::nineX}) {
        all.push_back({"launch", route, launch, 0});
        for (const auto& [name, id] : {std::pair("DRAL open job", SM_OPENJOB),
                                       {"DRAL start page", SM_STARTPAGE},
                                       {"DRAL close job", SM_CLOSEJOB},
                                       {"DRAL cancel job", SM_CANCELJOB}}) {
            all.push_back({name, route, dral, static_cast<DWORD>(id)});
        }
        for (const auto& [name, id] : {std::pair("NEMB open job", SM_OPENJOB),
                                       {"NEMB page", SM_STARTPAGE},
                                       {"NEMB close job", SM_CLOSEJOB},
                                       {"NEMB cancel job", SM_CANCELJOB}}) {
            all.push_back({name, route, nemb, static_cast<DWORD>(id)});
        }
        if (route != Route::nineX) {
            all.push_back({"generic send", route, generic, genericMessage});
        }
    }
    all.push_back({"VOKGetDral", Route::message, getDral, 0});
    all.push_back({"VOKGetNemb", Route::message, getNemb, 0});
    return all;
}

template <class Function>
void lookUp(HMODULE module, const char* name, Function& function) {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    if (function == nullptr) {
        throw std::runtime_error(std::string("no export ") + name);
    }
}

}  // namespace

const char* nameOf(Route route) {
    constexpr const char* names[] = {"message", "pipe", "9x"};
    return names[static_cast<int>(route)];
}

const char* nameOf(Logging logging) {
    constexpr const char* names[] = {"off", "on", "full"};
    return names[static_cast<int>(logging)];
}

Exports exportsOf(HMODULE module) {
    Exports exports{};
    lookUp(module, VOK_EXPORT_LAUNCH_XFILES, exports.launch);
    lookUp(module, VOK_EXPORT_SEND_DRAL_MSG, exports.sendDral);
    lookUp(module, VOK_EXPORT_SEND_NEMB_MSG, exports.sendNemb);
    lookUp(module, VOK_EXPORT_SEND_MSG_EX, exports.sendMsgEx);
    lookUp(module, VOK_EXPORT_GET_DRAL, exports.getDral);
    lookUp(module, VOK_EXPORT_GET_NEMB, exports.getNemb);
    return exports;
}

const std::vector<Case>& cases() {
    static const std::vector<Case> all = allCases();
    return all;
}

const Case& medianEvent() {
    return cases()[2];
}

VKDATA recordFor(const Case& one, const Job& job) {
    VKDATA record{};
    const size_t length = std::min<size_t>(job.dralSuffix.size(), VOK_TITLE_SUFFIX_SIZE - 1);
    std::memcpy(record.dralTitleSuffix, job.dralSuffix.data(), length);
    if (one.kind == Case::Kind::launch) {
        return record;
    }
    record.hDRAL = job.dral;
    record.hNEMB = job.nemb;
    if (one.route != Route::nineX) {
        record.dralMode = record.nembMode =
            one.route == Route::pipe ? VOK_MODE_PIPE : VOK_MODE_WINDOW;
    }
    const bool opensDral = one.kind == Case::Kind::dral && one.messageId == SM_OPENJOB;
    record.epDoc = opensDral ? 0 : VOK_EPDOC_OPENJOB;
    return record;
}

LONG_PTR perform(const Case& one, const Exports& exports, const Job& job, VKDATA& record) {
    static const std::array<BYTE, VOK_NEMB_BLOCK_SIZE> block = [&] {
        std::array<BYTE, VOK_NEMB_BLOCK_SIZE> filled{};
        std::memcpy(filled.data(), job.printer.c_str(), job.printer.size());
        return filled;
    }();
    switch (one.kind) {
        case Case::Kind::launch:
            return exports.launch(job.printer.c_str(), "LPT1:", &record);
        case Case::Kind::dral:
            return exports.sendDral(block.data(), one.messageId, &record);
        case Case::Kind::nemb:
            return exports.sendNemb(block.data(), one.messageId, &record);
        case Case::Kind::generic: {
            const bool viaPipe = one.route == Route::pipe;
            return static_cast<LONG_PTR>(exports.sendMsgEx(job.printer.c_str(), job.dral,
                                                           viaPipe ? 1 : 0, one.messageId,
                                                           block.data(), VOK_DRAL_BLOCK_SIZE - 4));
        }
        case Case::Kind::getDral:
            return reinterpret_cast<LONG_PTR>(exports.getDral(&record));
        case Case::Kind::getNemb:
            return reinterpret_cast<LONG_PTR>(exports.getNemb(&record));
    }
    return 0;
}

std::vector<OptionValue> optionsFor(Logging logging) {
    const DWORD fields = logging == Logging::full ? 1 : 0;
    return {{"CommonLog", 0},
            {"startLog", logging == Logging::off ? 0U : 1U},
            {"All", 0xFFFFFFFF},
            {"VOK", 1},
            {"Clocktime_In_Header", 1},
            {"Proc_Id_In_Header", fields},
            {"Thread_Id_In_Header", fields}};
}

}  // namespace vok::bench
