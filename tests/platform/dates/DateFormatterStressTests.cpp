// SPDX-License-Identifier: Apache-2.0
// Many threads with the same formatters.

#include <VorlanFoundation/Platform/DateFormatter.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <latch>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using Style = DateFormatter::Style;

namespace {

constexpr int threads = 16;
constexpr int rounds = 200;
constexpr auto tuesday = Date::fromTimeIntervalSince1970(1'709'647'629);

struct Setting {
    const char* pattern;
    const char* text;
};

constexpr std::array settings{Setting{"yyyy-MM-dd", "2024-03-05"},
                              Setting{"EEEE HH:mm:ss zzzz", "Tuesday 14:07:09 Greenwich Mean Time"},
                              Setting{"d MMMM", "5 March"}, Setting{"'", ""}};

DateFormatter english() {
    DateFormatter formatter;
    formatter.setLocale(Locale("en_US"));
    formatter.setTimeZone(TimeZone::gmt());
    return formatter;
}

bool isOneOf(const std::string& text) {
    for (const auto& setting : settings)
        if (text == setting.text) return true;
    return false;
}

// Runs work on many threads, which begin together, and then waits for all of them.
template <class Work>
void onThreads(Work work) {
    std::latch ready(threads);
    std::vector<std::jthread> running;
    for (int i = 0; i < threads; ++i)
        running.emplace_back([&, i] {
            ready.arrive_and_wait();
            work(i);
        });
}

} // namespace

TEST(DateFormatterStress, EachTextIsByOneOfTheSettings) {
    auto shared = english();
    shared.setDateFormat(settings.front().pattern);
    std::atomic<int> wrong = 0;
    onThreads([&](int index) {
        auto formatter = shared;
        for (int i = 0; i < rounds; ++i) {
            if (index == 0) formatter.setDateFormat(settings[i % settings.size()].pattern);
            if (index != 0 && !isOneOf(formatter.string(tuesday))) ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST(DateFormatterStress, ChangesByManyThreadsAreAllKept) {
    for (int i = 0; i < rounds / 10; ++i) {
        auto shared = english();
        onThreads([shared](int index) mutable {
            switch (index % 5) {
            case 0: shared.setDateStyle(Style::full); break;
            case 1: shared.setTimeStyle(Style::long_); break;
            case 2: shared.setLenient(true); break;
            case 3: shared.setDoesRelativeDateFormatting(true); break;
            default: shared.setLocale(Locale("en_GB")); break;
            }
        });
        EXPECT_EQ(shared.dateStyle(), Style::full);
        EXPECT_EQ(shared.timeStyle(), Style::long_);
        EXPECT_TRUE(shared.isLenient());
        EXPECT_TRUE(shared.doesRelativeDateFormatting());
        EXPECT_EQ(shared.locale(), Locale("en_GB"));
    }
}

TEST(DateFormatterStress, FormattersOfAllKindsReadBackWhatTheyWrote) {
    std::atomic<int> wrong = 0;
    onThreads([&](int index) {
        constexpr std::array locales{"en_US", "de_DE", "ar_EG", "th_TH"};
        for (int i = 0; i < rounds / 10; ++i) {
            auto formatter = english();
            formatter.setLocale(Locale(locales[static_cast<std::size_t>(index + i) % locales.size()]));
            formatter.setDateFormat("EEEE d MMMM y G HH:mm:ss zzzz");
            if (formatter.date(formatter.string(tuesday)) != tuesday) ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
}
