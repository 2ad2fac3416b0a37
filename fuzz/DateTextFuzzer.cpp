// SPDX-License-Identifier: Apache-2.0
// Any pattern writes a date as ICU does, and what any text says can be written; any identifier is some locale; any text
// is some number or none.

#include "fuzz/Fuzzing.h"
#include "platform/text/ICULocale.h"
#include "platform/text/UTF16.h"
#include "platform/values/UTF8.h"

#include <VorlanFoundation/Platform/Calendar.h>
#include <VorlanFoundation/Platform/DateFormatter.h>
#include <VorlanFoundation/Platform/Locale.h>
#include <VorlanFoundation/Platform/NumberFormatter.h>
#include <VorlanFoundation/Platform/TimeZone.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <unicode/smpdtfmt.h>

using namespace vorlan;
using fuzzing::Input;

namespace {

constexpr std::array localeNames{"en_US", "en_GB", "de_DE", "fr_FR", "ja_JP",      "ar_EG",
                                 "hi_IN", "he_IL", "fa_IR", "th_TH", "en_US_POSIX"};
constexpr std::array zoneNames{"Europe/Berlin",
                               "America/New_York",
                               "America/Sao_Paulo",
                               "Asia/Kathmandu",
                               "Pacific/Apia",
                               "Australia/Lord_Howe",
                               "UTC"};

// Within some two thousand years of 2001, to an eighth of a second, of which no double loses a millisecond.
Date takeDate(Input& input) {
    const auto number = static_cast<std::int64_t>(input.number(4)) - (std::int64_t{1} << 31);
    return Date(static_cast<double>(number * 30) + static_cast<double>(number & 7) / 8);
}

std::string writtenByICU(const std::string& pattern, const Locale& locale, TimeZone zone, Date date) {
    UErrorCode status = U_ZERO_ERROR;
    icu::SimpleDateFormat format(utf16FromUTF8(pattern), icuLocale(locale, Calendar::Identifier::gregorian),
                                 status);
    if (U_FAILURE(status)) return {};
    format.adoptTimeZone(icu::TimeZone::createTimeZone(utf16FromUTF8(zone.identifier())));
    icu::UnicodeString text;
    icu::FieldPosition everywhere(icu::FieldPosition::DONT_CARE);
    return utf8FromUTF16(format.format(std::floor(date.timeIntervalSince1970() * 1000), text, everywhere));
}

void tryDates(const DateFormatter& formatter, Date date, const std::string& text) {
    const auto written = formatter.string(date);
    fuzzing::require(utf8::isWellFormed(written), "a date's text is well-formed");
    fuzzing::require(formatter.copy().string(date) == written, "a copy writes the same");
    for (const auto& one : {text, written}) {
        const auto read = formatter.date(one);
        if (!read) continue;
        fuzzing::require(std::isfinite(read->timeIntervalSinceReferenceDate()), "what is read is a date");
        fuzzing::require(utf8::isWellFormed(formatter.string(*read)), "what is read can be written");
    }
}

void tryPattern(Input& input) {
    const Locale locale(localeNames.at(input.byte() % localeNames.size()));
    const auto zone = TimeZone::fromIdentifier(zoneNames.at(input.byte() % zoneNames.size()));
    const auto date = takeDate(input);
    const auto pattern = input.line();
    DateFormatter formatter;
    formatter.setLocale(locale);
    formatter.setTimeZone(zone);
    formatter.setCalendar(Calendar(Calendar::Identifier::gregorian, locale, *zone));
    formatter.setDateFormat(pattern);
    const auto written = formatter.string(date);
    fuzzing::require(written.empty() || written == writtenByICU(pattern, locale, *zone, date),
                     "a pattern writes what ICU does");
    tryDates(formatter, date, input.line());
}

void tryLocale(Input& input) {
    const auto date = takeDate(input);
    const Locale locale(input.line());
    DateFormatter formatter;
    formatter.setLocale(locale);
    formatter.setTimeZone(TimeZone::gmt());
    formatter.setDateStyle(DateFormatter::Style::full);
    formatter.setTimeStyle(DateFormatter::Style::short_);
    fuzzing::require(!formatter.string(date).empty(), "every locale has some style");
    fuzzing::require(utf8::isWellFormed(formatter.dateFormat()), "a style's pattern is well-formed");
    for (const auto& code : {locale.languageCode(), locale.regionCode()})
        fuzzing::require(!code || (!code->empty() && utf8::isWellFormed(*code)), "a code is well-formed");
}

void tryNumbers(Input& input) {
    NumberFormatter formatter;
    formatter.setLocale(Locale(localeNames.at(input.byte() % localeNames.size())));
    formatter.setNumberStyle(static_cast<NumberFormatter::Style>(input.byte() % 7));
    const auto text = input.line();
    const auto number = formatter.number(text);
    fuzzing::require(!number || utf8::isWellFormed(text), "what is ill-formed says no number");
    fuzzing::require(utf8::isWellFormed(formatter.string(number.value_or(0.5))),
                     "a number's text is well-formed");
    formatter.setLocale(Locale(input.line()));
    fuzzing::require(!formatter.string(0.5).empty(), "every locale has numbers");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    // One at a time: making what ICU needs takes most of the time.
    switch (input.byte() % 4) {
    case 0: tryLocale(input); break;
    case 1: tryNumbers(input); break;
    default: tryPattern(input); break;
    }
    return 0;
}
