// vok-companion-check: does a companion keep the contract?

#include <fmt/format.h>
#include <vok/vok.h>
#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <ios>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "checks.h"
#include "common/command_line.h"
#include "common/system.h"
#include "host.h"
#include "spooler_stand_in.h"

namespace vok::check {

namespace {

constexpr char program[] = "vok-companion-check";
constexpr const char* description =
    "Drives a companion through the library, by window messages and by pipes, and says check by\n"
    "check whether it keeps the contract of vok/companion.h. No printer and no spooler is needed,\n"
    "and nothing is installed. The file is <model>DRAL.EXE or <model>NEMB.EXE.\n";

// The status that the program is to end with, if it is.
std::optional<int> parseCommandLine(int count, const char* const* words, Options& options) {
    CLI::App app(description, program);
    app.footer("\nExit status: 0 the companion keeps the contract, 1 it does not, 2 misused.\n");
    app.add_option("COMPANION.EXE", options.companion, "the companion")->required();
    app.add_option("--library", options.library, "the library; else the one beside this program");
    app.add_option("--limit", options.limit,
                   "how many milliseconds an answer, a window or a pipe may take")
        ->check(CLI::Range(1, 86400000))
        ->capture_default_str();
    app.add_flag("--stop", options.stop, "stops at the first check that fails");
    app.add_flag("--json", options.json, "prints the results as JSON");
    app.add_option("--junit", options.junit, "writes them as JUnit XML to this file besides");
    return tools::parse(app, count, words);
}

enum class Verdict { Pass, Fail, Skip };

struct Result {
    std::string check;
    Verdict verdict;
    std::string text;  // what was seen, what was wrong, or why it was not looked for
    unsigned long milliseconds;
};

std::string xmlText(const std::string& text) {
    static const std::map<char, const char*> entities = {
        {'&', "&amp;"}, {'<', "&lt;"}, {'"', "&quot;"}};
    std::string escaped;
    for (const char character : tools::toUtf8(text)) {
        if (const auto entity = entities.find(character); entity != entities.end()) {
            escaped += entity->second;
        } else {
            escaped += static_cast<unsigned char>(character) < 0x20 ? ' ' : character;
        }
    }
    return escaped;
}

std::string junitOutcome(const Result& result) {
    if (result.verdict == Verdict::Pass) {
        return "/>";
    }
    return fmt::format(R"(><{} message="{}"/></testcase>)",
                       result.verdict == Verdict::Skip ? "skipped" : "failure",
                       xmlText(result.text));
}

std::ptrdiff_t count(const std::vector<Result>& results, Verdict verdict) {
    return std::ranges::count(results, verdict, &Result::verdict);
}

std::string resultLine(const Result& result) {
    constexpr const char* words[] = {"pass", "FAIL", "skip"};
    return fmt::format("{}  {:<21} {}\n", words[static_cast<std::size_t>(result.verdict)],
                       result.check, result.text);
}

std::string toJson(const std::string& companion, const std::vector<Result>& results) {
    constexpr const char* words[] = {"pass", "fail", "skip"};
    nlohmann::ordered_json checks = nlohmann::ordered_json::array();
    for (const Result& result : results) {
        checks.push_back({{"check", result.check},
                          {"result", words[static_cast<std::size_t>(result.verdict)]},
                          {"text", tools::toUtf8(result.text)},
                          {"milliseconds", result.milliseconds}});
    }
    const nlohmann::ordered_json object = {{"companion", tools::toUtf8(companion)},
                                           {"checks", checks},
                                           {"failures", count(results, Verdict::Fail)},
                                           {"skipped", count(results, Verdict::Skip)}};
    return object.dump(2) + "\n";
}

std::string toJunit(const std::string& companion, const std::vector<Result>& results) {
    const std::string name = xmlText(companion);
    std::string xml = fmt::format(R"(<?xml version="1.0" encoding="UTF-8"?>
<testsuite name="{}" tests="{}" failures="{}" skipped="{}">
)",
                                  name, results.size(), count(results, Verdict::Fail),
                                  count(results, Verdict::Skip));
    for (const Result& result : results) {
        xml += fmt::format(R"(  <testcase classname="{}" name="{}" time="{:.3f}"{}
)",
                           name, xmlText(result.check), result.milliseconds / 1000.0,
                           junitOutcome(result));
    }
    return xml + "</testsuite>\n";
}

