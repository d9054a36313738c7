#include "pipes.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "call.h"
#include "substitutes.h"
#include "system.h"

namespace vok::test {
namespace {

HANDLE WINAPI createNamedPipeA(LPCSTR name, DWORD openMode, DWORD pipeMode, DWORD maxInstances,
                               DWORD outSize, DWORD inSize, DWORD timeout,
                               LPSECURITY_ATTRIBUTES security) {
    Call call("CreateNamedPipeA", name, openMode, pipeMode, maxInstances, outSize, inSize, timeout,
              static_cast<const SECURITY_ATTRIBUTES*>(security));
    if (call.fails()) {
        return call.failed<HANDLE>();
    }
    System& system = call.system();
    if (std::string_view(name).substr(0, 9) != R"(\\.\pipe\)") {
        return call.done(INVALID_HANDLE_VALUE, DWORD{ERROR_INVALID_NAME});
    }
    if (system.pipes.countOpen(name) >= maxInstances) {
        return call.done(INVALID_HANDLE_VALUE, DWORD{ERROR_PIPE_BUSY});
    }
    auto pipe = system.pipes.make(name);
    pipe->maxInstances = maxInstances;
    for (const DWORD value : {openMode, pipeMode, maxInstances, outSize, inSize, timeout}) {
        pipe->parameters += describe(value) + ", ";
    }
    pipe->parameters += describe(static_cast<const SECURITY_ATTRIBUTES*>(security));
    return call.done(system.handles.open(Kind::pipe, std::move(pipe)));
}

PipeData* openPipe(Call& call, HANDLE handle) {
    auto* pipe = call.system().handles.get<PipeData>(handle, Kind::pipe);
    if (!pipe && handle && handle != INVALID_HANDLE_VALUE) {
        call.complain("not an open pipe: " + handleName(handle));
    }
    return pipe;
}

BOOL connect(Call& call, PipeData& pipe) {
    const PipeClient& client = pipe.client;
    if (client.connectError != 0) {
        return call.done(FALSE, client.connectError);
    }
    if (pipe.clientGone) {
        return call.done(FALSE, DWORD{ERROR_NO_DATA});
    }
    if (pipe.connected) {
        return call.done(FALSE, DWORD{ERROR_PIPE_CONNECTED});
    }
    if (client.comes == PipeClient::Comes::never) {
        call.complain("waits for ever for a client of " + pipe.name);
        return call.done(FALSE, DWORD{ERROR_PIPE_LISTENING});
    }
    pipe.connected = true;
    ++pipe.connects;
    const bool early = client.comes == PipeClient::Comes::beforeWaiting;
    return early ? call.done(FALSE, DWORD{ERROR_PIPE_CONNECTED}) : call.done(TRUE);
}

BOOL WINAPI connectNamedPipe(HANDLE handle, LPOVERLAPPED overlapped) {
    Call call("ConnectNamedPipe", handle, Out{overlapped});
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    PipeData* pipe = openPipe(call, handle);
    if (!pipe) {
        return call.done(FALSE, DWORD{ERROR_INVALID_HANDLE});
    }
    if (const auto hook = pipe->client.onConnect) {
        call.unlocked(hook);
    }
    return connect(call, *pipe);
}

BOOL WINAPI disconnectNamedPipe(HANDLE handle) {
    Call call("DisconnectNamedPipe", handle);
    PipeData* pipe = openPipe(call, handle);
    if (pipe) {
        ++pipe->disconnects;
        pipe->connected = false;
        pipe->clientGone = false;
    }
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    return pipe ? call.done(TRUE) : call.done(FALSE, DWORD{ERROR_INVALID_HANDLE});
}

std::string nextAnswer(Call& call, PipeData& pipe) {
    const std::string frame = std::exchange(pipe.unread, {});
    const size_t turn = pipe.reads++;
    if (const auto answer = pipe.client.answer) {
        return call.unlocked([&] { return answer(frame); });
    }
    const auto& answers = pipe.client.answers;
    return answers.empty() ? "" : answers[std::min(turn, answers.size() - 1)];
}

}  // namespace

std::string replyBytes(LONG reply) {
    std::string bytes(sizeof(reply), '\0');
    std::memcpy(bytes.data(), &reply, sizeof(reply));
    return bytes;
}

PipeClient PipeClient::answering(std::initializer_list<LONG> replies) {
    PipeClient client;
    client.answers.clear();
    for (const LONG reply : replies) {
        client.answers.push_back(replyBytes(reply));
    }
    return client;
}

PipeData& Pipes::last(const std::string& name) const {
    const auto it = std::find_if(pipes_.rbegin(), pipes_.rend(),
                                 [&](const auto& pipe) { return pipe->name == name; });
    if (it == pipes_.rend()) {
        throw std::out_of_range("no pipe was made under the name " + name);
    }
    return **it;
}

size_t Pipes::countOpen(const std::string& name) const {
    return static_cast<size_t>(std::count_if(pipes_.begin(), pipes_.end(), [&](const auto& pipe) {
        return pipe->name == name && !pipe->closed;
    }));
}

void Pipes::forgetClosed() {
    std::erase_if(pipes_, [](const auto& pipe) { return pipe->closed; });
}

HANDLE Pipes::open(const std::string& name, PipeClient client, bool connected) {
    auto pipe = make(name);
    pipe->client = std::move(client);
    pipe->connected = connected;
    return System::current().handles.open(Kind::pipe, std::move(pipe));
}

std::shared_ptr<PipeData> Pipes::make(const std::string& name) {
    auto pipe = std::make_shared<PipeData>();
    pipe->name = name;
    if (const auto it = scripts_.find(name); it != scripts_.end()) {
        pipe->client = it->second;
    }
    pipes_.push_back(pipe);
    return pipe;
}

BOOL Pipes::write(Call& call, HANDLE handle, const void* data, DWORD size, DWORD* moved) {
    PipeData* pipe = openPipe(call, handle);
    if (!pipe) {
        return call.done(FALSE, DWORD{ERROR_INVALID_HANDLE});
    }
    if (pipe->clientGone) {
        return call.done(FALSE, DWORD{ERROR_NO_DATA});
    }
    if (!pipe->connected) {
        return call.done(FALSE, DWORD{ERROR_PIPE_LISTENING});
    }
    const std::string bytes(static_cast<const char*>(data), size);
    pipe->writes.push_back(bytes);
    pipe->unread += bytes;
    pipe->client.takes -= std::min<size_t>(pipe->client.takes, size);
    pipe->clientGone = pipe->client.takes == 0;
    *moved = size;
    return call.done(TRUE);
}

BOOL Pipes::read(Call& call, HANDLE handle, void* data, DWORD size, DWORD* moved) {
    PipeData* pipe = openPipe(call, handle);
    if (!pipe) {
        return call.done(FALSE, DWORD{ERROR_INVALID_HANDLE});
    }
    if (!pipe->clientGone && !pipe->connected) {
        return call.done(FALSE, DWORD{ERROR_PIPE_LISTENING});
    }
    const std::string answer = pipe->clientGone ? "" : nextAnswer(call, *pipe);
    if (answer.empty()) {
        pipe->clientGone = true;
        return call.done(FALSE, DWORD{ERROR_BROKEN_PIPE});
    }
    const size_t count = std::min<size_t>(answer.size(), size);
    std::memcpy(data, answer.data(), count);
    *moved = static_cast<DWORD>(count);
    return call.done(TRUE, describe(Bytes{data, count}));
}

std::span<const Substitute> pipeSubstitutes() {
    static const Substitute all[] = {
        substitute("CreateNamedPipeA", createNamedPipeA),
        substitute("ConnectNamedPipe", connectNamedPipe),
        substitute("DisconnectNamedPipe", disconnectNamedPipe),
    };
    return all;
}

}  // namespace vok::test
