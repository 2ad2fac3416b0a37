// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Work.h>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <utility>

using namespace vorlan;

TEST(Work, RunsItsCallableAtMostOnce) {
    int runs = 0;
    Work work([&] { ++runs; });
    EXPECT_TRUE(work);
    work();
    EXPECT_FALSE(work);
    work();
    EXPECT_EQ(runs, 1);
}

TEST(Work, DestroysItsCallableRightAfterItRanAlsoWhenItThrew) {
    auto captured = std::make_shared<int>();
    Work work([captured] { throw std::runtime_error("no"); });
    EXPECT_EQ(captured.use_count(), 2);
    EXPECT_THROW(work(), std::runtime_error);
    EXPECT_EQ(captured.use_count(), 1);
}

TEST(Work, DropsACallableThatNeverRan) {
    auto captured = std::make_shared<int>();
    {
        const Work work([captured] {});
    }
    EXPECT_EQ(captured.use_count(), 1);
}

TEST(Work, IsMovedNotCopied) {
    static_assert(!std::is_copy_constructible_v<Work>);
    int runs = 0;
    Work first([&, unique = std::make_unique<int>(1)] { runs += *unique; });
    Work second = std::move(first);
    first = Work([&] { runs += 10; });
    second();
    first();
    EXPECT_EQ(runs, 11);
}

TEST(Work, ReleasedPointerIsTakenBackByAnother) {
    int runs = 0;
    Work work([&] { return ++runs; });
    Work again(work.release());
    EXPECT_FALSE(work);
    again();
    EXPECT_EQ(runs, 1);
}
