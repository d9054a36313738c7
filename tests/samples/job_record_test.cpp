#include "job/job_record.h"

#include <gtest/gtest.h>

#include <string>

namespace vok::sample {
namespace {

HANDLE makePipe(const char* name) {
    return CreateNamedPipeA(name, PIPE_ACCESS_DUPLEX, 0, 2, 64, 64, 0, nullptr);
}

bool isOpen(HANDLE handle) {
    DWORD flags = 0;
    return GetHandleInformation(handle, &flags) != 0;
}

HANDLE makeEvent() {
    return CreateEventA(nullptr, FALSE, FALSE, nullptr);
}

TEST(JobRecordTest, BeginsZeroedButForTheSuffix) {
    JobRecord record("Office");
    EXPECT_STREQ(record->dralTitleSuffix, "Office");
    EXPECT_EQ(record->hDRAL, nullptr);
    EXPECT_EQ(record->hNEMB, nullptr);
    EXPECT_EQ(record->epDoc, 0U);
    EXPECT_EQ(record->dralMode, static_cast<DWORD>(VOK_MODE_NONE));
}

TEST(JobRecordTest, ALongNameIsCutSoThatTheWindowClassIsAllowed) {
    JobRecord record(std::string(1000, 'x'));
    EXPECT_EQ(std::string(record->dralTitleSuffix), std::string(236, 'x'));
}

TEST(JobRecordTest, ClosesTheHandlesAndPipesThatAreLeft) {
    const HANDLE pipe = makePipe("\\\\.\\pipe\\job_record_test");
    const HANDLE process = makeEvent();
    const HANDLE thread = makeEvent();
    ASSERT_TRUE(isOpen(pipe) && isOpen(process) && isOpen(thread));
    {
        JobRecord record("Office");
        record->hDRAL = pipe;
        record->dralMode = VOK_MODE_PIPE;
        record->hNEMBProc = process;
        record->hNEMBThread = thread;
    }
    EXPECT_FALSE(isOpen(pipe));
    EXPECT_FALSE(isOpen(process));
    EXPECT_FALSE(isOpen(thread));
}

TEST(JobRecordTest, AWindowIsForgottenAndNotClosed) {
    const HANDLE notAPipe = makeEvent();
    JobRecord record("Office");
    record->hNEMB = notAPipe;
    record->nembMode = VOK_MODE_WINDOW;
    record.dropCompanions();
    EXPECT_EQ(record->hNEMB, nullptr);
    EXPECT_TRUE(isOpen(notAPipe));
    CloseHandle(notAPipe);
}

TEST(JobRecordTest, APipeThatWasNeverMadeIsForgotten) {
    JobRecord record("Office");
    record->hDRAL = INVALID_HANDLE_VALUE;
    record->dralMode = VOK_MODE_PIPE;
    record.dropCompanions();
    EXPECT_EQ(record->hDRAL, nullptr);
}

}  // namespace
}  // namespace vok::sample
