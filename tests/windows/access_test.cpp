// Who may open what, as this machine enforces it.
#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <memory>
#include <string>

#include "support/security_everyone.h"
#include "windows/seen.h"

namespace vok::test {
namespace {

// An empty list, which allows nobody.
class NobodysAttributes {
  public:
    NobodysAttributes() {
        InitializeAcl(&list_, sizeof list_, ACL_REVISION);
        InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION);
        SetSecurityDescriptorDacl(&descriptor_, TRUE, &list_, FALSE);
        attributes_ = {sizeof attributes_, &descriptor_, FALSE};
    }
    SECURITY_ATTRIBUTES* get() { return &attributes_; }

  private:
    ACL list_ = {};
    SECURITY_DESCRIPTOR descriptor_ = {};
    SECURITY_ATTRIBUTES attributes_ = {};
};

// Until its end this thread may do only what everyone may.
class AsAnybody {
  public:
    AsAnybody() {
        std::array<BYTE, SECURITY_MAX_SID_SIZE> everyone = {};
        DWORD size = static_cast<DWORD>(everyone.size());
        CreateWellKnownSid(WinWorldSid, nullptr, everyone.data(), &size);
        SID_AND_ATTRIBUTES only = {everyone.data(), 0};
        HANDLE own = nullptr;
        HANDLE token = nullptr;
        OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, &own);
        EXPECT_NE(CreateRestrictedToken(own, 0, 0, nullptr, 0, nullptr, 1, &only, &token), 0)
            << GetLastError();
        EXPECT_NE(ImpersonateLoggedOnUser(token), 0) << GetLastError();
        CloseHandle(token);
        CloseHandle(own);
    }
    ~AsAnybody() { RevertToSelf(); }
    AsAnybody(const AsAnybody&) = delete;
    AsAnybody& operator=(const AsAnybody&) = delete;
};

std::string temporaryPath(const char* name) {
    std::array<char, MAX_PATH> folder = {};
    GetTempPathA(static_cast<DWORD>(folder.size()), folder.data());
    return folder.data() + ("vok-" + std::to_string(GetCurrentProcessId()) + "-") + name;
}

// A file that is gone when this is.
class TemporaryFile {
  public:
    TemporaryFile(const char* name, SECURITY_ATTRIBUTES* attributes)
        : path_(temporaryPath(name)),
          handle_(CreateFileA(path_.c_str(), GENERIC_WRITE | DELETE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, attributes,
                              CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE, nullptr)) {
        EXPECT_NE(handle_, INVALID_HANDLE_VALUE) << GetLastError();
    }
    ~TemporaryFile() { CloseHandle(handle_); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    // The result of opening it once more, an error code.
    [[nodiscard]] DWORD open() const {
        const HANDLE again = CreateFileA(path_.c_str(), GENERIC_READ,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                         nullptr, OPEN_EXISTING, 0, nullptr);
        const DWORD error = again == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
        CloseHandle(again);
        return error;
    }

  private:
    std::string path_;
    HANDLE handle_;
};

DWORD openPipe(SECURITY_ATTRIBUTES* attributes, bool asAnybody) {
    const std::string name =
        R"(\\.\pipe\vok-windows-test-)" + std::to_string(GetCurrentProcessId());
    const HANDLE server = CreateNamedPipeA(name.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 64,
                                           64, 0, attributes);
    EXPECT_NE(server, INVALID_HANDLE_VALUE) << GetLastError();
    const std::unique_ptr<AsAnybody> anybody = asAnybody ? std::make_unique<AsAnybody>() : nullptr;
    const HANDLE client = CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                      OPEN_EXISTING, 0, nullptr);
    const DWORD error = client == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
    CloseHandle(client);
    CloseHandle(server);
    return error;
}

TEST(Windows, AccessListThatAllowsNobody) {
    NobodysAttributes nobody;
    const DWORD expected = onWindows() ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
    EXPECT_EQ(TemporaryFile("nobody", nobody.get()).open(), expected);
    EXPECT_EQ(openPipe(nobody.get(), false), expected);
}

// What the library makes for everyone, its log and its pipes, is open to everyone, and not because
// all is.
TEST(Windows, WhatTheLibraryMakesIsForEveryone) {
    const DWORD expected = onWindows() ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
    SecurityEveryone everyone(false);
    const TemporaryFile own("own", nullptr);
    const TemporaryFile shared("shared", everyone.getAttributes());
    {
        const AsAnybody anybody;
        EXPECT_EQ(own.open(), expected);
        EXPECT_EQ(shared.open(), DWORD{ERROR_SUCCESS});
    }
    EXPECT_EQ(openPipe(everyone.getAttributes(), true), DWORD{ERROR_SUCCESS});
    if (onWindows() && !testing::Test::HasFailure()) {
        seenOnWindows("access lists",
                      "are enforced: what allows its owner alone keeps others out; files and pipes "
                      "with the library's list may be opened by everyone");
    }
}

}  // namespace
}  // namespace vok::test
