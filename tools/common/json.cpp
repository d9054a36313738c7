#include "common/json.h"

#include <windows.h>

#include <string>
#include <vector>

namespace vok::tools {

namespace {

std::string escape(const std::string& utf8) {
    std::string escaped;
    for (const char character : utf8) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            escaped += '\\';
            escaped += character;
        } else if (byte < 0x20) {
            constexpr char digits[] = "0123456789abcdef";
            escaped += "\\u00";
            escaped += digits[byte >> 4];
            escaped += digits[byte & 0xF];
        } else {
            escaped += character;
        }
    }
    return escaped;
}

}  // namespace

std::string toUtf8(const std::string& text) {
    const int length = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    const int wideLength = MultiByteToWideChar(CP_ACP, 0, text.data(), length, wide.data(), length);
    constexpr std::size_t longestUtf8 = 4;
    std::string utf8(text.size() * longestUtf8, '\0');
    const int utf8Length = WideCharToMultiByte(CP_UTF8, 0, wide.data(), wideLength, utf8.data(),
                                               static_cast<int>(utf8.size()), nullptr, nullptr);
    utf8.resize(static_cast<std::size_t>(utf8Length));
    return utf8;
}

std::string jsonText(const std::string& text) {
    return '"' + escape(toUtf8(text)) + '"';
}

std::string jsonList(const std::vector<std::string>& items) {
    std::string list;
    for (const std::string& item : items) {
        list += (list.empty() ? "\n" : ",\n") + item;
    }
    return "[" + list + "]";
}

JsonObject& JsonObject::text(const std::string& name, const std::string& value) {
    return raw(name, jsonText(value));
}

JsonObject& JsonObject::number(const std::string& name, unsigned long value) {
    return raw(name, std::to_string(value));
}

JsonObject& JsonObject::raw(const std::string& name, const std::string& value) {
    members_ += (members_.empty() ? "" : ", ") + jsonText(name) + ": " + value;
    return *this;
}

}  // namespace vok::tools
