// SPDX-License-Identifier: Apache-2.0
// Many threads with the same formatters.

#include <VorlanFoundation/Platform/DateComponentsFormatter.h>
#include <VorlanFoundation/Platform/NumberFormatter.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <latch>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;
using Style = NumberFormatter::Style;

namespace {

constexpr int threads = 16;
constexpr int rounds = 100;

// Has all threads do the same, and one more change something until they are through.
void runTogether(const std::function<bool()>& isRight, const std::function<void(int)>& change) {
    std::latch start(threads + 1);
    std::atomic<int> running = threads, wrong = 0;
    std::vector<std::jthread> all;
    for (int i = 0; i < threads; ++i)
        all.emplace_back([&] {
            start.arrive_and_wait();
            for (int round = 0; round < rounds; ++round)
                if (!isRight()) ++wrong;
            --running;
        });
    start.arrive_and_wait();
    for (int turn = 0; running > 0; ++turn) change(turn);
    all.clear();
    EXPECT_EQ(wrong, 0);
}

struct Setting {
    Style style;
    int digits;
    const char* text;
};

// A style and digits are set one after the other, so that each may meet the other's former value.
constexpr std::array settings{
    Setting{Style::decimal, 1, "1,234.5"},   Setting{Style::decimal, 2, "1,234.50"},
    Setting{Style::none, 1, "1234.5"},       Setting{Style::none, 2, "1234.50"},
    Setting{Style::currency, 1, "$1,234.5"}, Setting{Style::currency, 2, "$1,234.50"}};

NumberFormatter english(Style style) {
    NumberFormatter formatter;
    formatter.setLocale(Locale("en_US"));
    formatter.setNumberStyle(style);
    return formatter;
}

} // namespace

TEST(NumberFormatterStress, EachTextIsByTheSettingsOfOneMoment) {
    auto formatter = english(Style::decimal);
    formatter.setMaximumFractionDigits(1);
    formatter.setMinimumFractionDigits(1);
    const auto apply = [&](int turn) {
        const auto& setting = settings[static_cast<std::size_t>(turn) % settings.size()];
        formatter.setNumberStyle(setting.style);
        // Lowering the most lowers the fewest with it, and raising the fewest raises the most.
        if (setting.digits == 1) formatter.setMaximumFractionDigits(1);
        if (setting.digits == 2) formatter.setMinimumFractionDigits(2);
    };
    runTogether(
        [copy = formatter] {
            const auto text = copy.string(1234.5);
            return std::ranges::any_of(settings, [&](const Setting& each) { return each.text == text; });
        },
        apply);
}

TEST(NumberFormatterStress, NoChangeIsLost) {
    auto formatter = english(Style::none);
    std::vector<std::jthread> all;
    std::latch start(4);
    const auto change = [&](auto&& by) {
        all.emplace_back([&start, formatter, by]() mutable {
            start.arrive_and_wait();
            by(formatter);
        });
    };
    change([](NumberFormatter& it) { it.setNumberStyle(Style::decimal); });
    change([](NumberFormatter& it) { it.setMinimumFractionDigits(2); });
    change([](NumberFormatter& it) { it.setRoundingMode(NumberFormatter::RoundingMode::up); });
    change([](NumberFormatter& it) { it.setUsesGroupingSeparator(false); });
    all.clear();
    EXPECT_EQ(formatter.numberStyle(), Style::decimal);
    EXPECT_EQ(formatter.minimumFractionDigits(), 2);
    EXPECT_EQ(formatter.string(1234.0001), "1234.001");
}

TEST(NumberFormatterStress, ThreadsShareFormattersOfEveryStyle) {
    const std::array formatters{english(Style::decimal), english(Style::percent), english(Style::scientific),
                                english(Style::spellOut), english(Style::ordinal)};
    const std::array texts{"12", "1,200%", "1.2E1", "twelve", "12th"};
    const auto isRight = [&] {
        for (std::size_t at = 0; at < formatters.size(); ++at)
            if (formatters[at].string(12) != texts[at] || formatters[at].number(texts[at]) != 12)
                return false;
        return true;
    };
    runTogether(isRight, [](int turn) { // which fills and empties what is kept ready
        auto other = english(Style::decimal);
        other.setMinimumFractionDigits(turn % 300);
        EXPECT_EQ(other.string(1).substr(0, 1), "1");
    });
}

TEST(DateComponentsFormatterStress, EachTextIsByTheSettingsOfOneMoment) {
    using Units = DateComponentsFormatter::UnitsStyle;
    DateComponentsFormatter formatter;
    formatter.setAllowedUnits(
        {CalendarComponent::hour, CalendarComponent::minute, CalendarComponent::second});
    formatter.setCalendar(Calendar(Calendar::Identifier::gregorian, Locale("en_US"), TimeZone::gmt()));
    constexpr std::array texts{"1:05", "1m 5s", "1 min, 5 sec", "1 minute, 5 seconds"};
    runTogether(
        [copy = formatter, &texts] { return std::ranges::find(texts, copy.string(65)) != texts.end(); },
        [&](int turn) { formatter.setUnitsStyle(static_cast<Units>(turn % 4)); });
}
