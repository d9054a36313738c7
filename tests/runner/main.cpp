// Runs every test of every test program in a folder, each in a process of its own, where there is
// no ctest: run-tests [FOLDER [FILTER]]. Without a folder: `tests` beside this program, with the
// library from `product` beside it. Ends with what they have shown of docs/windows.md, with how
// many passed and failed, and with that status.

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "rows.h"

namespace {

namespace fs = std::filesystem;

constexpr DWORD timeLimit = 300'000;  // milliseconds, for one test

struct Outcome {
    DWORD status;
    std::string output;
};

// A file that no program had before: what a test left running may hold the last one still.
fs::path newLog() {
    static int number = 0;
    ++number;
    return fs::temp_directory_path() / ("vok-run-tests-" + std::to_string(GetCurrentProcessId()) +
                                        "-" + std::to_string(number) + ".txt");
}

// The text of the log, which is gone then unless something holds it.
std::string takeText(const fs::path& log) {
    std::string text;
    if (std::FILE* file = std::fopen(log.string().c_str(), "r")) {
        char buffer[4096];
        while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, file)) {
            text.append(buffer, count);
        }
        static_cast<void>(std::fclose(file));
    }
    DeleteFileA(log.string().c_str());
    return text;
}

// Runs the command line with its output in a file; no value when it could not be started.
std::optional<Outcome> run(std::string commandLine, const fs::path& directory) {
    const fs::path log = newLog();
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    const HANDLE file = CreateFileA(log.string().c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                    &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return std::nullopt;
    }
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = file;
    startup.hStdError = file;
    PROCESS_INFORMATION process = {};
    const BOOL started = CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0,
                                        nullptr, directory.string().c_str(), &startup, &process);
    CloseHandle(file);
    if (started == 0) {
        return std::nullopt;
    }
    if (WaitForSingleObject(process.hProcess, timeLimit) == WAIT_TIMEOUT) {
        TerminateProcess(process.hProcess, ERROR_TIMEOUT);
        WaitForSingleObject(process.hProcess, INFINITE);
    }
    Outcome outcome = {};
    GetExitCodeProcess(process.hProcess, &outcome.status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    outcome.output = takeText(log);
    return outcome;
}

// The full names in a listing: suites stand at the margin, their tests are indented; what follows
// a # is the test's parameter.
std::vector<std::string> testNames(const std::string& listing) {
    std::vector<std::string> names;
    std::string suite;
    for (std::size_t start = 0; start < listing.size();) {
        const std::size_t end = std::min(listing.find('\n', start), listing.size());
        const std::string line = listing.substr(start, end - start);
        const std::string word = line.substr(0, line.find_first_of(" #\r", 2));
        if (line.starts_with("  ")) {
            names.push_back(suite + word.substr(2));
        } else if (word.ends_with('.')) {
            suite = word;
        }
        start = end + 1;
    }
    return names;
}

std::string quoted(const fs::path& path) {
    return '"' + path.string() + '"';
}

std::vector<fs::path> programsIn(const fs::path& folder) {
    std::vector<fs::path> programs;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().string().ends_with("_test.exe")) {
            programs.push_back(entry.path());
        }
    }
    std::sort(programs.begin(), programs.end());
    return programs;
}

struct Results {
    int passed = 0;
    int failed = 0;
    vok::test::Rows rows;
};

void report(const std::string& name, const std::optional<Outcome>& outcome, Results& results) {
    if (outcome && outcome->status == 0) {
        ++results.passed;
        vok::test::takeRows(outcome->output, results.rows);
        return;
    }
    ++results.failed;
    std::printf("FAILED %s (status %lu)\n%s\n", name.c_str(), outcome ? outcome->status : 0UL,
                outcome ? outcome->output.c_str() : "did not run");
}

void runProgram(const fs::path& program, const std::string& filter, const fs::path& directory,
                Results& results) {
    std::printf("== %s\n", program.filename().string().c_str());
    static_cast<void>(std::fflush(stdout));
    const auto listing =
        run(quoted(program) + " --gtest_list_tests --gtest_filter=" + filter, directory);
    if (!listing || listing->status != 0) {
        report(program.filename().string() + " --gtest_list_tests", listing, results);
        return;
    }
    for (const std::string& name : testNames(listing->output)) {
        const auto outcome = run(quoted(program) + " --gtest_filter=" + name, directory);
        // A program that knows no such test succeeds as well.
        const bool ran =
            outcome && outcome->output.find("Running 1 test from") != std::string::npos;
        report(name, ran ? outcome : std::nullopt, results);
    }
}

fs::path ownFolder() {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    return fs::path(path).parent_path();
}

}  // namespace

int main(int argc, char** argv) {
    const fs::path product = ownFolder() / "product";
    const fs::path folder = argc > 1 ? fs::path(argv[1]) : ownFolder() / "tests";
    const std::string filter = argc > 2 ? argv[2] : "*";
    if (!fs::is_directory(folder)) {
        std::fprintf(stderr, "run-tests: no such folder: %s\n", folder.string().c_str());
        return 2;
    }
    if (fs::is_directory(product)) {
        SetEnvironmentVariableA("VOK_TEST_DLL",
                                (product / VOK_MODEL_PREFIX "vok.dll").string().c_str());
    }
    Results results;
    for (const fs::path& program : programsIn(folder)) {
        runProgram(program, filter, fs::is_directory(product) ? product : folder, results);
    }
    std::fputs(vok::test::asTable(results.rows).c_str(), stdout);
    std::printf("%d passed, %d failed\n", results.passed, results.failed);
    return results.failed == 0 && results.passed > 0 ? 0 : 1;
}
