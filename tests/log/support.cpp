#include "support.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <ios>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

namespace vok::test {

namespace {

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

[[noreturn]] void becomeReader(std::vector<std::string> words, const std::string& input,
                               const std::string& out, const std::string& error) {
    const int in = open(input.c_str(), O_RDONLY);
    const int first = open(out.c_str(), O_WRONLY | O_TRUNC);
    const int second = open(error.c_str(), O_WRONLY | O_TRUNC);
    dup2(in, STDIN_FILENO);
    dup2(first, STDOUT_FILENO);
    dup2(second, STDERR_FILENO);
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    execv(VOK_LOG_PROGRAM, arguments.data());
    _exit(127);
}

long peakMemoryOf(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    const std::string label = "VmHWM:";
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(label)) {
            return std::stol(line.substr(label.size()));
        }
    }
    return 0;
}

// Waits for the end of a process that is traced, and looks at its memory right before that: what
// the system tells afterwards counts the memory of whoever started it too.
int waitForEnd(pid_t process, long& peakMemory) {
    int status = 0;
    if (waitpid(process, &status, 0) < 0) {
        fail("vok-log");
    }
    ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_TRACEEXIT | PTRACE_O_EXITKILL);
    while (WIFSTOPPED(status)) {
        const bool ends = status >> 8 == (SIGTRAP | PTRACE_EVENT_EXIT << 8);
        peakMemory = ends ? peakMemoryOf(process) : peakMemory;
        const int signal = WSTOPSIG(status) == SIGTRAP ? 0 : WSTOPSIG(status);
        ptrace(PTRACE_CONT, process, nullptr, signal);
        if (waitpid(process, &status, 0) < 0) {
            fail("vok-log");
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

TemporaryFile::TemporaryFile(const std::string& ending) {
    path_ = testing::TempDir() + "vok-log-XXXXXX" + ending;
    const int file = mkstemps(path_.data(), static_cast<int>(ending.size()));
    if (file < 0) {
        fail(path_.c_str());
    }
    close(file);
}

TemporaryFile::~TemporaryFile() {
    unlink(path_.c_str());
}

void TemporaryFile::write(const std::string& text) const {
    std::ofstream(path_, std::ios::binary) << text;
}

std::string TemporaryFile::read() const {
    return readFile(path_);
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        fail(path.c_str());
    }
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string dataFile(const std::string& name) {
    return std::string(VOK_SOURCE_DIR) + "/tests/log/data/" + name;
}

RunResult runReader(const std::vector<std::string>& arguments, const std::string& input) {
    const TemporaryFile in;
    const TemporaryFile out;
    const TemporaryFile error;
    in.write(input);
    std::vector<std::string> words = {VOK_LOG_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const pid_t child = fork();
    if (child == 0) {
        becomeReader(words, in.path(), out.path(), error.path());
    }
    if (child < 0) {
        fail("fork");
    }
    RunResult result;
    result.status = waitForEnd(child, result.peakMemory);
    result.out = out.read();
    result.error = error.read();
    return result;
}

nlohmann::json accountOf(const std::string& log, std::vector<std::string> arguments) {
    const TemporaryFile file;
    file.write(log);
    arguments.insert(arguments.end(), {"--json", file.path()});
    const RunResult result = runReader(arguments);
    EXPECT_LE(result.status, 1) << result.error;
    EXPECT_EQ(result.error, "");
    return nlohmann::json::parse(result.out);
}

}  // namespace vok::test
