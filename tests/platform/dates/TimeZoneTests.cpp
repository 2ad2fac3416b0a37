// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/TimeZone.h>

#include "tests/platform/files/Environment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <vector>

using namespace vorlan;
using tests::Environment;

namespace {

// The variable TZ, as the library sees it.
class ZoneOfUser {
public:
    explicit ZoneOfUser(const std::optional<std::string>& name) : environment_("TZ", name) {
        TimeZone::resetSystemTimeZone();
    }
    ZoneOfUser(const ZoneOfUser&) = delete;
    ZoneOfUser& operator=(const ZoneOfUser&) = delete;

private:
    struct Reset {
        Reset() = default;
        Reset(const Reset&) = delete;
        Reset& operator=(const Reset&) = delete;
        ~Reset() { TimeZone::resetSystemTimeZone(); }
    };

    Reset afterwards_; // once the variable is what it was
    Environment environment_;
};

Date at(double secondsSince1970) {
    return Date::fromTimeIntervalSince1970(secondsSince1970);
}

TimeZone zone(const std::string& name) {
    return TimeZone::fromIdentifier(name).value();
}

std::string currentWith(const std::optional<std::string>& variable) {
    const ZoneOfUser user(variable);
    return TimeZone::current().identifier();
}

constexpr double january2022 = 1'641'000'000;
constexpr double july2022 = 1'656'700'000;
constexpr double summerOf2022InBerlin = 1'648'342'800; // 2022-03-27 01:00 UTC
constexpr double winterOf2022InBerlin = 1'667'091'600; // 2022-10-30 01:00 UTC

} // namespace

TEST(TimeZoneTest, ZoneIsFoundByItsName) {
    for (const auto* name :
         {"Europe/Berlin", "America/New_York", "America/Argentina/Buenos_Aires", "UTC", "GMT", "Etc/GMT+5",
          "Asia/Kathmandu", "Asia/Katmandu", "US/Eastern", "EST5EDT"}) {
        const auto found = TimeZone::fromIdentifier(name);
        ASSERT_TRUE(found) << name;
        EXPECT_EQ(found->identifier(), name);
    }
}

