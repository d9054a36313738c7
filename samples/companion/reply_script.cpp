#include "reply_script.h"

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace vok::sample {
namespace {

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = text.find(separator, start);
        parts.push_back(text.substr(start, end - start));
        if (end == std::string::npos)
            return parts;
        start = end + 1;
    }
}

bool parseNumber(const std::string& text, LONG& number) {
    if (text.empty())
        return false;
    char* end = nullptr;
    errno = 0;
    number = std::strtol(text.c_str(), &end, 10);
    return errno == 0 && *end == '\0';
}

/// "word:NUMBER" or "word:NUMBER:REPLY": stores both numbers, the reply only when it is there.
bool parseNumbers(const std::vector<std::string>& parts, LONG& number, LONG& reply) {
    if (parts.size() < 2 || parts.size() > 3 || !parseNumber(parts[1], number) || number < 0)
        return false;
    return parts.size() == 2 || parseNumber(parts[2], reply);
}

}  // namespace

std::optional<ScriptedReply> parseReply(const std::string& text) {
    ScriptedReply reply;
    if (text == "never") {
        reply.kind = ScriptedReply::Kind::Never;
        return reply;
    }
    if (text == "die") {
        reply.kind = ScriptedReply::Kind::Die;
        return reply;
    }
    if (text == "sum") {
        reply.sum = true;
        return reply;
    }
    const std::vector<std::string> parts = split(text, ':');
    LONG number = 0;
    if (parts[0] == "late" && parseNumbers(parts, number, reply.reply)) {
        reply.delay = static_cast<DWORD>(number);
        return reply;
    }
    if (parts[0] == "short" && parseNumbers(parts, number, reply.reply) &&
        number <= static_cast<LONG>(sizeof reply.reply)) {
        reply.bytes = static_cast<DWORD>(number);
        return reply;
    }
    if (parseNumber(text, reply.reply))
        return reply;
    return std::nullopt;
}

std::optional<ScriptedReply> replyAt(const std::string& script, std::size_t index) {
    if (script.empty())
        return ScriptedReply{};
    const std::vector<std::string> replies = split(script, ',');
    return parseReply(index < replies.size() ? replies[index] : replies.back());
}

}  // namespace vok::sample
