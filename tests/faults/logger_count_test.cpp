// The logger's count over thousands of nested calls whose set-up fails or not: it goes its own way,
// and the logger comes and goes exactly as the count says.
#include <gtest/gtest.h>

#include <cstdio>
#include <random>

#include "faults/restarted_library.h"
#include "faults/watched_heap.h"

namespace vok::test {
namespace {

constexpr size_t topLevelCalls = 400;
constexpr size_t deepest = 3;
constexpr unsigned seeds = 20;

// The count as it is meant: raised only by a call that finds or makes a logger, lowered by every
// call, below zero too; the logger goes when it reaches zero.
struct Count {
    bool created = false;
    int value = 0;
    size_t tries = 0;
    size_t creations = 0;

    void enter(bool configurationIsThere) {
        if (!created) {
            ++tries;
            created = configurationIsThere;
            creations += created ? 1 : 0;
        }
        value += created ? 1 : 0;
    }
    void leave() {
        --value;
        created = created && value != 0;
    }
};

class NestedCalls {
  public:
    explicit NestedCalls(unsigned seed) : random_(seed) {
        system_.calls.on = false;
        system_.clock.stepPerRead = 1;
        system_.startLog();
        Window& window = system_.desktop.add("any", "DEMODRAL - Office");
        record_.hDRAL = window.handle;
        window.reply = [this](const Message&) {
            while (depth_ < deepest && random_() % 3 == 0) {
                call();
            }
            return LRESULT{YESPRINT};
        };
    }

    void run(RestartedLibrary& library) {
        {
            const Started started(library);
            library_ = &started;
            system_.calls.clear();
            for (size_t i = 0; i < topLevelCalls && !::testing::Test::HasFailure(); ++i) {
                call();
                expectAsCounted();
            }
        }
        EXPECT_EQ(system_.handles.countOpen(Kind::mutex), 0u);
        std::printf("calls: %zu, tries: %zu, loggers: %zu, last count: %d\n", calls_, count_.tries,
                    count_.creations, count_.value);
    }

  private:
    // One call whose companion may make more calls before it answers.
    void call() {
        const bool there = random_() % 4 != 0;
        system_.modules.config.inSearchPath = there;
        ++depth_;
        count_.enter(there);
        EXPECT_EQ((*library_)->sendDralMsg(block_, SM_STARTPAGE, &record_), YESPRINT);
        count_.leave();
        --depth_;
        ++calls_;
    }

    void expectAsCounted() const {
        EXPECT_EQ(system_.handles.countOpen(Kind::mutex), count_.created ? 1u : 0u);
        EXPECT_EQ(system_.calls.count("CreateMutexA"), count_.creations);
        EXPECT_EQ(system_.modules.countLoaded("DEMOcfg.dll"), 0u);
    }

    System system_;
    std::mt19937 random_;
    Count count_;
    const Started* library_ = nullptr;
    VKDATA record_{};
    char block_[VOK_DRAL_BLOCK_SIZE] = {};
    size_t depth_ = 0;
    size_t calls_ = 0;
};

TEST(LoggerCount, IsKeptAsMeantThroughNestedAndFailingSetUps) {
    RestartedLibrary library(heap::overrides());
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        NestedCalls calls(seed);
        calls.run(library);
        EXPECT_EQ(heap::damage(), Lines()) << "seed " << seed;
        heap::clear();
    }
}

}  // namespace
}  // namespace vok::test
