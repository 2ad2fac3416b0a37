// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/SynchronizedProperty.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;

TEST(SynchronizedProperty, BeginsWithTheGivenValueOrTheDefaultOne) {
    const SynchronizedProperty<bool> isAllowed{true};
    EXPECT_TRUE(isAllowed);
    EXPECT_TRUE(isAllowed.value());
    EXPECT_FALSE(SynchronizedProperty<bool>().value());
    EXPECT_EQ(SynchronizedProperty<std::string>().value(), "");
    EXPECT_FALSE(SynchronizedProperty<std::function<void()>>().value());
}

TEST(SynchronizedProperty, IsReadAndWrittenLikeTheValueItself) {
    struct Monitor {
        SynchronizedProperty<bool> isAllowed{true};
        SynchronizedProperty<std::function<int(int)>> callback;
    } monitor;
    monitor.isAllowed = false;
    EXPECT_FALSE(monitor.isAllowed);
    monitor.callback = [](int number) { return number + 1; };
    EXPECT_EQ(monitor.callback.value()(1), 2);
    monitor.callback = nullptr;
    EXPECT_FALSE(monitor.callback.value());
}

TEST(SynchronizedProperty, GivesCopiesThatLaterValuesDoNotChange) {
    SynchronizedProperty<std::string> name("first");
    const std::string converted = name;
    const std::string read = name.value();
    name = "second";
    EXPECT_EQ(converted, "first");
    EXPECT_EQ(read, "first");
    EXPECT_EQ(name.value(), "second");
}

TEST(SynchronizedProperty, MayBeSetByACallbackThatWasReadFromIt) {
    SynchronizedProperty<std::function<int()>> callback;
    callback = [&callback, kept = std::make_shared<int>(7)] {
        callback = nullptr; // the copy that runs stays
        return *kept;
    };
    EXPECT_EQ(callback.value()(), 7);
    EXPECT_FALSE(callback.value());
}

TEST(SynchronizedProperty, DestroysTheFormerValueOutsideTheLock) {
    SynchronizedProperty<std::shared_ptr<int>> property;
    std::shared_ptr<int> seen;
    property = std::shared_ptr<int>(new int(1), [&](const int* former) {
        seen = property; // would wait for itself
        delete former;
    });
    const auto next = std::make_shared<int>(2);
    property = next;
    EXPECT_EQ(seen, next);
}

TEST(SynchronizedProperty, IsSafeFromAnyThread) {
    const std::string values[] = {std::string(100, 'a'), std::string(100, 'b')};
    SynchronizedProperty<std::string> property(values[0]);
    {
        std::vector<std::jthread> threads;
        for (int number = 0; number < 4; ++number)
            threads.emplace_back([&, number] {
                for (int round = 0; round < 1000; ++round) {
                    property = values[(number + round) % 2];
                    const std::string seen = property;
                    EXPECT_TRUE(seen == values[0] || seen == values[1]) << seen;
                }
            });
    }
    const std::string last = property;
    EXPECT_TRUE(last == values[0] || last == values[1]) << last;
}
