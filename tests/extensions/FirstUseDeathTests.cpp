// SPDX-License-Identifier: Apache-2.0

// What happens when a shared formatter is used for the first time: in processes that have used none before, which end
// when they have seen it.

#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Testing/UserRegion.h>
#include <VorlanFoundation/Testing/WallClock.h>

#include "tests/extensions/Places.h"
#include "tests/extensions/SharedFormatters.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <latch>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using tests::utc;
using vorlan::testing::UserRegion;
using vorlan::testing::WallClock;

namespace {

using Style = DateFormatter::Style;

constexpr Date afternoon = utc({.year = 2024, .month = 3, .day = 5, .hour = 14, .minute = 7, .second = 9});

// Says on standard error what was not as it should be, for the test to show.
class Findings {
public:
    template <class Value>
    void expectEqual(const Value& value, const Value& wanted, const char* what) {
        if (value == wanted) return;
        std::cerr << what << "\n";
        isFine_ = false;
    }
    void expect(bool isSo, const char* what) { expectEqual(isSo, true, what); }

    [[noreturn]] void end() const { std::exit(isFine_ ? 0 : 1); }

private:
    bool isFine_ = true;
};

void expectFine(void (*check)(Findings&)) {
    const auto run = [&] {
        Findings findings;
        check(findings);
        findings.end();
    };
    EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "^$");
}

// What 16 threads get that ask at the same time.
template <class Formatter>
std::vector<Formatter> fromManyThreads(Formatter (*get)()) {
    constexpr int count = 16;
    std::latch start(count);
    std::mutex mutex;
    std::vector<Formatter> formatters;
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back([&] {
            start.arrive_and_wait();
            auto formatter = get();
            const std::lock_guard lock(mutex);
            formatters.push_back(std::move(formatter));
        });
    for (auto& thread : threads) thread.join();
    return formatters;
}

template <class Formatter>
void expectOne(Findings& findings, const char* name, Formatter (*get)()) {
    for (const auto& formatter : fromManyThreads(get)) findings.expectEqual(formatter, get(), name);
}

} // namespace

TEST(FirstUseDeathTest, ThreadsThatComeAtOnceGetTheSameFormatter) {
    expectFine([](Findings& findings) {
        for (const auto& place : tests::sharedDateFormatters) expectOne(findings, place.name, place.get);
        for (const auto& place : tests::sharedDateComponentsFormatters)
            expectOne(findings, place.name, place.get);
    });
}

TEST(FirstUseDeathTest, ThreadsThatComeAtOnceGetTheSameRelativeTimeFormatter) {
    expectFine([](Findings& findings) {
        expectOne(findings, "relativeShortTimeFormatter", dateFormatter::relativeShortTimeFormatter);
        findings.expectEqual(dateFormatter::relativeShortTimeFormatter(),
                             dateFormatter::relativeShortFormatter(), "they are two");
    });
}

TEST(FirstUseDeathTest, RelativeTimeFormatterTakesTheDateFromTheOther) {
    expectFine([](Findings& findings) {
        const WallClock clock(afternoon);
        const UserRegion user({.locale = "de_DE", .timeZone = "UTC"});
        const auto relative = dateFormatter::relativeShortFormatter();
        findings.expectEqual(relative.string(afternoon), std::string("heute, 14:07"), "no date before");
        const auto time = dateFormatter::relativeShortTimeFormatter();
        findings.expectEqual(time, relative, "they are two");
        findings.expectEqual(dateFormatter::relativeShortFormatter(), relative, "the other was replaced");
        findings.expectEqual(relative.string(afternoon), std::string("14:07"), "there is still a date");
        findings.expect(relative.doesRelativeDateFormatting(), "it is relative no more");
        dateFormatter::relativeShortFormatter().setDateStyle(Style::short_);
        findings.expectEqual(dateFormatter::relativeShortTimeFormatter().dateStyle(), Style::short_,
                             "the date is taken once only");
    });
}

