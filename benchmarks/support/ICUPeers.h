// SPDX-License-Identifier: Apache-2.0
#pragma once

// Bare ICU, as an application would use it.

#include "benchmarks/support/SampleDates.h"

#include <unicode/basictz.h>
#include <unicode/calendar.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace vorlan::benchmarks {

/// Stops the program's report where ICU has no data.
inline void checkICU(UErrorCode status) {
    if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
}

inline std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return result;
}

inline std::unique_ptr<icu::TimeZone> icuSampleZone() {
    return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createTimeZone(sampleZone));
}

inline std::unique_ptr<icu::DateFormat> icuPatternFormat(const char* pattern, const char* locale) {
    UErrorCode status = U_ZERO_ERROR;
    auto format = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString::fromUTF8(pattern),
                                                          icu::Locale(locale), status);
    checkICU(status);
    format->adoptTimeZone(icuSampleZone().release());
    return format;
}

inline std::unique_ptr<icu::DateFormat> icuStyleFormat(icu::DateFormat::EStyle date,
                                                       icu::DateFormat::EStyle time, const char* locale) {
    std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createDateTimeInstance(date, time, icu::Locale(locale)));
    if (!format) throw std::runtime_error("ICU has no such format");
    format->adoptTimeZone(icuSampleZone().release());
    return format;
}

inline std::string icuText(const icu::DateFormat& format, const SampleDate& date) {
    icu::UnicodeString text;
    return utf8(format.format(date.milliseconds, text));
}

inline std::unique_ptr<icu::Calendar> icuCalendar() {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(
        icu::Calendar::createInstance(icuSampleZone().release(), icu::Locale(sampleGerman), status));
    checkICU(status);
    return calendar;
}

} // namespace vorlan::benchmarks
