// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/DateFormatter.h>

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string>
#include <utility>

using namespace vorlan;
using Style = DateFormatter::Style;

namespace {

constexpr std::array locales{"en_US", "en_GB", "de_DE", "fr_FR", "ja_JP",
                             "ar_EG", "hi_IN", "he_IL", "fa_IR", "th_TH"};
constexpr std::array zones{"Europe/Berlin",      "America/New_York", "America/Sao_Paulo",
                           "Asia/Kathmandu",     "Pacific/Apia",     "UTC",
                           "Australia/Lord_Howe"};

DateFormatter withPattern(std::string pattern, const char* locale = "en_US", const char* zone = "UTC") {
    DateFormatter formatter;
    formatter.setLocale(Locale(locale));
    formatter.setTimeZone(TimeZone::fromIdentifier(zone));
    formatter.setDateFormat(std::move(pattern));
    return formatter;
}

// The text of the date that another text says; absent when it says none.
std::optional<std::string> readBack(const DateFormatter& reader, const std::string& text,
                                    const char* zone = "UTC") {
    const auto date = reader.date(text);
    if (!date) return std::nullopt;
    return withPattern("yyyy-MM-dd HH:mm:ss.SSS", "en_US_POSIX", zone).string(*date);
}

} // namespace

TEST(DateFormatterParsing, ReadsWhatThePatternSays) {
    EXPECT_EQ(readBack(withPattern("yyyy-MM-dd HH:mm:ss"), "2024-03-05 14:07:09"), "2024-03-05 14:07:09.000");
    EXPECT_EQ(readBack(withPattern("d MMMM yyyy"), "5 March 2024"), "2024-03-05 00:00:00.000");
    EXPECT_EQ(readBack(withPattern("yyyy-MM-dd'T'HH:mm:ss.SSSXXX"), "2024-03-05T14:07:09.250+01:00"),
              "2024-03-05 13:07:09.250");
    EXPECT_EQ(readBack(withPattern("EEE, dd MMM yyyy HH:mm:ss Z"), "Thu, 01 Jan 1970 00:00:00 +0000"),
              "1970-01-01 00:00:00.000");
}

TEST(DateFormatterParsing, TakesWhatIsMissingFromTheYearTwoThousand) {
    for (const char* zone : zones) {
        SCOPED_TRACE(zone);
        const auto read = [&](const char* pattern, const char* text) {
            return readBack(withPattern(pattern, "en_US", zone), text, zone);
        };
        EXPECT_EQ(read("HH:mm", "07:08"), "2000-01-01 07:08:00.000");
        EXPECT_EQ(read("h a", "3 PM"), "2000-01-01 15:00:00.000");
        EXPECT_EQ(read("MM-dd", "02-29"), "2000-02-29 00:00:00.000");
        EXPECT_EQ(read("yyyy", "2024"), "2024-01-01 00:00:00.000");
        EXPECT_EQ(read("LLLL", "November"), "2000-11-01 00:00:00.000");
        EXPECT_EQ(read("SSS", "125"), "2000-01-01 00:00:00.125");
        EXPECT_EQ(read("yyyy DDD", "2024 060"), "2024-02-29 00:00:00.000");
    }
}

TEST(DateFormatterParsing, ReadsTheWholeTextOrNothing) {
    const auto reader = withPattern("yyyy-MM-dd");
    for (const char* text : {"", " ", "2024-03-05 ", " 2024-03-05", "2024-03-05x", "2024-03-", "2024-03", "x",
                             "2024/03/05", "20240305", "2024-03-05\n", "2024- 03-05", "--", "2024-03-0x"})
        EXPECT_EQ(reader.date(text), std::nullopt) << '"' << text << '"';
    EXPECT_NE(reader.date("2024-03-05"), std::nullopt);
    EXPECT_EQ(reader.date(std::string("2024-03-05\0", 11)), std::nullopt);
}

TEST(DateFormatterParsing, SpacesOfNamesAreNoneTooMany) {
    EXPECT_NE(withPattern("HH:mm zzzz").date("14:07 Central European Standard Time"), std::nullopt);
    EXPECT_NE(withPattern("d MMMM", "en_US@calendar=islamic-umalqura").date("5 Rabiʻ I"), std::nullopt);
    EXPECT_EQ(withPattern("d MMMM", "en_US@calendar=islamic-umalqura").date(" 5 Rabiʻ I"), std::nullopt);
    EXPECT_EQ(withPattern("yyyy-MM-dd HH:mm").date("2024- 03-05 14:07"), std::nullopt);
}

TEST(DateFormatterParsing, RefusesDatesThatAreNone) {
    const auto reader = withPattern("yyyy-MM-dd HH:mm:ss");
    for (const char* text :
         {"2024-02-30 00:00:00", "2023-02-29 00:00:00", "2024-13-01 00:00:00", "2024-00-01 00:00:00",
          "2024-01-32 00:00:00", "2024-01-01 24:00:00", "2024-01-01 00:60:00", "2024-01-01 00:00:60"})
        EXPECT_EQ(reader.date(text), std::nullopt) << text;
    EXPECT_EQ(withPattern("EEEE MMM", "en_US").date("Fooday Mar"), std::nullopt);
    EXPECT_EQ(withPattern("yyyy").date("99999999999"), std::nullopt);
    EXPECT_EQ(withPattern("yyyy").date("9000000"), std::nullopt);
}

