// What must be true of the machine and the job after any run, whatever failed in it.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "faults/known_texts.h"
#include "faults/run.h"

namespace vok::test {
namespace {

using Problems = std::vector<std::string>;

void checkRecord(const Job& job, const VKDATA& before, Problems& problems) {
    const VKDATA& record = job.record();
    if (!job.isIntact()) {
        problems.emplace_back("memory before the record was written to");
    }
    if (std::memcmp(record.dralTitleSuffix, before.dralTitleSuffix, VOK_TITLE_SUFFIX_SIZE) != 0) {
        problems.emplace_back("the title suffix was changed");
    }
    if ((record.epDoc & ~DWORD{VOK_EPDOC_OPENJOB}) != 0) {
        problems.emplace_back("a foreign bit of epDoc was changed");
    }
    if (record.dralMode > VOK_MODE_WINDOW || record.nembMode > VOK_MODE_WINDOW) {
        problems.emplace_back("a mode that is none");
    }
}

// Every line that reached a log in one write, as it was written.
void checkLines(const System& system, Problems& problems) {
    for (const CallRecord& record : system.calls.all()) {
        if (record.name != "WriteFile" || !record.arguments.starts_with("file#")) {
            continue;
        }
        const size_t begin = record.arguments.find('"') + 1;
        const size_t end = record.arguments.rfind('"');
        const std::string line = record.arguments.substr(begin, end - begin);
        const std::string whole = std::to_string(line.size() + 2);
        if (record.arguments.substr(end + 1) != ", " + whole + ", out, null") {
            problems.push_back("no whole line: [" + line + "]");
        }
        if (!isKnownLine(line) && !isKnownCriticalLine(line)) {
            problems.push_back("unknown line: [" + line + "]");
        }
    }
}

size_t countCalls(const System& system, std::string_view name, std::string_view result,
                  std::string_view arguments = "") {
    const auto& all = system.calls.all();
    return static_cast<size_t>(std::count_if(all.begin(), all.end(), [&](const CallRecord& call) {
        return call.name == name && call.result.starts_with(result) &&
               call.arguments.find(arguments) != std::string::npos;
    }));
}

size_t countFailed(const System& system, std::string_view name, std::string_view arguments) {
    return countCalls(system, name, "", arguments) - countCalls(system, name, "0", arguments);
}

bool belongsToRecord(HANDLE handle, const VKDATA& record) {
    const HANDLE held[] = {record.hDRAL,     record.hNEMB,       record.hDRALProc,
                           record.hNEMBProc, record.hDRALThread, record.hNEMBThread};
    return std::find(std::begin(held), std::end(held), handle) != std::end(held);
}

HANDLE handleNamed(const std::string& name) {
    for (uint8_t kind = 1; kind <= static_cast<uint8_t>(Kind::environment); ++kind) {
        const std::string prefix = std::string(kindName(static_cast<Kind>(kind))) + "#";
        if (name.starts_with(prefix)) {
            const auto number = std::stoul(name.substr(prefix.size()));
            return handleOf(static_cast<Kind>(kind), static_cast<uint32_t>(number));
        }
    }
    return nullptr;
}

// How many handles of each kind the library leaves open on purpose.
size_t leftOpen(const System& system, Kind kind) {
    const size_t missingPrefix = countFailed(system, "RegQueryValueExA", "\"Printer Prefix\"");
    switch (kind) {
        case Kind::printer:
            // One for each search for NEMB's names, one where NEMB's prefix is missing.
            return missingPrefix + countCalls(system, "GetPrinterDataA", "", "printer#");
        case Kind::key:
            return missingPrefix;
        case Kind::token: {
            // The user's, when there is no environment for him.
            const size_t users = countCalls(system, "WTSQueryUserToken", "1 ->");
            return users - std::min(users, countCalls(system, "CreateEnvironmentBlock", "1 ->"));
        }
        case Kind::environment: {
            // Where the function that destroys it could not be looked up.
            const size_t made = countCalls(system, "CreateEnvironmentBlock", "1 ->");
            return made - std::min(made, countCalls(system, "DestroyEnvironmentBlock", ""));
        }
        default:
            return 0;
    }
}

bool destroyerWasFound(const System& system) {
    return countCalls(system, "GetProcAddress", "0 -> none", "\"DestroyEnvironmentBlock\"") == 0 &&
           countCalls(system, "GetProcAddress", "null", "\"DestroyEnvironmentBlock\"") == 0;
}

void checkHandles(const System& system, const VKDATA& record, Problems& problems) {
    std::map<Kind, size_t> open;
    for (const std::string& name : system.handles.openNames()) {
        const HANDLE handle = handleNamed(name);
        const Kind kind = kindOf(handle);
        const bool libraryOfTheSystem =
            kind == Kind::module && system.modules.countLoaded(system.modules.config.fileName) == 0;
        if (kind == Kind::window || libraryOfTheSystem || belongsToRecord(handle, record)) {
            continue;
        }
        ++open[kind];
    }
    for (const auto& [kind, count] : open) {
        if (count != leftOpen(system, kind)) {
            problems.push_back("left open: " + std::to_string(count) + " of kind " +
                               kindName(kind));
        }
    }
    if (open[Kind::environment] > 0 && destroyerWasFound(system)) {
        problems.emplace_back("an environment was left though it could have been destroyed");
    }
    if (system.mutexes.countHeld() > 0) {
        problems.emplace_back("a mutex is still held");
    }
    if (system.sids != 0) {
        problems.push_back("SIDs left: " + std::to_string(system.sids));
    }
}

}  // namespace

Problems problemsAfter(const System& system, const Scenario&, const Job& job,
                       const VKDATA& before) {
    Problems problems;
    checkRecord(job, before, problems);
    checkLines(system, problems);
    checkHandles(system, job.record(), problems);
    // A pipe that could not be made is used like one that could.
    for (const std::string& complaint : system.complaints) {
        if (!complaint.ends_with(": invalid")) {
            problems.push_back("complaint: " + complaint);
        }
    }
    return problems;
}

}  // namespace vok::test
