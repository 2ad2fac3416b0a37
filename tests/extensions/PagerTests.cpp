// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Extensions/Pager.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using namespace vorlan;

namespace {

constexpr auto most = std::numeric_limits<std::int64_t>::max();
constexpr auto least = std::numeric_limits<std::int64_t>::min();

} // namespace

TEST(PagerTest, BeginsWithTheFirstPage) {
    const Pager<std::string> pager{"a", "b", "c"};
    EXPECT_EQ(pager.pages(), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(pager.currentPage(), 0);
    EXPECT_EQ(pager.pull(), "a");
    EXPECT_TRUE(pager.isFirst());
    EXPECT_FALSE(pager.isLast());
    EXPECT_EQ(pager.donePercentage(), 1.0 / 3);
}

TEST(PagerTest, GoesFromPageToPage) {
    Pager<std::string> pager{"a", "b", "c"};
    pager.makeNext();
    EXPECT_EQ(pager.pull(), "b");
    EXPECT_FALSE(pager.isFirst());
    EXPECT_FALSE(pager.isLast());
    EXPECT_EQ(pager.donePercentage(), 2.0 / 3);
    pager.makePrevious();
    EXPECT_EQ(pager.pull(), "a");
    pager.makeLast();
    EXPECT_EQ(pager.pull(), "c");
    EXPECT_TRUE(pager.isLast());
    EXPECT_EQ(pager.donePercentage(), 1.0);
    pager.makeFirst();
    EXPECT_TRUE(pager.isFirst());
}

TEST(PagerTest, StepsBeyondThePagesAreAccepted) {
    Pager<int> pager{1, 2, 3};
    pager.makeLast();
    pager.makeNext();
    EXPECT_EQ(pager.currentPage(), 3);
    EXPECT_EQ(pager.pull(), std::nullopt);
    EXPECT_FALSE(pager.isLast());
    EXPECT_EQ(pager.donePercentage(), 4.0 / 3);
    pager.makeFirst();
    pager.makePrevious();
    EXPECT_EQ(pager.currentPage(), -1);
    EXPECT_EQ(pager.pull(), std::nullopt);
    EXPECT_FALSE(pager.isFirst());
    EXPECT_EQ(pager.donePercentage(), 0.0);
    pager.makePrevious();
    EXPECT_EQ(pager.donePercentage(), -1.0 / 3);
}

TEST(PagerTest, CurrentPageCanBeAnyNumber) {
    Pager<int> pager{1, 2, 3};
    pager.setCurrentPage(2);
    EXPECT_EQ(pager.pull(), 3);
    pager.setCurrentPage(least);
    EXPECT_EQ(pager.pull(), std::nullopt);
    EXPECT_EQ(pager.donePercentage(), static_cast<double>(least) / 3);
    pager.setCurrentPage(most - 1);
    pager.makeNext();
    EXPECT_EQ(pager.currentPage(), most);
    EXPECT_EQ(pager.pull(), std::nullopt);
    pager.makeLast();
    EXPECT_EQ(pager.currentPage(), 2);
}

TEST(PagerTest, WithoutPagesAllIsDone) {
    Pager<int> pager{};
    EXPECT_TRUE(pager.pages().empty());
    EXPECT_EQ(pager.donePercentage(), 1.0);
    EXPECT_EQ(pager.pull(), std::nullopt);
    EXPECT_TRUE(pager.isFirst());
    EXPECT_FALSE(pager.isLast());
    pager.makeLast();
    EXPECT_EQ(pager.currentPage(), -1);
    EXPECT_TRUE(pager.isLast());
    EXPECT_EQ(pager.pull(), std::nullopt);
    pager.setCurrentPage(most);
    EXPECT_EQ(pager.donePercentage(), 1.0) << "where there is nothing to be added to";
}

TEST(PagerTest, OnlyPageIsFirstAndLast) {
    const Pager<bool> pager{true};
    EXPECT_TRUE(pager.isFirst());
    EXPECT_TRUE(pager.isLast());
    EXPECT_EQ(pager.pull(), true);
    EXPECT_EQ(pager.donePercentage(), 1.0);
}

TEST(PagerTest, CopiesGoTheirOwnWays) {
    Pager<int> pager{1, 2};
    auto copy = pager;
    copy.makeNext();
    EXPECT_EQ(pager.currentPage(), 0);
    EXPECT_EQ(copy.pull(), 2);
    pager = std::move(copy);
    EXPECT_EQ(pager.pull(), 2);
    static_assert(!std::is_default_constructible_v<Pager<int>> &&
                  !std::is_constructible_v<Pager<int>, std::vector<int>>);
}
