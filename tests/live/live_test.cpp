#include "live_test.h"

#include <vok/companion.h>

#include <array>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/other_session.h"
#include "common/settings.h"

namespace vok::test {
namespace {

constexpr DWORD longest_wait = 300000;

}  // namespace

void LiveTest::SetUp() {
    ASSERT_EQ(wrongVersion(), "") << "live.prepare has not been run";
    machine_ = std::make_unique<LiveMachine>();
}

void LiveTest::TearDown() {
    // The companions first: what still waits for them returns before its library goes.
    if (machine_)
        machine_->endCompanions();
    pipe_.reset();
    message_.reset();
    machine_.reset();
}

const sample::VokCalls& LiveTest::library(Route route) {
    module(route);
    return (route == Route::Pipe ? pipe_ : message_)->calls();
}

HMODULE LiveTest::module(Route route) {
    auto& library = route == Route::Pipe ? pipe_ : message_;
    if (library)
        return library->module();
    library = std::make_unique<sample::VokLibrary>();
    const std::string path = machine_->copyLibrary(toText(route));
    EXPECT_EQ(library->load(path.substr(0, path.find_last_of('\\')), livePrefix()), ERROR_SUCCESS);
    if (route == Route::Pipe) {
        EXPECT_TRUE(sample::moveToSessionZero(library->module()));
    }
    return library->module();
}

void LiveTest::script(const char* companion, const char* event, const std::string& replies) {
    EXPECT_EQ(sample::writeSetting(sample::companion_key + std::string(companion), event, replies),
              ERROR_SUCCESS);
}

std::vector<std::string> LiveTest::account() const {
    std::vector<std::string> lines;
    for (const std::string& line : readLines(machine_->tracePath())) {
        const std::size_t who = line.find(' ') + 1;
        const std::size_t process = line.find('[', who);
        const std::size_t text = line.find("] ", process);
        if (text != std::string::npos && line.find(" by ", text) != std::string::npos)
            lines.push_back(line.substr(who, process - who) + line.substr(text + 1));
    }
    return lines;
}

std::string LiveTest::told(const std::string& companion, const std::string& event, Route route,
                           DWORD job, DWORD page, LONG reply) {
    return companion + " " + event + " by " + (route == Route::Pipe ? "pipe" : "message") +
           " (job " + std::to_string(job) + ", page " + std::to_string(page) + "): answers " +
           std::to_string(reply);
}

void LiveTest::expectLogged(const std::vector<std::string>& texts) const {
    const std::vector<std::string> lines = readLines(machine_->logPath());
    auto line = lines.begin();
    for (const std::string& text : texts) {
        while (line != lines.end() && !line->ends_with(text))
            ++line;
        if (line == lines.end()) {
            std::string all;
            for (const std::string& each : lines)
                all += each + "\n";
            ADD_FAILURE() << "not logged, or too early: '" << text << "' in\n" << all;
            return;
        }
        ++line;
    }
}

void LiveTest::expectNotLogged(const std::string& text) const {
    for (const std::string& line : readLines(machine_->logPath()))
        EXPECT_EQ(line.find(text), std::string::npos) << line;
}

bool LiveTest::waitFor(const std::function<bool()>& happened) {
    constexpr DWORD pause = 20;
    for (DWORD waited = 0; waited < longest_wait; waited += pause) {
        if (happened())
            return true;
        Sleep(pause);
    }
    return false;
}

bool LiveTest::waitForWindows(const std::string& printer) {
    return waitFor([&] {
        return FindWindowA(nullptr, (livePrefix() + VOK_DRAL_TITLE + printer).c_str()) != nullptr &&
               FindWindowA(nullptr, (livePrefix() + VOK_NEMB_TITLE + printer).c_str()) != nullptr;
    });
}

std::string logged(HANDLE handle) {
    if (handle == nullptr)
        return {};
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "0x%016llX",
                  static_cast<unsigned long long>(reinterpret_cast<ULONG_PTR>(handle)));
    return text.data();
}

Caller::Caller(std::function<LONG()> call)
    : call_(std::move(call)), thread_(CreateThread(nullptr, 0, run, this, 0, nullptr)) {}

Caller::~Caller() {
    WaitForSingleObject(thread_, INFINITE);
    CloseHandle(thread_);
}

bool Caller::done() const {
    return WaitForSingleObject(thread_, 0) == WAIT_OBJECT_0;
}

bool Caller::join() const {
    return WaitForSingleObject(thread_, longest_wait) == WAIT_OBJECT_0;
}

DWORD WINAPI Caller::run(void* caller) {
    auto& self = *static_cast<Caller*>(caller);
    self.result_ = self.call_();
    return 0;
}

}  // namespace vok::test
