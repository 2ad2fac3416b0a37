// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Keychain/Accessibility.h>

#include <gtest/gtest.h>

#include <set>
#include <string>

using vorlan::Accessibility;

TEST(Accessibility, AlwaysIsTheConstantForAlways) {
    EXPECT_EQ(Accessibility::always({.thisDeviceOnly = false}).securityConstant(),
              vorlan::kSecAttrAccessibleAlways);
    EXPECT_EQ(Accessibility::always({.thisDeviceOnly = true}).securityConstant(),
              vorlan::kSecAttrAccessibleAlwaysThisDeviceOnly);
}

TEST(Accessibility, UnlockedIsTheConstantForWhenUnlocked) {
    EXPECT_EQ(Accessibility::unlocked({.thisDeviceOnly = false}).securityConstant(),
              vorlan::kSecAttrAccessibleWhenUnlocked);
    EXPECT_EQ(Accessibility::unlocked({.thisDeviceOnly = true}).securityConstant(),
              vorlan::kSecAttrAccessibleWhenUnlockedThisDeviceOnly);
}

TEST(Accessibility, AfterFirstUnlockIsTheConstantOfThatName) {
    EXPECT_EQ(Accessibility::afterFirstUnlock({.thisDeviceOnly = false}).securityConstant(),
              vorlan::kSecAttrAccessibleAfterFirstUnlock);
    EXPECT_EQ(Accessibility::afterFirstUnlock({.thisDeviceOnly = true}).securityConstant(),
              vorlan::kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly);
}

TEST(Accessibility, SixDifferentConstantsComeOfIt) {
    std::set<std::string> constants;
    for (const bool stays : {false, true}) {
        constants.insert(Accessibility::always({.thisDeviceOnly = stays}).securityConstant());
        constants.insert(Accessibility::unlocked({.thisDeviceOnly = stays}).securityConstant());
        constants.insert(Accessibility::afterFirstUnlock({.thisDeviceOnly = stays}).securityConstant());
    }
    EXPECT_EQ(constants.size(), 6u);
}
