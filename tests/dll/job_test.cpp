// Whole jobs: a launch, then the events in a print processor's order, to both companions.
#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "dll/job_fixture.h"

namespace vok::test {
namespace {

constexpr DWORD startPage = SM_STARTPAGE;
constexpr DWORD endPage = 1136;

const Companions& companions() {
    static const Companions names{.suffix = "4711"};
    return names;
}

struct MessageJob : Job {
    explicit MessageJob(const OsRelease& os) : Job(os) {
        std::strcpy(record.dralTitleSuffix, "4711");
    }
};

// Identifiers of the messages that a window has received.
std::vector<ULONG_PTR> idsOf(const Window& window) {
    std::vector<ULONG_PTR> ids;
    for (const Message& message : window.received) {
        ids.push_back(message.dataId);
    }
    return ids;
}

using Ids = std::vector<ULONG_PTR>;

TEST(WholeJob, AcceptedByMessages) {
    onEach<MessageJob>(os::all, [](MessageJob& job) {
        const Window& dral = companions().runDral(job.system, {1});
        const Window& nemb = companions().runNemb(job.system, {1});
        EXPECT_EQ(job.launch(), 1);
        EXPECT_EQ(job.tellDral(SM_OPENJOB), 1);
        EXPECT_EQ(job.record.epDoc, 0x10u);
        EXPECT_EQ(job.tellNemb(SM_OPENJOB), 1);
        EXPECT_EQ(job.tellDral(startPage), 1);
        EXPECT_EQ(job.tellNemb(startPage), 1);
        EXPECT_EQ(job.tellNemb(endPage), 1);
        EXPECT_EQ(job.tellNemb(SM_CLOSEJOB), 1);
        EXPECT_EQ(job.tellDral(SM_CLOSEJOB), 1);
        EXPECT_EQ(idsOf(dral), (Ids{1125, 1135, 1127}));
        EXPECT_EQ(idsOf(nemb), (Ids{1125, 1135, 1136, 1127}));
        // DRAL's window is let go of, NEMB's is kept. Only the 9x family takes the flag back.
        EXPECT_EQ(job.record.hDRAL, nullptr);
        EXPECT_EQ(job.record.hNEMB, nemb.handle);
        EXPECT_EQ(job.record.epDoc, job.system.os.is9x() ? 0u : 0x10u);
        job.expectNothingOpenBut();
    });
}

// NEMB isn't told of a job that DRAL refuses, but of its pages and its end by cancelling.
TEST(WholeJob, RefusedByDral) {
    for (const LRESULT refusal : {LRESULT{0}, LRESULT{2}, LRESULT{7}}) {
        onEach<MessageJob>(os::all, [&](MessageJob& job) {
            const Window& dral = companions().runDral(job.system, {refusal});
            const Window& nemb = companions().runNemb(job.system, {5});
            EXPECT_EQ(job.launch(), 1);
            EXPECT_EQ(job.tellDral(SM_OPENJOB), refusal);
            EXPECT_EQ(job.record.epDoc, 0u);
            EXPECT_EQ(job.tellNemb(SM_OPENJOB), 1);
            EXPECT_EQ(job.tellNemb(SM_CLOSEJOB), 1);
            EXPECT_EQ(job.tellNemb(startPage), 5);
            EXPECT_EQ(job.tellNemb(SM_CANCELJOB), 5);
            EXPECT_EQ(job.tellDral(SM_CLOSEJOB), 1);
            EXPECT_EQ(idsOf(dral), Ids{1125});
            EXPECT_EQ(idsOf(nemb), (Ids{1135, 1137}));
            EXPECT_EQ(job.record.hDRAL, nullptr);
        });
    }
}

// The launch answers 0, because the windows come later; the events find them.
TEST(WholeJob, WindowsThatComeAfterTheLaunch) {
    onEach<MessageJob>(os::allNt, [](MessageJob& job) {
        EXPECT_EQ(job.launch(), 0);
        const Window& dral = companions().showDralHidden(job.system, {1});
        const Window& nemb = companions().runNemb(job.system, {1});
        EXPECT_EQ(job.tellDral(SM_OPENJOB), 1);
        EXPECT_EQ(job.tellNemb(SM_OPENJOB), 1);
        EXPECT_EQ(idsOf(dral), Ids{1125});
        EXPECT_EQ(idsOf(nemb), Ids{1125});
        EXPECT_EQ(job.record.hDRAL, dral.handle);
        EXPECT_EQ(job.record.hNEMB, nemb.handle);
    });
}

struct PipeJob : Job {
    explicit PipeJob(const OsRelease& os) : Job(os) { system.separateSessions(); }
    void answers(std::initializer_list<LONG> dral, std::initializer_list<LONG> nemb) {
        system.pipes.client(companions().dralPipe()) = PipeClient::answering(dral);
        system.pipes.client(companions().nembPipe()) = PipeClient::answering(nemb);
    }
    std::vector<size_t> sizesOf(const std::string& pipe) const {
        std::vector<size_t> sizes;
        for (const std::string& bytes : system.pipes.last(pipe).writes) {
            sizes.push_back(bytes.size());
        }
        return sizes;
    }
};

TEST(WholeJob, AcceptedByPipesTwice) {
    onEach<PipeJob>(os::allWithPipes, [](PipeJob& job) {
        for (const int jobs : {1, 2}) {
            job.record = {};
            job.answers({1, 1, 2, 1}, {1, 0, 0});
            EXPECT_EQ(job.launch(), 1);
            EXPECT_EQ(job.tellDral(SM_OPENJOB), 1);
            EXPECT_EQ(job.tellNemb(SM_OPENJOB), 1);
            EXPECT_EQ(job.tellDral(startPage), 1);
            EXPECT_EQ(job.tellNemb(startPage), 1);
            EXPECT_EQ(job.tellDral(SM_CLOSEJOB), 2);
            EXPECT_EQ(job.tellDral(SM_CLOSEJOB), 1);
            EXPECT_EQ(job.record.epDoc, 0x10u);
            EXPECT_EQ(job.tellNemb(SM_CLOSEJOB), 1);
            EXPECT_EQ(job.record.epDoc, 0u);
            EXPECT_EQ(job.record.hDRAL, nullptr);
            EXPECT_EQ(job.record.hNEMB, nullptr);
            EXPECT_EQ(job.sizesOf(companions().dralPipe()), (std::vector<size_t>{36, 36, 36, 36}));
            EXPECT_EQ(job.sizesOf(companions().nembPipe()),
                      (std::vector<size_t>{4, 552, 4, 552, 4, 552}));
            EXPECT_EQ(job.system.pipes.all().size(), static_cast<size_t>(2 * jobs));
            EXPECT_EQ(job.system.handles.countOpen(Kind::pipe), 0u);
        }
    });
}

// By pipe the attempt alone opens the job: NEMB is told although DRAL refused.
TEST(WholeJob, RefusedByPipe) {
    onEach<PipeJob>(os::allWithPipes, [](PipeJob& job) {
        job.answers({0, 0}, {7, 0});
        EXPECT_EQ(job.launch(), 1);
        EXPECT_EQ(job.tellDral(SM_OPENJOB), 0);
        EXPECT_EQ(job.tellNemb(SM_OPENJOB), 7);
        EXPECT_EQ(job.tellDral(SM_CANCELJOB), 0);
        EXPECT_EQ(job.record.epDoc, 0u);
        EXPECT_EQ(job.tellNemb(SM_CANCELJOB), 1);
        EXPECT_EQ(job.tellDral(SM_CANCELJOB), 1);
        EXPECT_EQ(job.tellNemb(SM_CANCELJOB), 1);
        EXPECT_EQ(job.system.handles.countOpen(Kind::pipe), 0u);
    });
}

// Companions whose windows are in sight keep their mode's way: a launch by messages for one job
// doesn't bind the next.
TEST(WholeJob, EachLaunchChoosesItsWayAfresh) {
    Job job(os::winXp);
    const Window& dral = companions().runDral(job.system);
    companions().runNemb(job.system);
    EXPECT_EQ(job.launch(), 1);
    EXPECT_EQ(job.record.dralMode, 2u);
    EXPECT_EQ(job.record.hDRAL, dral.handle);
    job.system.separateSessions();
    EXPECT_EQ(job.launch(), 1);
    EXPECT_EQ(job.record.dralMode, 1u);
    EXPECT_EQ(job.record.nembMode, 1u);
    EXPECT_EQ(job.record.hDRAL, handleOf(Kind::pipe, 1));
}

}  // namespace
}  // namespace vok::test
