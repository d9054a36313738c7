#include "common/system.h"

#include <fmt/format.h>

#include <array>
#include <string>

namespace vok::tools {

std::string errorText(unsigned long error) {
    std::array<char, 512> text{};
    FormatMessageA(
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
        nullptr, error, MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), text.data(),
        static_cast<DWORD>(text.size()), nullptr);
    std::string words = text.data();
    words.erase(words.find_last_not_of(" .") + 1);
    return fmt::format("error {}{}{}", error, words.empty() ? "" : ", ", words);
}

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

std::string systemVersion() {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    GetVersionExA(&version);
    return fmt::format("version {}.{}", version.dwMajorVersion, version.dwMinorVersion);
}

std::string fileOf(const std::string& path) {
    return path.substr(path.rfind('\\') + 1);
}

std::string folderOf(const std::string& path) {
    const std::size_t backslash = path.rfind('\\');
    return backslash == std::string::npos ? std::string() : path.substr(0, backslash);
}

bool sameName(const std::string& left, const std::string& right) {
    return lstrcmpiA(left.c_str(), right.c_str()) == 0;
}

bool fileExists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string pathOf(HMODULE module) {
    std::array<char, MAX_PATH> path{};
    GetModuleFileNameA(module, path.data(), static_cast<DWORD>(path.size()));
    return path.data();
}

bool answersMessages(HWND window, DWORD limit) {
    DWORD_PTR ignored = 0;
    return SendMessageTimeoutA(window, WM_NULL, 0, 0, SMTO_NORMAL, limit, &ignored) != 0;
}

}  // namespace vok::tools
