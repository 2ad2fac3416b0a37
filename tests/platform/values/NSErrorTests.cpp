// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NSError.h>

#include <VorlanFoundation/Platform/JSONError.h>

#include <gtest/gtest.h>

#include <exception>
#include <string>

using namespace vorlan;

TEST(NSError, HasADomainACodeAndInformation) {
    const NSError error("com.example.disk", -7, {{"volume", "Backup"}, {"free", 12}});
    EXPECT_EQ(error.domain(), "com.example.disk");
    EXPECT_EQ(error.code(), -7);
    EXPECT_EQ(error.userInfo().at("volume"), Value("Backup"));
    EXPECT_EQ(error.userInfo().at("free"), Value(12));
    EXPECT_TRUE(NSError("com.example.disk", 1).userInfo().empty());
}

TEST(NSError, DescriptionIsThatOfItsInformation) {
    const NSError error("com.example.disk", 1, {{"NSLocalizedDescription", "The disk is full."}});
    EXPECT_EQ(error.localizedDescription(), "The disk is full.");
    EXPECT_STREQ(error.what(), "The disk is full.");
}

TEST(NSError, DescriptionNamesDomainAndCodeWhereTheInformationHasNone) {
    const std::string expected = "The operation couldn’t be completed. (com.example.disk error 28.)";
    EXPECT_EQ(NSError("com.example.disk", 28).localizedDescription(), expected);
    EXPECT_STREQ(NSError("com.example.disk", 28).what(), expected.c_str());
    EXPECT_EQ(NSError("com.example.disk", 28, {{"NSLocalizedDescription", 5}}).localizedDescription(),
              expected);
}

TEST(NSError, IsThrownAndCaughtAsAStandardException) {
    try {
        throw NSError("com.example.disk", 1, {{"NSLocalizedDescription", "The disk is full."}});
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "The disk is full.");
        EXPECT_NE(dynamic_cast<const NSError*>(&error), nullptr);
    }
}

TEST(NSError, CopiesOutliveTheOriginal) {
    NSError copy("com.example.other", 0);
    {
        const NSError error("com.example.disk", 28, {{"volume", "Backup"}});
        copy = error;
    }
    EXPECT_EQ(copy.domain(), "com.example.disk");
    EXPECT_EQ(copy.code(), 28);
    EXPECT_EQ(copy.userInfo().at("volume"), Value("Backup"));
    EXPECT_STREQ(copy.what(), "The operation couldn’t be completed. (com.example.disk error 28.)");
}

TEST(JSONError, IsAnNSErrorOfItsDomainAndKind) {
    const JSONError error(JSONError::Kind::outOfRange, "the number 300 does not fit", "$.items[3]", 120);
    EXPECT_EQ(error.domain(), "VorlanFoundation.JSONError");
    EXPECT_EQ(error.code(), 4);
    EXPECT_EQ(error.localizedDescription(), "$.items[3]: the number 300 does not fit (at byte 120)");
    EXPECT_STREQ(error.what(), "$.items[3]: the number 300 does not fit (at byte 120)");
}

TEST(JSONError, CodesAreTheKindsFromZero) {
    EXPECT_EQ(JSONError(JSONError::Kind::malformed, "", "$").code(), 0);
    EXPECT_EQ(JSONError(JSONError::Kind::host, "", "$").code(), 10);
}

TEST(JSONError, WithoutAByteDoesNotSpeakOfOne) {
    const JSONError error(JSONError::Kind::nonFinite, "JSON has no NaN", "$");
    EXPECT_STREQ(error.what(), "$: JSON has no NaN");
    EXPECT_EQ(error.byteOffset(), std::nullopt);
}
