// SPDX-License-Identifier: Apache-2.0

// Dates as text: by a pattern with English names, in the user's own long and short forms, and read back.

#include "benchmarks/DatesBenchmark.h"
#include "benchmarks/support/ICUPeers.h"
#include "benchmarks/support/SampleDates.h"

#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Platform/DateFormatter.h>

#include <QtCore/QDateTime>
#include <QtCore/QLocale>
#include <QtCore/QTimeZone>
#include <glib.h>

#include <array>
#include <cstdint>
#include <ctime>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace vorlan::benchmarks {

namespace {

constexpr auto byPattern = "date by a pattern, English";
constexpr auto inFull = "date in full, German";
constexpr auto inShort = "date and time in short, German";
constexpr auto reading = "read a date by a pattern";
constexpr auto pattern = "EEE, dd MMM yyyy HH:mm:ss";
constexpr auto patternOfC = "%a, %d %b %Y %H:%M:%S";
constexpr auto patternOfQt = "ddd, dd MMM yyyy HH:mm:ss";
constexpr auto plainPattern = "yyyy-MM-dd HH:mm:ss";

using Style = DateFormatter::Style;
using ICUStyle = icu::DateFormat;

DateFormatter formatter(const char* locale) {
    DateFormatter made;
    made.setLocale(Locale(locale));
    made.setTimeZone(TimeZone::fromIdentifier(sampleZone));
    return made;
}

DateFormatter patternFormatter(const char* format, const char* locale) {
    auto made = formatter(locale);
    made.setDateFormat(format);
    return made;
}

DateFormatter styleFormatter(Style date, Style time) {
    auto made = formatter(sampleGerman);
    made.setDateStyle(date);
    made.setTimeStyle(time);
    return made;
}

auto formatBy(const DateFormatter& formatter) {
    return [formatter](const SampleDate& date) { return formatter.string(date.date); };
}

auto formatBy(std::unique_ptr<icu::DateFormat> format) {
    return [format = std::shared_ptr<const icu::DateFormat>(std::move(format))](const SampleDate& date) {
        return icuText(*format, date);
    };
}

QDateTime qtTime(const SampleDate& date, const QTimeZone& zone) {
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(date.milliseconds), zone);
}

auto formatByQt() {
    return [zone = QTimeZone(sampleZone), locale = QLocale(sampleEnglish)](const SampleDate& date) {
        return locale.toString(qtTime(date, zone), patternOfQt).toStdString();
    };
}

auto formatByC() {
    return [](const SampleDate& date) {
        std::tm parts{};
        localtime_r(&date.seconds, &parts);
        std::array<char, 64> text{};
        return std::string(text.data(), std::strftime(text.data(), text.size(), patternOfC, &parts));
    };
}

auto formatByGLib() {
    const std::shared_ptr<GTimeZone> zone(g_time_zone_new_identifier(sampleZone), g_time_zone_unref);
    return [zone](const SampleDate& date) {
        GDateTime* utc = g_date_time_new_from_unix_utc(date.seconds);
        GDateTime* local = g_date_time_to_timezone(utc, zone.get());
        char* text = g_date_time_format(local, patternOfC);
        std::string result = text;
        g_free(text);
        g_date_time_unref(local);
        g_date_time_unref(utc);
        return result;
    };
}

/// What a library has to do that keeps a format of ICU's for each pattern.
auto formatByLookUp() {
    struct Formats {
        std::mutex mutex;
        std::unordered_map<std::string, std::unique_ptr<icu::DateFormat>> byPattern;
    };
    const auto formats = std::make_shared<Formats>();
    formats->byPattern.emplace(pattern, icuPatternFormat(pattern, sampleEnglish));
    return [formats](const SampleDate& date) {
        const std::lock_guard lock(formats->mutex);
        return icuText(*formats->byPattern.find(pattern)->second, date);
    };
}

void addByPattern() {
    const auto reused = [] { return formatBy(icuPatternFormat(pattern, sampleEnglish)); };
    const auto add = [=](const char* name, const auto& make) { addDatesRow(byPattern, name, reused, make); };
    add("floor: SimpleDateFormat, reused", reused);
    add("floor: SimpleDateFormat, looked up", formatByLookUp);
    add("floor: strftime", formatByC);
    add("ours: DateFormatter", [] { return formatBy(patternFormatter(pattern, sampleEnglish)); });
    add("ours: DateFormatter, made for each", [] {
        return
            [](const SampleDate& date) { return patternFormatter(pattern, sampleEnglish).string(date.date); };
    });
    add("peer: SimpleDateFormat, made for each", [] {
        return
            [](const SampleDate& date) { return icuText(*icuPatternFormat(pattern, sampleEnglish), date); };
    });
    add("peer: QLocale::toString", formatByQt);
    add("peer: GDateTime", formatByGLib);
}

