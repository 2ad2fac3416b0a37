// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/JSONError.h>
#include <VorlanFoundation/Platform/Result.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

using namespace vorlan;
using Kind = JSONError::Kind;

namespace {

const JSONError mismatch(Kind::typeMismatch, "expected a number, found a string", "$.items[3].price", 120);

} // namespace

TEST(JSONError, KeepsWhatItIsMadeOf) {
    EXPECT_EQ(mismatch.kind(), Kind::typeMismatch);
    EXPECT_EQ(mismatch.message(), "expected a number, found a string");
    EXPECT_EQ(mismatch.path(), "$.items[3].price");
    EXPECT_EQ(mismatch.byteOffset(), 120U);
}

TEST(JSONError, SaysWhatIsWrongAndWhere) {
    EXPECT_STREQ(mismatch.what(), "$.items[3].price: expected a number, found a string (at byte 120)");
    EXPECT_STREQ(JSONError(Kind::malformed, "the text is empty", "$", 0).what(),
                 "$: the text is empty (at byte 0)");
}

TEST(JSONError, SaysNoByteWhereThereIsNone) {
    const JSONError error(Kind::nonFinite, "is infinite", "$.price");
    EXPECT_EQ(error.byteOffset(), std::nullopt);
    EXPECT_STREQ(error.what(), "$.price: is infinite");
}

TEST(JSONError, IsAnNSErrorOfItsDomainAndTheKindsCode) {
    constexpr std::array kinds{Kind::malformed,  Kind::typeMismatch, Kind::missingMember, Kind::unknownMember,
                               Kind::outOfRange, Kind::invalidValue, Kind::illFormedText, Kind::nonFinite,
                               Kind::tooDeep,    Kind::tooLarge,     Kind::host};
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        const JSONError error(kinds[i], "m", "$");
        const NSError& base = error;
        EXPECT_EQ(base.domain(), "VorlanFoundation.JSONError");
        EXPECT_EQ(base.code(), static_cast<std::int64_t>(i));
    }
}

TEST(JSONError, DescribesItselfAsItSaysWhatItIs) {
    EXPECT_EQ(mismatch.localizedDescription(), mismatch.what());
}

TEST(JSONError, IsCopied) {
    JSONError copy = mismatch;
    EXPECT_EQ(copy.path(), mismatch.path());
    EXPECT_STREQ(copy.what(), mismatch.what());
    copy = JSONError(Kind::host, "else", "$[0]");
    EXPECT_EQ(copy.kind(), Kind::host);
    EXPECT_EQ(copy.code(), static_cast<std::int64_t>(Kind::host));
    EXPECT_STREQ(copy.what(), "$[0]: else");
    EXPECT_EQ(copy.byteOffset(), std::nullopt);
}

TEST(JSONError, IsCaughtAsAnyOfItsBases) {
    try {
        throw mismatch;
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), mismatch.what());
    }
    try {
        throw mismatch;
    } catch (const NSError& error) {
        EXPECT_EQ(error.domain(), "VorlanFoundation.JSONError");
    }
}

TEST(JSONError, IsFoundInAResult) {
    const Result<int> result = mismatch;
    ASSERT_FALSE(result);
    ASSERT_NE(result.errorAs<JSONError>(), nullptr);
    EXPECT_EQ(result.errorAs<JSONError>()->path(), "$.items[3].price");
    EXPECT_STREQ(result.error().what(), mismatch.what());
}