TEST(FirstUseDeathTest, RelativeTimeFormatterIsInAllPlacesWhatItsSettingsSay) {
    expectFine([](Findings& findings) {
        const auto wanted = tests::makeRelativeShortTime();
        const auto time = dateFormatter::relativeShortTimeFormatter();
        const WallClock clock(afternoon);
        tests::forEachPlace([&] {
            findings.expectEqual(time.string(afternoon), wanted.string(afternoon), "today");
            findings.expectEqual(time.string(Date(0)), wanted.string(Date(0)), "long ago");
        });
    });
}

TEST(FirstUseDeathTest, RelativeTimeFormatterIsTheOneThatTookTheOthersPlaceBefore) {
    expectFine([](Findings& findings) {
        auto first = dateFormatter::relativeShortFormatter();
        DateFormatter mine;
        mine.setDateStyle(Style::full);
        mine.setTimeStyle(Style::full);
        dateFormatter::setRelativeShortFormatter(mine);
        findings.expectEqual(dateFormatter::relativeShortTimeFormatter(), mine, "it is another one");
        findings.expectEqual(mine.dateStyle(), Style::none, "it kept its date");
        findings.expectEqual(first.dateStyle(), Style::short_, "the former one lost its date");
    });
}

TEST(FirstUseDeathTest, LaterReplacementPartsThem) {
    expectFine([](Findings& findings) {
        const auto time = dateFormatter::relativeShortTimeFormatter();
        const auto mine = tests::sharedDateFormatters[0].make();
        dateFormatter::setRelativeShortFormatter(mine);
        findings.expectEqual(dateFormatter::relativeShortTimeFormatter(), time, "it followed the other");
        findings.expectEqual(dateFormatter::relativeShortFormatter().dateStyle(), Style::short_,
                             "the new one lost its date");
    });
}

TEST(FirstUseDeathTest, ReplacingTheRelativeTimeFormatterTakesTheDateFromTheOtherFirst) {
    expectFine([](Findings& findings) {
        const DateFormatter mine;
        dateFormatter::setRelativeShortTimeFormatter(mine);
        findings.expectEqual(dateFormatter::relativeShortTimeFormatter(), mine, "it was not replaced");
        findings.expectEqual(dateFormatter::relativeShortFormatter().dateStyle(), Style::none,
                             "the other kept its date");
        findings.expect(!(dateFormatter::relativeShortFormatter() == mine), "the other was replaced");
    });
}

TEST(FirstUseDeathTest, ReplacementBeforeTheFirstUseIsKept) {
    expectFine([](Findings& findings) {
        for (const auto& place : tests::sharedDateFormatters) {
            const auto mine = place.make();
            place.set(mine);
            findings.expectEqual(place.get(), mine, place.name);
        }
        for (const auto& place : tests::sharedDateComponentsFormatters) {
            const auto mine = place.make();
            place.set(mine);
            findings.expectEqual(place.get(), mine, place.name);
        }
    });
}

TEST(FirstUseDeathTest, FormatterForDatabasesKeepsTheLocaleOfItsFirstUser) {
    expectFine([](Findings& findings) {
        const auto text = [](const char* locale, const char* timeZone) {
            const UserRegion user({.locale = locale, .timeZone = timeZone});
            return dateFormatter::sqlSuitable().string(afternoon) + " " +
                   dateFormatter::sqlSuitable().locale().identifier();
        };
        findings.expectEqual(text("de_DE", "UTC"), std::string("2024-03-05 de_DE"), "the first user's");
        findings.expectEqual(text("ar_EG", "UTC"), std::string("2024-03-05 de_DE"), "another language");
        findings.expectEqual(text("th_TH", "Pacific/Kiritimati"), std::string("2024-03-06 de_DE"),
                             "the zone of the user, and the calendar of the locale");
    });
}

TEST(FirstUseDeathTest, FormatterForDatabasesWritesAsItsFirstUser) {
    expectFine([](Findings& findings) {
        const UserRegion user({.locale = "th_TH", .timeZone = "UTC"});
        findings.expectEqual(dateFormatter::sqlSuitable().string(afternoon), std::string("2567-03-05"),
                             "the calendar of Thailand");
    });
}
