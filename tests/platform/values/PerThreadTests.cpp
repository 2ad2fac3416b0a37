// SPDX-License-Identifier: Apache-2.0
#include "platform/values/PerThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <utility>

namespace vorlan {
namespace {

std::atomic<int> living = 0;

struct Counted {
    Counted() { ++living; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { --living; }

    int number = 0;
};

TEST(PerThreadTest, IsTheSameObjectForOneThreadAndAnotherForEachOther) {
    PerThread<Counted>::get()->number = 1;
    const auto* const here = PerThread<Counted>::get();
    const auto before = living.load();
    std::thread([&] {
        EXPECT_NE(PerThread<Counted>::get(), here);
        EXPECT_EQ(PerThread<Counted>::get()->number, 0);
        EXPECT_EQ(living, before + 1);
    }).join();
    EXPECT_EQ(PerThread<Counted>::get(), here);
    EXPECT_EQ(here->number, 1);
    EXPECT_EQ(living, before);
}

struct AsksAtTheEnd {
    ~AsksAtTheEnd() { *found = PerThread<Counted>::get(); }

    Counted** found = nullptr;
};

TEST(PerThreadTest, IsNullForWhatTheThreadDestroysLater) {
    Counted other;
    Counted* found = &other;
    std::thread([&] {
        thread_local AsksAtTheEnd asking; // destroyed last, as it was made first
        asking.found = &found;
        EXPECT_NE(PerThread<Counted>::get(), nullptr);
    }).join();
    EXPECT_EQ(found, nullptr);
}

struct FailsAtFirst {
    FailsAtFirst() {
        if (std::exchange(mustFail, false)) throw std::runtime_error("no more room");
    }

    static inline bool mustFail = false;
};

TEST(PerThreadTest, ObjectThatCouldNotBeMadeIsTriedAgain) {
    FailsAtFirst::mustFail = true;
    std::thread([] {
        EXPECT_THROW(PerThread<FailsAtFirst>::get(), std::runtime_error);
        EXPECT_NE(PerThread<FailsAtFirst>::get(), nullptr);
    }).join();
}

} // namespace
} // namespace vorlan
