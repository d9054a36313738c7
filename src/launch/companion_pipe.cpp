#include "launch/companion_pipe.h"

#include <vok/companion.h>

#include <memory>

#include "support/name_buffer.h"

namespace vok {

namespace {

// The companion's account isn't known, so anybody may connect. One descriptor for each pipe; it is
// never freed.
SECURITY_DESCRIPTOR* makeOpenDescriptor() {
    auto descriptor = std::make_unique<SECURITY_DESCRIPTOR>();
    InitializeSecurityDescriptor(descriptor.get(), SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(descriptor.get(), TRUE, nullptr, FALSE);
    return descriptor.release();
}

}  // namespace

CompanionPipe createCompanionPipe(const char* namePrefix, const char* friendlyName) {
    NameBuffer name(namePrefix);
    name << friendlyName;
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, makeOpenDescriptor(), TRUE};
    return CompanionPipe(CreateNamedPipeA(
        name.text(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT,
        VOK_PIPE_INSTANCES, VOK_PIPE_BUFFER_SIZE, VOK_PIPE_BUFFER_SIZE, VOK_PIPE_DEFAULT_TIMEOUT,
        &attributes));
}

}  // namespace vok
