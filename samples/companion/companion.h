/**
 * @file companion.h
 * A running companion: who it is, and how it answers an event, by whichever route it came.
 */
#pragma once

#include <windows.h>

#include <map>
#include <string>

#include "command_line.h"
#include "reply_script.h"

namespace vok::sample {

/// May be used by the window's thread and the pipe's thread at once.
class Companion {
  public:
    Companion(Identity identity, std::string printer);
    ~Companion();
    Companion(const Companion&) = delete;
    Companion& operator=(const Companion&) = delete;

    [[nodiscard]] const Identity& identity() const { return identity_; }
    [[nodiscard]] const std::string& printer() const { return printer_; }

    /// The title by which the library looks for a running companion: "DEMODRAL - Office".
    [[nodiscard]] std::string title() const;

    /// Bytes of the event block that this companion is sent.
    [[nodiscard]] DWORD blockSize() const;

    /// Acts the script's next reply to the event: waits, ends the program, never returns, or
    /// returns what to answer.
    /// @param route "message" or "pipe", for the account.
    ScriptedReply answer(DWORD event, const void* block, const char* route);

    /// What the script says about the start: a delay before the windows are made, none ever, or an
    /// early end.
    ScriptedReply startup() { return nextReply("STARTUP"); }

    void say(const std::string& text) const;

  private:
    struct Script {
        std::string text;
        std::size_t next = 0;
    };

    ScriptedReply nextReply(const std::string& event);

    Identity identity_;
    std::string printer_;
    CRITICAL_SECTION lock_{};
    std::map<std::string, Script> scripts_;
};

}  // namespace vok::sample
