/**
 * @file reply_script.h
 * The companion's replies are scripted, so that a demo or a test can have any answer.
 *
 * The script of an event is a text value of the key `Companion\DRAL` or `Companion\NEMB` below the
 * base key, named OPENJOB, STARTPAGE, ENDPAGE, CLOSEJOB, CANCELJOB or by the event's number. It
 * lists replies, separated by commas: the first is for the first such event that the companion
 * gets, and the last is repeated for ever. Without a script the reply is 1. When the script is
 * changed it begins anew. The script STARTUP stands for the start itself: "late:2000" makes the
 * windows 2 seconds after the program runs, "never" makes none, "die" ends at once.
 *
 * | reply | what the companion does |
 * |---|---|
 * | 2 | answers 2 (any 32-bit number) |
 * | late:500, late:500:2 | answers 1, or 2, after 500 milliseconds |
 * | short:2, short:2:7 | answers only 2 bytes of 1, or of 7; by message the whole of it |
 * | sum | answers the sum of the block's bytes, see agreement.h |
 * | never | never answers again |
 * | die | ends at once, without an answer |
 */
#pragma once

#include <windows.h>

#include <cstddef>
#include <optional>
#include <string>

namespace vok::sample {

struct ScriptedReply {
    enum class Kind { Answer, Never, Die };
    Kind kind = Kind::Answer;
    LONG reply = 1;
    DWORD delay = 0;   ///< Milliseconds before the answer.
    bool sum = false;  ///< The answer is the block's sum instead.
    DWORD bytes = 4;   ///< Bytes of the answer that go into a pipe, 0 to 4.
};

/// Nothing when the text is not a reply.
std::optional<ScriptedReply> parseReply(const std::string& text);

/// The reply to the event number `index`, counted from 0. An empty script answers 1; nothing is
/// returned when the text that stands there is not a reply.
std::optional<ScriptedReply> replyAt(const std::string& script, std::size_t index);

}  // namespace vok::sample
