// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/RawValues.h>

#include <gtest/gtest.h>

#include <array>
#include <concepts>
#include <optional>
#include <string_view>
#include <utility>

namespace {

enum class Theme { light, dark };
enum class Level : unsigned char { low, middle, high };
enum class Ratio { half, whole };
enum class Bare { one };

} // namespace

template <>
struct vorlan::RawValues<Theme> {
    static constexpr std::array cases{std::pair(Theme::light, std::string_view("light")),
                                      std::pair(Theme::dark, std::string_view("dark"))};
};

template <>
struct vorlan::RawValues<Level> {
    static constexpr std::array cases{std::pair(Level::low, -10), std::pair(Level::middle, 0),
                                      std::pair(Level::high, 10)};
};

template <>
struct vorlan::RawValues<Ratio> {
    static constexpr std::array cases{std::pair(Ratio::half, 0.5), std::pair(Ratio::whole, 1.0)};
};

using namespace vorlan;

static_assert(RawRepresentable<Level>);
static_assert(TextRepresentable<Theme>);
static_assert(!TextRepresentable<Level>);
static_assert(std::same_as<RawValueOf<Theme>, std::string_view>);
static_assert(std::same_as<RawValueOf<Level>, int>);
static_assert(std::same_as<RawValueOf<Ratio>, double>);
static_assert(fromRawValue<Level>(10) == Level::high);
static_assert(RawRepresentable<Theme>);
static_assert(!RawRepresentable<Bare>);
static_assert(!RawRepresentable<int>);
static_assert(rawValue(Theme::dark) == "dark");

TEST(RawValues, CasesStandForTheirTexts) {
    EXPECT_EQ(rawValue(Theme::light), "light");
    EXPECT_EQ(rawValue(Theme::dark), "dark");
    EXPECT_EQ(fromRawValue<Theme>("light"), Theme::light);
    EXPECT_EQ(fromRawValue<Theme>("dark"), Theme::dark);
}

TEST(RawValues, OtherTextsStandForNoCase) {
    for (const std::string_view text : {"", "grey", "Dark", "dark ", "dar"})
        EXPECT_EQ(fromRawValue<Theme>(text), std::nullopt) << text;
}

TEST(RawValues, CasesStandForTheirNumbers) {
    EXPECT_EQ(rawValue(Level::low), -10);
    EXPECT_EQ(rawValue(Level::middle), 0);
    EXPECT_EQ(fromRawValue<Level>(-10), Level::low);
    EXPECT_EQ(fromRawValue<Level>(0), Level::middle);
    EXPECT_EQ(rawValue(Ratio::half), 0.5);
    EXPECT_EQ(fromRawValue<Ratio>(1.0), Ratio::whole);
}

TEST(RawValues, OtherNumbersStandForNoCase) {
    for (const int number : {-11, -1, 1, 2, 11})
        EXPECT_EQ(fromRawValue<Level>(number), std::nullopt) << number;
    EXPECT_EQ(fromRawValue<Ratio>(0.25), std::nullopt);
}

TEST(RawValuesDeathTest, ValueThatIsNoCaseStopsTheProcess) {
    EXPECT_DEATH(static_cast<void>(rawValue(static_cast<Theme>(7))),
                 "VorlanFoundation/RawValues: Fatal error: the enumeration has no such case");
}