TEST(TimeZoneTest, NameThatIsNoZonesIsAbsent) {
    for (const auto* name : {"", "Nowhere/Nothing", "Europe/", "Europe", "/Europe/Berlin", "Europe/Berlin ",
                             " Europe/Berlin", "Europe/Bérlin", "../etc/passwd", "Etc/Unknown", "\xFF\xFE",
                             "?", "CET-1CEST,M3.5.0,M10.5.0/3", "/etc/localtime"})
        EXPECT_FALSE(TimeZone::fromIdentifier(name)) << name;
    ASSERT_TRUE(TimeZone::fromIdentifier("Europe/Berlin"));
    EXPECT_FALSE(TimeZone::fromIdentifier(std::string_view("Europe/Berlin\0", 14)));
    EXPECT_FALSE(TimeZone::fromIdentifier(std::string_view("Europe/Berlin\0more", 18)));
    EXPECT_FALSE(TimeZone::fromIdentifier(std::string(100'000, 'x')));
}

TEST(TimeZoneTest, PartOfALargerTextIsNotReadBeyond) {
    const std::string_view text = "UTCetera";
    EXPECT_EQ(TimeZone::fromIdentifier(text.substr(0, 3))->identifier(), "UTC");
    EXPECT_FALSE(TimeZone::fromIdentifier(text));
}

TEST(TimeZoneTest, KnownNamesAreAscendingAndKnown) {
    const auto names = TimeZone::knownIdentifiers();
    EXPECT_TRUE(std::ranges::is_sorted(names));
    EXPECT_EQ(std::ranges::adjacent_find(names), names.end());
    EXPECT_GT(names.size(), 400U);
    for (const auto* name : {"Europe/Berlin", "Asia/Kathmandu", "Pacific/Apia", "Australia/Lord_Howe", "UTC"})
        EXPECT_TRUE(std::ranges::binary_search(names, name)) << name;
    for (const auto& name : names) {
        const auto found = TimeZone::fromIdentifier(name);
        ASSERT_TRUE(found) << name;
        EXPECT_EQ(found->identifier(), name);
    }
}

TEST(TimeZoneTest, ZonesAreEqualWhenTheirNamesAre) {
    EXPECT_EQ(zone("Europe/Berlin"), zone("Europe/Berlin"));
    EXPECT_NE(zone("Europe/Berlin"), zone("Europe/Paris"));
    EXPECT_NE(zone("Asia/Kathmandu"), zone("Asia/Katmandu"));
    EXPECT_EQ(zone("GMT"), TimeZone::gmt());
    EXPECT_EQ(TimeZone::fromSecondsFromGMT(3600), TimeZone::fromSecondsFromGMT(3600));
    EXPECT_NE(TimeZone::fromSecondsFromGMT(3600), TimeZone::fromSecondsFromGMT(-3600));
    EXPECT_NE(TimeZone::fromSecondsFromGMT(3600), TimeZone::fromSecondsFromGMT(3601));
}

TEST(TimeZoneTest, GMTIsAlwaysUTC) {
    const auto gmt = TimeZone::gmt();
    EXPECT_EQ(gmt.identifier(), "GMT");
    for (const auto time : {-1e15, -1e9, 0.0, july2022, 1e15}) EXPECT_EQ(gmt.secondsFromGMT(at(time)), 0);
    EXPECT_FALSE(gmt.isDaylightSavingTime(at(july2022)));
    EXPECT_EQ(gmt.nextTransition(at(0)), std::nullopt);
}

TEST(TimeZoneTest, FixedZoneIsNamedForItsOffset) {
    const std::vector<std::pair<int, std::string>> table = {
        {19'800, "GMT+0530"},  {3600, "GMT+0100"},   {-3600, "GMT-0100"},
        {-12'600, "GMT-0330"}, {64'800, "GMT+1800"}, {-64'800, "GMT-1800"},
        {60, "GMT+0001"},      {-60, "GMT-0001"},    {20'700, "GMT+0545"},
    };
    for (const auto& [offset, name] : table) {
        const auto fixed = TimeZone::fromSecondsFromGMT(offset);
        ASSERT_TRUE(fixed) << name;
        EXPECT_EQ(fixed->identifier(), name);
    }
}

TEST(TimeZoneTest, FixedZoneHasItsOffsetAtAllTimes) {
    std::set<std::string> names;
    for (const auto offset :
         {-64'800, -64'799, -3601, -60, -59, -1, 0, 1, 59, 60, 3661, 20'700, 64'799, 64'800}) {
        const auto fixed = TimeZone::fromSecondsFromGMT(offset);
        ASSERT_TRUE(fixed) << offset;
        for (const auto time : {-1e12, -1.5, 0.0, 0.5, july2022, 1e12})
            EXPECT_EQ(fixed->secondsFromGMT(at(time)), offset) << time;
        EXPECT_FALSE(fixed->isDaylightSavingTime(at(july2022)));
        EXPECT_EQ(fixed->nextTransition(at(january2022)), std::nullopt);
        EXPECT_TRUE(names.insert(fixed->identifier()).second) << fixed->identifier();
    }
}

TEST(TimeZoneTest, FixedZoneBeyondEighteenHoursIsAbsent) {
    for (const auto offset :
         {64'801, -64'801, 86'400, -86'400, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_FALSE(TimeZone::fromSecondsFromGMT(offset)) << offset;
}

TEST(TimeZoneTest, OffsetFollowsTheSeasons) {
    const auto berlin = zone("Europe/Berlin");
    EXPECT_EQ(berlin.secondsFromGMT(at(january2022)), 3600);
    EXPECT_EQ(berlin.secondsFromGMT(at(july2022)), 7200);
    EXPECT_FALSE(berlin.isDaylightSavingTime(at(january2022)));
    EXPECT_TRUE(berlin.isDaylightSavingTime(at(july2022)));
    EXPECT_EQ(zone("Asia/Kathmandu").secondsFromGMT(at(july2022)), 20'700);
    EXPECT_EQ(zone("Australia/Lord_Howe").secondsFromGMT(at(january2022)), 39'600);
    EXPECT_EQ(zone("Australia/Lord_Howe").secondsFromGMT(at(july2022)), 37'800);
    EXPECT_TRUE(zone("Australia/Lord_Howe").isDaylightSavingTime(at(january2022)));
}

TEST(TimeZoneTest, OffsetChangesAtTheVeryInstantOfTheTransition) {
    const auto berlin = zone("Europe/Berlin");
    EXPECT_EQ(berlin.secondsFromGMT(at(summerOf2022InBerlin - 1)), 3600);
    EXPECT_EQ(berlin.secondsFromGMT(at(summerOf2022InBerlin - 1e-6)), 3600);
    EXPECT_EQ(berlin.secondsFromGMT(at(summerOf2022InBerlin)), 7200);
    EXPECT_EQ(berlin.secondsFromGMT(at(winterOf2022InBerlin - 1e-6)), 7200);
    EXPECT_EQ(berlin.secondsFromGMT(at(winterOf2022InBerlin)), 3600);
    EXPECT_FALSE(berlin.isDaylightSavingTime(at(summerOf2022InBerlin - 1e-6)));
    EXPECT_TRUE(berlin.isDaylightSavingTime(at(summerOf2022InBerlin)));
}

TEST(TimeZoneTest, NextTransitionIsLaterThanTheDate) {
    const auto berlin = zone("Europe/Berlin");
    EXPECT_EQ(berlin.nextTransition(at(january2022)), at(summerOf2022InBerlin));
    EXPECT_EQ(berlin.nextTransition(at(summerOf2022InBerlin - 1e-6)), at(summerOf2022InBerlin));
    EXPECT_EQ(berlin.nextTransition(at(summerOf2022InBerlin)), at(winterOf2022InBerlin));
    EXPECT_EQ(berlin.nextTransition(at(summerOf2022InBerlin + 1e-6)), at(winterOf2022InBerlin));
    EXPECT_EQ(zone("Asia/Tokyo").nextTransition(at(july2022)), std::nullopt);
}

TEST(TimeZoneTest, NumbersThatAreNoDateHaveTheOffsetOfTheEarliestOrTheLatestRule) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const auto berlin = zone("Europe/Berlin");
    const std::set<int> known = {3208, 3600, 7200}; // the first is that of the sun in Berlin
    for (const auto seconds :
         {std::nan(""), -std::nan(""), infinity, -infinity, 1e300, -1e300, 1e18, -1e18}) {
        EXPECT_TRUE(known.contains(berlin.secondsFromGMT(Date(seconds)))) << seconds;
        EXPECT_EQ(TimeZone::fromSecondsFromGMT(3600)->secondsFromGMT(Date(seconds)), 3600) << seconds;
        berlin.isDaylightSavingTime(Date(seconds));
    }
    EXPECT_EQ(berlin.secondsFromGMT(Date(-infinity)), 3208);
    EXPECT_EQ(berlin.secondsFromGMT(Date(-1e300)), 3208);
    EXPECT_NE(berlin.secondsFromGMT(Date(infinity)), 3208);
    EXPECT_NE(berlin.secondsFromGMT(Date(1e300)), 3208);
    EXPECT_EQ(berlin.nextTransition(Date(std::nan(""))), std::nullopt);
    EXPECT_EQ(berlin.nextTransition(Date(infinity)), std::nullopt);
}

TEST(TimeZoneTest, CurrentIsThatOfTheVariable) {
    EXPECT_EQ(currentWith("Europe/Berlin"), "Europe/Berlin");
    EXPECT_EQ(currentWith(":America/New_York"), "America/New_York");
    EXPECT_EQ(currentWith("UTC"), "UTC");
}

TEST(TimeZoneTest, CurrentIsUTCWhereTheVariableNamesNone) {
    for (const auto* name : {"Nowhere/Nothing", "???", ":", "../etc/passwd"}) {
        const ZoneOfUser user(name);
        EXPECT_EQ(TimeZone::current().secondsFromGMT(at(july2022)), 0) << name;
    }
}

TEST(TimeZoneTest, CurrentIsThatOfTheMachineWithoutTheVariable) {
    std::error_code error;
    const auto file = std::filesystem::read_symlink("/etc/localtime", error).string();
    const auto folder = file.find("/zoneinfo/");
    if (error || folder == std::string::npos) GTEST_SKIP() << "/etc/localtime does not lead to a zone";
    EXPECT_EQ(currentWith(std::nullopt), file.substr(folder + 10));
}

TEST(TimeZoneTest, CurrentStaysUntilTheNextReset) {
    const ZoneOfUser user("Europe/Berlin");
    EXPECT_EQ(TimeZone::current(), zone("Europe/Berlin"));
    const Environment environment("TZ", "America/New_York");
    EXPECT_EQ(TimeZone::current(), zone("Europe/Berlin"));
    TimeZone::resetSystemTimeZone();
    EXPECT_EQ(TimeZone::current(), zone("America/New_York"));
}
