// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/RawValues.h>

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace {

enum class Theme { light, dark };
enum class Bare { one };

} // namespace

template <>
struct vorlan::RawValues<Theme> {
    static constexpr std::array cases{std::pair(Theme::light, std::string_view("light")),
                                      std::pair(Theme::dark, std::string_view("dark"))};
};

using namespace vorlan;

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

TEST(RawValuesDeathTest, ValueThatIsNoCaseStopsTheProcess) {
    EXPECT_DEATH(static_cast<void>(rawValue(static_cast<Theme>(7))),
                 "VorlanFoundation/RawValues: Fatal error: the enumeration has no such case");
}