// Why this system has no pipe route, or an empty text. The library is asked: it says in the record
// which route it takes, whether or not it reaches anybody there.
std::string whyNoPipes(Host& host) {
    host.takeRoute(Route::Pipe);
    Job job(host, host.newPrinter());
    job.launchOnce();
    const bool byPipe = job.record()->dralMode == VOK_MODE_PIPE;
    job.drop();
    endCompanions();
    return byPipe ? ""
                  : "the library has no pipe route on this system (" + tools::systemVersion() + ")";
}

Result makeOne(const Check& check, Host& host) {
    Result result = {check.name, Verdict::Pass, {}, 0};
    host.takeRoute(check.route);
    const DWORD start = GetTickCount();
    try {
        Job job(host, host.newPrinter());
        result.text = check.make(job);
    } catch (const Fault& fault) {
        result.verdict = Verdict::Fail;
        result.text = fault.what();
    }
    result.milliseconds = GetTickCount() - start;
    endCompanions();
    return result;
}

// Makes every check from a clean start and says on standard output how it went, but for JSON.
std::vector<Result> makeChecks(Host& host, const Options& options) {
    const std::string noPipes = whyNoPipes(host);
    std::vector<Result> results;
    for (const Check& check : checksFor(host)) {
        const bool skipped = check.needsPipes && !noPipes.empty();
        results.push_back(skipped ? Result{check.name, Verdict::Skip, noPipes, 0}
                                  : makeOne(check, host));
        if (!options.json) {
            tools::print(resultLine(results.back()));
        }
        if (options.stop && results.back().verdict == Verdict::Fail) {
            break;
        }
    }
    return results;
}

// The file name is the first check: without a role there are no others.
std::vector<Result> run(const Options& options) {
    if (!tools::fileExists(options.companion)) {
        throw std::runtime_error(
            fmt::format("{}: {}", options.companion, tools::errorText(GetLastError())));
    }
    if (const auto identity = sample::parseFileName(options.companion)) {
        Host host(options, *identity);
        host.prepare();
        return makeChecks(host, options);
    }
    const Result wrong = {
        "file-name", Verdict::Fail,
        tools::fileOf(options.companion) + " is not four characters and DRAL.EXE or NEMB.EXE", 0};
    if (!options.json) {
        tools::print(resultLine(wrong));
    }
    return {wrong};
}

void writeJunit(const Options& options, const std::vector<Result>& results) {
    std::ofstream file(options.junit, std::ios::binary);
    file << toJunit(tools::fileOf(options.companion), results);
    file.close();
    if (!file.good()) {
        throw std::runtime_error("can't write " + options.junit);
    }
}

// The exit status. Throws std::runtime_error when the checks can't be made or told.
int checkAndTell(const Options& options) {
    const std::vector<Result> results = run(options);
    if (options.json) {
        tools::print(toJson(options.companion, results));
    }
    if (!tools::allWasPrinted(program)) {
        return tools::exitMisused;
    }
    if (!options.junit.empty()) {
        writeJunit(options, results);
    }
    return count(results, Verdict::Fail) == 0 ? 0 : 1;
}

}  // namespace

}  // namespace vok::check

int main(int count, char** words) {
    vok::check::Options options;
    if (const auto status = vok::check::parseCommandLine(count, words, options)) {
        return *status;
    }
    try {
        return vok::check::checkAndTell(options);
    } catch (const std::runtime_error& error) {
        vok::tools::complain(fmt::format("{}: {}\n", vok::check::program, error.what()));
        return vok::tools::exitMisused;
    }
}
