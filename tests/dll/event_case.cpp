#include "dll/event_case.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace vok::test {
namespace {

// The fixture's blocks begin like this.
std::string blockText(To companion) {
    return companion == To::dral ? "bytes[36] 01 02 03 04" : "bytes[552] 4f 66 66 69";
}

std::string sender(const OsRelease& os, To companion) {
    const std::string name = companion == To::dral ? "SendDRALMsg" : "SendNEMBMsg";
    return name + (os.is9x() ? "9X" : "XP");
}

std::string describeBytes(const std::string& bytes) {
    return describe(Bytes{bytes.data(), bytes.size()});
}

}  // namespace

std::vector<PipeAnswer> pipeAnswers() {
    std::vector<PipeAnswer> answers;
    for (const LONG reply : {0, 1, 2, 7, 1314, -1}) {
        answers.push_back({replyBytes(reply), reply, reply});
    }
    const std::string cut = replyBytes(0x07060502);
    answers.push_back({cut.substr(0, 3), 0x060502, 0x060502});
    answers.push_back({cut.substr(0, 2), 0x0502, 0x0502});
    answers.push_back({cut.substr(0, 1), 2, 2});
    answers.push_back({"", NOPRINT, YESPRINT});
    return answers;
}

std::string replyText(LONG reply) {
    switch (reply) {
        case 0:
            return "NOPRINT";
        case 1:
            return "YESPRINT";
        case 2:
            return "WAITPRINT";
        default:
            return std::to_string(reply);
    }
}

void expectEvent(Job& job, To companion, DWORD messageId, const Outcome& expected) {
    job.system.calls.clear();
    const ULONGLONG begin = job.system.clock.passed();
    const bool isDral = companion == To::dral;
    const LONG result = isDral ? job.tellDral(messageId) : job.tellNemb(messageId);
    EXPECT_EQ(result, expected.result);
    EXPECT_EQ(job.record.epDoc, expected.epDoc);
    EXPECT_EQ(isDral ? job.record.hDRAL : job.record.hNEMB, expected.handle);
    EXPECT_EQ(job.system.clock.passed() - begin, expected.milliseconds);
    job.expectNewLines(traceOf(isDral ? "VOKSendDralMsg" : "VOKSendNembMsg") +
                       traceOf(sender(job.system.os, companion)) + expected.log);
    EXPECT_EQ(callLines(job.system), Lines{"GetVersionExA(148) = 1"} + expected.calls);
}

std::string sentTo(const void* window, DWORD messageId, To companion, LRESULT reply) {
    return "SendMessageA(" + handleName(window) + ", 74, 0, copydata{" + std::to_string(messageId) +
           ", " + blockText(companion) + "}) = " + std::to_string(reply);
}

std::string PipeCase::connects() const {
    return "ConnectNamedPipe(" + handleName(handle) +
           (isConnected ? ", null) = 0 (error 535)" : ", null) = 1");
}

Lines PipeCase::exchanges(To companion, DWORD messageId) const {
    const std::string begin = "WriteFile(" + handleName(handle) + ", ";
    const std::string id(reinterpret_cast<const char*>(&messageId), sizeof messageId);
    Lines lines;
    if (companion == To::nemb) {
        lines.push_back(begin + describeBytes(id) + ", 4, out, null) = 1");
    }
    const int size = companion == To::dral ? VOK_DRAL_BLOCK_SIZE : VOK_NEMB_BLOCK_SIZE;
    lines.push_back(begin + blockText(companion) + ", " + std::to_string(size) +
                    ", out, null) = 1");
    lines.push_back(
        "ReadFile(" + handleName(handle) + ", out, 4, out, null) = " +
        (answer.bytes.empty() ? "0 (error 109)" : "1 -> " + describeBytes(answer.bytes)));
    return lines;
}

Lines PipeCase::closes() const {
    return {"DisconnectNamedPipe(" + handleName(handle) + ") = 1",
            "CloseHandle(" + handleName(handle) + ") = 1"};
}

void onEachPipeCase(To companion, const std::function<void(const PipeCase&)>& check) {
    for (const OsRelease& os : os::allWithPipes) {
        Job job(os);
        for (const DWORD epDoc : flagStates) {
            for (const PipeAnswer& answer : pipeAnswers()) {
                for (const bool isConnected : {false, true}) {
                    SCOPED_TRACE(std::string(os.name) + ", epDoc " + std::to_string(epDoc) +
                                 ", answer " + describeBytes(answer.bytes) +
                                 (isConnected ? ", connected" : ""));
                    PipeClient client;
                    client.answers = {answer.bytes};
                    const HANDLE handle = job.system.pipes.open("pipe", client, isConnected);
                    job.record = {};
                    job.record.epDoc = epDoc;
                    job.record.dralMode = VOK_MODE_PIPE;
                    job.record.nembMode = VOK_MODE_PIPE;
                    (companion == To::dral ? job.record.hDRAL : job.record.hNEMB) = handle;
                    check(
                        {job, handle, *job.system.pipes.all().back(), epDoc, isConnected, answer});
                }
            }
        }
    }
}

}  // namespace vok::test
