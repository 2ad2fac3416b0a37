// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Keychain/SecurityClass.h>

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string>
#include <unordered_set>

using vorlan::fromRawValue;
using vorlan::rawValue;
using vorlan::SecurityClass;

TEST(SecurityClass, AllCasesAreFiveInTheOrderOfTheirDeclaration) {
    constexpr std::array expected{SecurityClass::genericPassword, SecurityClass::internetPassword,
                                  SecurityClass::certificate, SecurityClass::key, SecurityClass::identity};
    EXPECT_EQ(vorlan::allCases<SecurityClass>(), expected);
}

TEST(SecurityClass, RawValuesAreTheKeychainsConstants) {
    EXPECT_EQ(rawValue(SecurityClass::genericPassword), vorlan::kSecClassGenericPassword);
    EXPECT_EQ(rawValue(SecurityClass::internetPassword), vorlan::kSecClassInternetPassword);
    EXPECT_EQ(rawValue(SecurityClass::certificate), vorlan::kSecClassCertificate);
    EXPECT_EQ(rawValue(SecurityClass::key), vorlan::kSecClassKey);
    EXPECT_EQ(rawValue(SecurityClass::identity), vorlan::kSecClassIdentity);
}

TEST(SecurityClass, IsMadeFromEachRawValueAndNoOtherText) {
    for (const auto securityClass : vorlan::allCases<SecurityClass>())
        EXPECT_EQ(fromRawValue<SecurityClass>(rawValue(securityClass)), securityClass);
    for (const std::string text : {"", "Genp", "genp ", "genericPassword", "gen"})
        EXPECT_EQ(fromRawValue<SecurityClass>(text), std::nullopt) << text;
}

TEST(SecurityClass, CanBeComparedAndKeptInASet) {
    const std::unordered_set set{SecurityClass::key, SecurityClass::identity, SecurityClass::key};
    EXPECT_EQ(set.size(), 2u);
    EXPECT_TRUE(set.contains(SecurityClass::key));
    EXPECT_FALSE(set.contains(SecurityClass::certificate));
}
