// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Result.h>

#include <VorlanFoundation/Platform/JSONError.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

using namespace vorlan;

namespace {

const JSONError tooDeep(JSONError::Kind::tooDeep, "more than 3 arrays and objects within one another", "$");

Result<std::string> text(bool succeeds) {
    if (succeeds) return std::string("text");
    return tooDeep;
}

} // namespace

TEST(Result, SuccessHasItsValue) {
    const auto result = text(true);
    ASSERT_TRUE(result);
    EXPECT_EQ(*result, "text");
    EXPECT_EQ(result->size(), 4U);
    EXPECT_EQ(result.value(), "text");
    EXPECT_EQ(result.errorAs<NSError>(), nullptr);
}

TEST(Result, FailureHasItsError) {
    const auto result = text(false);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().domain(), "VorlanFoundation.JSONError");
    EXPECT_STREQ(result.error().what(), tooDeep.what());
}

TEST(Result, ErrorIsKeptAsWhatItWasMadeAs) {
    const auto result = text(false);
    ASSERT_NE(result.errorAs<JSONError>(), nullptr);
    EXPECT_EQ(result.errorAs<JSONError>()->kind(), JSONError::Kind::tooDeep);
    EXPECT_EQ(result.errorAs<NSError>(), &result.error());
    const Result<int> other(NSError("com.example.disk", 28));
    EXPECT_EQ(other.errorAs<JSONError>(), nullptr);
    EXPECT_EQ(other.errorAs<NSError>()->code(), 28);
}

TEST(Result, CopiesShareTheError) {
    const auto result = text(false);
    const auto copy = result; // NOLINT(performance-unnecessary-copy-initialization): what is tested
    EXPECT_EQ(&copy.error(), &result.error());
}

TEST(Result, CopiesHaveTheirOwnValue) {
    const auto result = text(true);
    auto copy = result;
    EXPECT_NE(&*copy, &*result);
    copy = text(false);
    EXPECT_FALSE(copy);
    EXPECT_EQ(*result, "text");
}

TEST(Result, HoldsWhatCanOnlyBeMoved) {
    Result<std::unique_ptr<int>> result(std::make_unique<int>(5));
    const auto moved = std::move(result);
    ASSERT_TRUE(moved);
    EXPECT_EQ(**moved, 5);
}

TEST(Result, HoldsFalseAndNothingAsValues) {
    EXPECT_TRUE(Result<bool>(false));
    EXPECT_FALSE(*Result<bool>(false));
    EXPECT_TRUE(Result<std::shared_ptr<int>>(std::shared_ptr<int>()));
}
