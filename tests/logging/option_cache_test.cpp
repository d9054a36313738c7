// The options of a logger, as any number of threads may ask for them.
#include "logging/option_cache.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "support/simulated_machine.h"

namespace vok::test {
namespace {

std::uint32_t valueOf(const OptionCache::Entry& entry) {
    return entry.load().value;
}

std::string nameOf(int number) {
    return "option " + std::to_string(number);
}

TEST(OptionCache, NothingIsFreshBeforeItIsRead) {
    OptionCache cache;
    for (const std::uint32_t now : {0U, 1U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        EXPECT_FALSE(cache.at(OptionCache::start).load().isFresh(now, 0xFFFFFFFF)) << now;
        EXPECT_FALSE(cache.at("VOK").load().isFresh(now, 0xFFFFFFFF)) << now;
    }
}

TEST(OptionCache, AReadingIsFreshAfterItsTickUntilItsAge) {
    const OptionReading reading{1, 100};
    EXPECT_FALSE(reading.isFresh(99, 50));
    EXPECT_FALSE(reading.isFresh(100, 50));
    EXPECT_TRUE(reading.isFresh(101, 50));
    EXPECT_TRUE(reading.isFresh(149, 50));
    EXPECT_FALSE(reading.isFresh(150, 50));
}

TEST(OptionCache, AKnownOptionIsTheSameByItsName) {
    OptionCache cache;
    std::set<std::string> names;
    for (std::size_t i = 0; i < OptionCache::knownCount; ++i) {
        const auto known = static_cast<OptionCache::Known>(i);
        EXPECT_EQ(&cache.at(OptionCache::nameOf(known)), &cache.at(known));
        names.insert(OptionCache::nameOf(known));
    }
    EXPECT_EQ(names, (std::set<std::string>{"startLog", "All", "Clocktime_In_Header",
                                            "Proc_Id_In_Header", "Thread_Id_In_Header", "VOK"}));
}

TEST(OptionCache, KeepsAnyNumberOfNamesOfAnyLengthApart) {
    OptionCache cache;
    std::vector<std::string> names = {
        "", "VOK", "vok", std::string(23, 'x'), std::string(24, 'x'), std::string(300, 'x')};
    for (int i = 0; i < 20; ++i) {
        names.push_back(nameOf(i));
    }
    std::vector<OptionCache::Entry*> entries;
    for (std::uint32_t i = 0; i < names.size(); ++i) {
        entries.push_back(&cache.at(names[i]));
        entries.back()->store({i, i});
    }
    for (std::uint32_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(&cache.at(names[i]), entries[i]) << names[i];
        EXPECT_EQ(valueOf(cache.at(names[i])), i) << names[i];
    }
}

TEST(OptionCache, CachesAreApart) {
    OptionCache first;
    OptionCache second;
    const std::string longName(100, 'x');
    for (const std::string& name : {std::string("VOK"), longName}) {
        first.at(name).store({1, 1});
        second.at(name).store({2, 2});
        EXPECT_EQ(valueOf(first.at(name)), 1U);
    }
}

TEST(OptionCache, TheUsualOptionsTakeNeitherLockNorMemory) {
    SimulatedMachine machine;
    OptionCache cache;
    const long locks = lockCounts().entered;
    cache.at("VOK");
    cache.at("VOK");
    cache.at("startLog");
    cache.at(OptionCache::clock);
    EXPECT_EQ(lockCounts().entered, locks);
    cache.at(std::string(24, 'x'));
    EXPECT_EQ(lockCounts().entered, locks + 1);
}

// Whatever place a name got while others took theirs, all threads end with the same.
TEST(OptionCache, ThreadsAgreeOnTheEntries) {
    constexpr int threads = 4;
    constexpr int names = 5;
    for (int round = 0; round < 200; ++round) {
        OptionCache cache;
        std::atomic<int> arrived = 0;
        {
            std::vector<std::jthread> running;
            for (int thread = 0; thread < threads; ++thread) {
                running.emplace_back([&] {
                    ++arrived;
                    while (arrived < threads) {
                        std::this_thread::yield();
                    }
                    for (std::uint32_t i = 0; i < names; ++i) {
                        cache.at(nameOf(static_cast<int>(i))).store({i, i});
                    }
                });
            }
        }
        std::set<OptionCache::Entry*> entries;
        for (std::uint32_t i = 0; i < names; ++i) {
            OptionCache::Entry& entry = cache.at(nameOf(static_cast<int>(i)));
            EXPECT_EQ(entry.load().value, entry.load().stamp);
            EXPECT_TRUE(entries.insert(&entry).second);
            EXPECT_EQ(&cache.at(nameOf(static_cast<int>(i))), &entry);
        }
    }
}

}  // namespace
}  // namespace vok::test
