#include "companion.h"

#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "common/agreement.h"
#include "common/settings.h"
#include "common/trace.h"

namespace vok::sample {
namespace {

std::string describeBlock(Role role, const void* block) {
    if (role == Role::Dral) {
        DralBlock dral;
        std::memcpy(&dral, block, sizeof dral);
        return "job " + std::to_string(dral.job) + ", page " + std::to_string(dral.page);
    }
    NembBlock nemb;
    std::memcpy(&nemb, block, sizeof nemb);
    return "job " + std::to_string(nemb.job) + ", page " + std::to_string(nemb.page);
}

}  // namespace

Companion::Companion(Identity identity, std::string printer)
    : identity_(std::move(identity)), printer_(std::move(printer)) {
    InitializeCriticalSection(&lock_);
}

Companion::~Companion() {
    DeleteCriticalSection(&lock_);
}

std::string Companion::title() const {
    return identity_.prefix + (identity_.role == Role::Dral ? VOK_DRAL_TITLE : VOK_NEMB_TITLE) +
           printer_;
}

DWORD Companion::blockSize() const {
    return identity_.role == Role::Dral ? VOK_DRAL_BLOCK_SIZE : VOK_NEMB_BLOCK_SIZE;
}

ScriptedReply Companion::answer(DWORD event, const void* block, const char* route) {
    ScriptedReply reply = nextReply(eventName(event));
    const std::string head =
        eventName(event) + " by " + route + " (" + describeBlock(identity_.role, block) + "): ";
    switch (reply.kind) {
        case ScriptedReply::Kind::Never:
            say(head + "never answers");
            Sleep(INFINITE);
            break;
        case ScriptedReply::Kind::Die:
            say(head + "dies");
            TerminateProcess(GetCurrentProcess(), 3);
            break;
        case ScriptedReply::Kind::Answer:
            break;
    }
    if (reply.sum)
        reply.reply = blockSum(block, blockSize());
    Sleep(reply.delay);
    say(head + "answers " + std::to_string(reply.reply) +
        (reply.bytes == 4 ? "" : ", " + std::to_string(reply.bytes) + " bytes of it") +
        (reply.delay == 0 ? "" : ", " + std::to_string(reply.delay) + " ms late"));
    return reply;
}

ScriptedReply Companion::nextReply(const std::string& event) {
    const std::string text =
        readSetting(companion_key + std::string(roleName(identity_.role)), event.c_str());
    EnterCriticalSection(&lock_);
    Script& script = scripts_[event];
    if (script.text != text)
        script = {text, 0};
    const std::optional<ScriptedReply> reply = replyAt(script.text, script.next++);
    LeaveCriticalSection(&lock_);
    if (!reply)
        say("the script of " + event + " is not understood: '" + text + "'");
    return reply.value_or(ScriptedReply{});
}

void Companion::say(const std::string& text) const {
    trace(roleName(identity_.role), text);
}

}  // namespace vok::sample
