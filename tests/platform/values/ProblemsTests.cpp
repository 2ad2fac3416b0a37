// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Problems.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;

namespace {

using Lines = std::vector<std::string>;

ProblemHandler into(Lines& lines) {
    return [&lines](std::string_view message, std::string_view where) {
        lines.push_back(std::string(where) + ": " + std::string(message));
    };
}

std::string standardErrorOf(void (*work)()) {
    ::testing::internal::CaptureStderr();
    work();
    return ::testing::internal::GetCapturedStderr();
}

// No handler outlives its case.
class Problems : public ::testing::Test {
protected:
    ~Problems() override { setProblemHandler(nullptr); }
};

} // namespace

TEST_F(Problems, AreWrittenToStandardErrorWithoutAHandler) {
    EXPECT_EQ(standardErrorOf([] { detail::reportProblem("the disk is full", "Store"); }),
              "Store: the disk is full\n");
}

TEST_F(Problems, AreToldToTheHandlerInstead) {
    Lines lines;
    setProblemHandler(into(lines));
    EXPECT_EQ(standardErrorOf([] { detail::reportProblem("the disk is full", "Store"); }), "");
    EXPECT_EQ(lines, Lines{"Store: the disk is full"});
}

TEST_F(Problems, NullRestoresStandardError) {
    Lines lines;
    setProblemHandler(into(lines));
    setProblemHandler(nullptr);
    EXPECT_EQ(standardErrorOf([] { detail::reportProblem("once more", "Store"); }), "Store: once more\n");
    EXPECT_EQ(lines, Lines());
}

TEST_F(Problems, LastHandlerCounts) {
    Lines former;
    Lines latter;
    setProblemHandler(into(former));
    setProblemHandler(into(latter));
    detail::reportProblem("a", "b");
    EXPECT_EQ(former, Lines());
    EXPECT_EQ(latter, Lines{"b: a"});
}

TEST_F(Problems, HandlerMayReplaceItselfAndReport) {
    Lines lines;
    setProblemHandler([&lines](std::string_view message, std::string_view where) {
        lines.push_back("first " + std::string(message));
        setProblemHandler(into(lines));
        detail::reportProblem("again", where);
    });
    detail::reportProblem("a", "b");
    detail::reportProblem("c", "d");
    EXPECT_EQ(lines, (Lines{"first a", "b: again", "d: c"}));
}

TEST_F(Problems, FormerHandlerIsReleased) {
    auto kept = std::make_shared<int>(1);
    setProblemHandler([kept](std::string_view, std::string_view) {});
    const std::weak_ptr<int> weak = std::exchange(kept, nullptr);
    EXPECT_FALSE(weak.expired());
    setProblemHandler(nullptr);
    EXPECT_TRUE(weak.expired());
}

TEST_F(Problems, HandlersMayBeReplacedWhileOthersReport) {
    constexpr int rounds = 2000;
    const auto ignore = [](std::string_view, std::string_view) {};
    setProblemHandler(ignore);
    int told = 0;
    {
        const std::jthread reporter([] {
            for (int i = 0; i < rounds; ++i) detail::reportProblem("a", "b");
        });
        for (int i = 0; i < rounds; ++i) setProblemHandler(ignore);
    }
    setProblemHandler([&told](std::string_view, std::string_view) { ++told; });
    detail::reportProblem("a", "b");
    EXPECT_EQ(told, 1);
}