TEST(DateFormatterParsing, CountsOnWhereItIsLenient) {
    auto reader = withPattern("yyyy-MM-dd HH:mm");
    reader.setLenient(true);
    EXPECT_EQ(readBack(reader, "2024-01-32 00:00"), "2024-02-01 00:00:00.000");
    EXPECT_EQ(readBack(reader, "2023-02-29 00:00"), "2023-03-01 00:00:00.000");
    EXPECT_EQ(readBack(reader, "2024-01-01  07:08"), "2024-01-01 07:08:00.000");
    EXPECT_EQ(reader.date("yesterday"), std::nullopt);
    reader.setLenient(false);
    EXPECT_EQ(reader.date("2024-01-32 00:00"), std::nullopt);
}

TEST(DateFormatterParsing, RefusesTimesThatClocksSkip) {
    auto reader = withPattern("yyyy-MM-dd HH:mm", "en_US", "Europe/Berlin");
    EXPECT_EQ(reader.date("2024-03-31 02:30"), std::nullopt);
    reader.setLenient(true);
    EXPECT_EQ(readBack(reader, "2024-03-31 02:30", "Europe/Berlin"), "2024-03-31 03:30:00.000");
}

TEST(DateFormatterParsing, TakesTheFirstOfTimesThatComeTwice) {
    const auto reader = withPattern("yyyy-MM-dd HH:mm", "en_US", "Europe/Berlin");
    EXPECT_EQ(readBack(reader, "2024-10-27 02:30"), "2024-10-27 00:30:00.000");
}

TEST(DateFormatterParsing, ReadsYearsOfTwoDigitsFrom1950On) {
    EXPECT_EQ(readBack(withPattern("yy"), "50"), "1950-01-01 00:00:00.000");
    EXPECT_EQ(readBack(withPattern("yy"), "49"), "2049-01-01 00:00:00.000");
    EXPECT_EQ(readBack(withPattern("yyyy"), "49"), "0049-01-01 00:00:00.000");
    EXPECT_EQ(readBack(withPattern("d/M/yy", "th_TH"), "5/3/67"), "2024-03-05 00:00:00.000");
}

TEST(DateFormatterParsing, AZoneInTheTextCountsForThatTextOnly) {
    const auto reader = withPattern("yyyy-MM-dd HH:mm zzz", "en_US", "Asia/Kathmandu");
    EXPECT_EQ(readBack(reader, "2024-03-05 14:07 GMT"), "2024-03-05 14:07:00.000");
    EXPECT_EQ(readBack(reader, "2024-03-05 14:07 EST"), "2024-03-05 19:07:00.000");
    EXPECT_EQ(withPattern("HH:mm", "en_US", "Asia/Kathmandu").string(Date::fromTimeIntervalSince1970(0)),
              "05:30");
    EXPECT_EQ(reader.timeZone(), TimeZone::fromIdentifier("Asia/Kathmandu"));
}

TEST(DateFormatterParsing, TextThatIsIllFormedSaysNoDate) {
    EXPECT_EQ(withPattern("yyyy-MM").date("2024-\xFF"), std::nullopt);
    EXPECT_EQ(withPattern("yyyy-MM").date("2024\xC0\xAD"
                                          "03"),
              std::nullopt);
    EXPECT_EQ(withPattern("yyyy").date("\xED\xA0\x80"), std::nullopt);
    EXPECT_EQ(withPattern("yyyy'\xFF'").date("2024\xFE"), std::nullopt);
}

TEST(DateFormatterParsing, ReadsTheLocalesDigits) {
    EXPECT_EQ(readBack(withPattern("yyyy-MM-dd", "ar_EG"), "٢٠٢٤-٠٣-٠٥"), "2024-03-05 00:00:00.000");
    EXPECT_EQ(readBack(withPattern("yyyy-MM-dd", "fa_IR"), "۱۴۰۲-۱۲-۱۵"), "2024-03-05 00:00:00.000");
    EXPECT_EQ(readBack(withPattern("yyyy-MM-dd", "ar_EG"), "2024-03-05"), "2024-03-05 00:00:00.000");
}

TEST(DateFormatterParsing, WhatWasWrittenIsReadBack) {
    const auto date = Date::fromTimeIntervalSince1970(1'709'647'629);
    for (const char* locale : locales)
        for (const char* zone : zones)
            for (const char* pattern :
                 {"yyyy-MM-dd HH:mm:ss", "EEEE, d MMMM y G h:mm:ss a Z", "yyyyMMddHHmmss"}) {
                SCOPED_TRACE(std::string(locale) + " " + zone + " " + pattern);
                const auto formatter = withPattern(pattern, locale, zone);
                EXPECT_EQ(formatter.date(formatter.string(date)), date) << formatter.string(date);
            }
}

TEST(DateFormatterParsing, WhatWasWrittenInAStyleIsReadBack) {
    const auto date = Date::fromTimeIntervalSince1970(1'709'647'620);
    for (const char* locale : locales)
        for (const auto style : {Style::short_, Style::medium, Style::long_, Style::full}) {
            SCOPED_TRACE(std::string(locale) + " " + std::to_string(static_cast<int>(style)));
            DateFormatter formatter;
            formatter.setLocale(Locale(locale));
            formatter.setTimeZone(TimeZone::fromIdentifier("Asia/Kathmandu"));
            formatter.setDateStyle(style);
            formatter.setTimeStyle(Style::short_);
            EXPECT_EQ(formatter.date(formatter.string(date)), date) << formatter.string(date);
        }
}
