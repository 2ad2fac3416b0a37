// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/UserRegion.h>

#include <gtest/gtest.h>

using vorlan::testing::UserRegion;

TEST(UserRegionDeathTest, UnknownTimeZoneStopsTheProcess) {
    EXPECT_DEATH(
        UserRegion({.timeZone = "Nowhere/Nothing"}),
        "VorlanFoundation/Testing/UserRegion: Fatal error: there is no time zone \"Nowhere/Nothing\"");
    EXPECT_DEATH(UserRegion({.locale = "de_DE", .timeZone = ""}), "Fatal error: there is no time zone \"\"");
}
