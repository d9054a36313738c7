// Named pipes, served by the library, and the scripted clients at their other ends.
#pragma once
#include <windows.h>

#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vok::test {

class Call;

// The four bytes of a reply.
std::string replyBytes(LONG reply);

// What a companion does at its end of a pipe.
struct PipeClient {
    enum class Comes {
        whileWaiting,   // the connect waits for it and succeeds
        beforeWaiting,  // it is there already: the connect fails with 535
        never           // the connect would wait for ever; it fails with 536 and is complained of
    };
    Comes comes = Comes::whileWaiting;
    DWORD connectError = 0;  // not 0: the connect fails with this
    // What it writes back for each read, the last one over and over; an empty text: it closes its
    // end instead. 1 to 3 bytes are a reply cut short.
    std::vector<std::string> answers = {replyBytes(1)};
    // Instead of the list: gets the bytes written since the last read, gives the answer.
    std::function<std::string(const std::string&)> answer;
    size_t takes = ~size_t{0};  // bytes after which it closes its end
    std::function<void()> onConnect;

    static PipeClient answering(std::initializer_list<LONG> replies);
};

// One server end.
struct PipeData {
    std::string name;
    std::string parameters;  // "3, 0, 2, 1024, 1024, 1000, sa{…}" of its creation
    PipeClient client;
    bool connected = false;
    bool clientGone = false;
    bool closed = false;
    std::vector<std::string> writes;  // one text for each WriteFile
    std::string unread;               // written since the last read
    size_t reads = 0;
    size_t connects = 0;
    size_t disconnects = 0;
    DWORD maxInstances = 0;
};

class Pipes {
  public:
    // The script for every pipe of that name made from now on.
    PipeClient& client(const std::string& name) { return scripts_[name]; }
    // The pipes made so far, in order, closed ones included.
    const std::vector<std::shared_ptr<PipeData>>& all() const { return pipes_; }
    // The last one made under that name; throws std::out_of_range when there is none.
    PipeData& last(const std::string& name) const;
    size_t countOpen(const std::string& name) const;
    // Forgets those that are closed, for very long runs.
    void forgetClosed();
    // A pipe as an earlier call would have left it in the job record; `connected` at once.
    HANDLE open(const std::string& name, PipeClient client = {}, bool connected = true);

    // For the substitutes.
    std::shared_ptr<PipeData> make(const std::string& name);
    BOOL write(Call& call, HANDLE handle, const void* data, DWORD size, DWORD* moved);
    BOOL read(Call& call, HANDLE handle, void* data, DWORD size, DWORD* moved);

  private:
    std::map<std::string, PipeClient> scripts_;
    std::vector<std::shared_ptr<PipeData>> pipes_;
};

}  // namespace vok::test
