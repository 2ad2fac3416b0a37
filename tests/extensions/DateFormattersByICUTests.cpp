// SPDX-License-Identifier: Apache-2.0

// What the shared formatters print beside what ICU prints that is asked without them.

#include <VorlanFoundation/Extensions/Dates.h>

#include "platform/text/UTF16.h"
#include "tests/extensions/Places.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <unicode/smpdtfmt.h>
#include <vector>

using namespace vorlan;

namespace {

icu::Locale locale() {
    return icu::Locale(Locale::current().identifier().c_str());
}

std::unique_ptr<icu::DateFormat> inCurrentZone(icu::DateFormat* format) {
    const auto& zone = TimeZone::current().identifier();
    format->adoptTimeZone(icu::TimeZone::createTimeZone(icu::UnicodeString(zone.c_str())));
    return std::unique_ptr<icu::DateFormat>(format);
}

std::unique_ptr<icu::DateFormat> withStyles(icu::DateFormat::EStyle date, icu::DateFormat::EStyle time) {
    return inCurrentZone(icu::DateFormat::createDateTimeInstance(date, time, locale()));
}

std::unique_ptr<icu::DateFormat> withPattern(const char* pattern) {
    UErrorCode status = U_ZERO_ERROR;
    auto* format = new icu::SimpleDateFormat(icu::UnicodeString(pattern), locale(), status);
    EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    return inCurrentZone(format);
}

// Of the years 1900 to 2100, to the second.
std::vector<Date> randomDates(unsigned seed) {
    std::mt19937_64 random(seed);
    std::uniform_int_distribution<std::int64_t> seconds(-3'187'296'000, 3'124'224'000);
    std::vector<Date> dates(30);
    for (auto& date : dates) date = Date(static_cast<double>(seconds(random)));
    return dates;
}

void expectSameTexts(const DateFormatter& formatter, const icu::DateFormat& wanted,
                     const std::vector<Date>& dates) {
    for (const auto date : dates) {
        icu::UnicodeString text;
        wanted.format(date.timeIntervalSince1970() * 1000, text);
        EXPECT_EQ(formatter.string(date), utf8FromUTF16(text)) << date.description();
    }
}

constexpr auto brief = icu::DateFormat::kShort;
constexpr auto none = icu::DateFormat::kNone;

} // namespace

TEST(DateFormattersByICUTest, AllPlacesReadTheSame) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    const auto dates = randomDates(seed);
    tests::forEachPlace([&] {
        expectSameTexts(dateFormatter::short_(), *withStyles(brief, brief), dates);
        expectSameTexts(dateFormatter::shortDate(), *withStyles(brief, none), dates);
        expectSameTexts(dateFormatter::timeFull(), *withPattern("yyyy-MM-dd HH:mm:ss"), dates);
    });
}

TEST(DateFormattersByICUTest, RelativeFormatterReadsTheSameFarFromThePresent) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    auto dates = randomDates(seed);
    std::erase_if(dates, [](Date date) { return date > Date(0); }); // ICU goes by the real clock
    ASSERT_FALSE(dates.empty());
    tests::forEachPlace([&] {
        expectSameTexts(dateFormatter::relativeShortFormatter(),
                        *withStyles(icu::DateFormat::kShortRelative, brief), dates);
    });
}

TEST(DateFormattersByICUTest, FormatterForDatabasesReadsTheSameToEachFirstUser) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    const auto dates = randomDates(seed);
    const auto former = dateFormatter::sqlSuitable();
    tests::forEachPlace([&] {
        auto formatter = former.copy();
        formatter.setLocale(Locale::current());
        expectSameTexts(formatter, *withPattern("yyyy-MM-dd"), dates);
    });
}