template <class Other>
void addStyles(const char* group, ICUStyle::EStyle icuDate, ICUStyle::EStyle icuTime, Style date, Style time,
               const char* otherName, const Other& other) {
    const auto reused = [=] { return formatBy(icuStyleFormat(icuDate, icuTime, sampleGerman)); };
    addDatesRow(group, "floor: DateFormat, reused", reused, reused);
    addDatesRow(group, "ours: DateFormatter", reused, [=] { return formatBy(styleFormatter(date, time)); });
    addDatesRow(group, otherName, reused, other);
    addDatesRow(group, "peer: DateFormat, made for each", reused, [=] {
        return [=](const SampleDate& one) {
            return icuText(*icuStyleFormat(icuDate, icuTime, sampleGerman), one);
        };
    });
}

void addInStyles() {
    addStyles(inFull, ICUStyle::kFull, ICUStyle::kFull, Style::full, Style::full,
              "ours: DateFormatter, made for each", [] {
                  return [](const SampleDate& date) {
                      return styleFormatter(Style::full, Style::full).string(date.date);
                  };
              });
    addStyles(inShort, ICUStyle::kShort, ICUStyle::kShort, Style::short_, Style::short_,
              "ours: dateFormatter::short_", [] {
                  return [](const SampleDate& date) { return dateFormatter::short_().string(date.date); };
              });
    const auto relative = [] { return formatBy(dateFormatter::relativeShortFormatter().copy()); };
    addDatesRow(inShort, "note: ours, relative to today", relative, relative, recentDates);
}

/// The dates as text, which is no part of the time.
class Texts {
public:
    Texts() {
        const auto format = icuPatternFormat(plainPattern, sampleGerman);
        for (const auto& date : sampleDates()) texts_.emplace(&date, icuText(*format, date));
    }
    const std::string& of(const SampleDate& date) const { return texts_.find(&date)->second; }

private:
    std::unordered_map<const SampleDate*, std::string> texts_;
};

const Texts& texts() {
    static const Texts made;
    return made;
}

auto readByICU() {
    const std::shared_ptr<const icu::DateFormat> format = icuPatternFormat(plainPattern, sampleGerman);
    return [format](const SampleDate& date) {
        UErrorCode status = U_ZERO_ERROR;
        const UDate read = format->parse(icu::UnicodeString::fromUTF8(texts().of(date)), status);
        return U_SUCCESS(status) ? static_cast<std::int64_t>(read) : -1;
    };
}

void addReading() {
    addDatesRow(reading, "floor: SimpleDateFormat, reused", readByICU, readByICU);
    addDatesRow(reading, "ours: DateFormatter", readByICU, [] {
        return [formatter = patternFormatter(plainPattern, sampleGerman)](const SampleDate& date) {
            return formatter.date(texts().of(date));
        };
    });
    addDatesRow(reading, "peer: QDateTime::fromString", readByICU, [] {
        return [zone = QTimeZone(sampleZone)](const SampleDate& date) -> std::int64_t {
            auto read = QDateTime::fromString(QString::fromStdString(texts().of(date)), plainPattern);
            read.setTimeZone(zone);
            return read.toMSecsSinceEpoch();
        };
    });
}

} // namespace

void addDateFormattingRows() {
    addByPattern();
    addInStyles();
    addReading();
}

namespace {

template <class Call>
void addTwoThreads(const char* name, const Call& call) {
    benchmark::RegisterBenchmark((std::string("date by a pattern, two threads/") + name).c_str(),
                                 [=](benchmark::State& state) { measureDates(state, call); })
        ->Threads(2)
        ->UseRealTime();
}

} // namespace

void addDateFormattingThreadsRows() {
    addTwoThreads("floor: SimpleDateFormat, one for each thread", [](const SampleDate& date) {
        thread_local const auto format = icuPatternFormat(pattern, sampleEnglish);
        return icuText(*format, date);
    });
    addTwoThreads("ours: DateFormatter, one for both", formatBy(patternFormatter(pattern, sampleEnglish)));
    addTwoThreads("note: SimpleDateFormat, one behind a mutex", formatByLookUp());
}

} // namespace vorlan::benchmarks
