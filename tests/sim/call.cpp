#include "call.h"

#include <cstdio>
#include <string>
#include <utility>

#include "real.h"
#include "system.h"

namespace vok::test {
namespace {

std::string hexText(unsigned long long value) {
    char text[24];
    std::snprintf(text, sizeof(text), "0x%llx", value);
    return text;
}

std::string describeAce(PACL list) {
    void* entry = nullptr;
    if (!real.getAce(list, 0, &entry)) {
        return "none";
    }
    const auto* ace = static_cast<ACCESS_ALLOWED_ACE*>(entry);
    const auto* sid = reinterpret_cast<const SID*>(&ace->SidStart);
    const bool everyone = sid->SubAuthorityCount == 1 && sid->SubAuthority[0] == 0 &&
                          sid->IdentifierAuthority.Value[5] == 1;
    return std::string(ace->Header.AceType == ACCESS_ALLOWED_ACE_TYPE ? "allow" : "other") + " " +
           hexText(ace->Mask) + " flags=" + std::to_string(ace->Header.AceFlags) + " " +
           (everyone ? "everyone" : "someone");
}

std::string describeDacl(PSECURITY_DESCRIPTOR descriptor) {
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    PACL list = nullptr;
    if (!real.getSecurityDescriptorDacl(descriptor, &present, &list, &defaulted)) {
        return "bad";
    }
    if (!present) {
        return "absent";
    }
    return list ? "[" + std::to_string(list->AceCount) + ": " + describeAce(list) + "]" : "null";
}

}  // namespace

std::string describe(Hex value) {
    return hexText(value.value);
}

std::string describe(Out out) {
    return out.address ? "out" : "null";
}

std::string describe(Bytes bytes) {
    if (!bytes.address) {
        return "null";
    }
    constexpr size_t shown = 4;
    std::string text = "bytes[" + std::to_string(bytes.size) + "]";
    for (size_t i = 0; i < bytes.size && i < shown; ++i) {
        char digits[8];
        std::snprintf(digits, sizeof(digits), " %02x", static_cast<const BYTE*>(bytes.address)[i]);
        text += digits;
    }
    return text;
}

std::string describe(const char* text) {
    return text ? "\"" + std::string(text) + "\"" : "null";
}

std::string describe(const void* handle) {
    return handleName(handle);
}

std::string describe(const SECURITY_ATTRIBUTES* attributes) {
    if (!attributes) {
        return "null";
    }
    PSECURITY_DESCRIPTOR descriptor = attributes->lpSecurityDescriptor;
    return "sa{" + std::to_string(attributes->nLength) +
           ", inherit=" + std::to_string(attributes->bInheritHandle) +
           (descriptor ? ", dacl=" + describeDacl(descriptor) : ", no descriptor") + "}";
}

std::string describe(const SECURITY_DESCRIPTOR* descriptor) {
    auto* untyped = const_cast<SECURITY_DESCRIPTOR*>(descriptor);
    return descriptor ? "dacl=" + describeDacl(untyped) : "null";
}

// The last error is read before anything else can change it.
Call::Call(Start, const char* name)
    : system_(System::current()), name_(name), error_(real.getLastError()) {
    enter();
    system_.calls.counted(name);
    failure_ = system_.faults.next(name);
    recorded_ = system_.calls.records(name);
}

Call::~Call() {
    leave();
    real.setLastError(error_);
}

void Call::enter() {
    real.enterCriticalSection(&system_.lock_);
}

void Call::leave() {
    real.leaveCriticalSection(&system_.lock_);
}

void Call::record(std::string arguments) {
    index_ = system_.calls.begin(name_, std::move(arguments));
}

void Call::finish(std::string result) {
    system_.calls.end(index_, std::move(result));
}

void Call::complain(const std::string& what) {
    system_.complaints.push_back(std::string(name_) + ": " + what);
}

}  // namespace vok::test
