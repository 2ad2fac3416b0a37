// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/DatePatternProgram.h"

#include "platform/dates/OffsetText.h"
#include "platform/values/CivilDay.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vorlan {

namespace {

constexpr std::int64_t secondsOfDay = 86'400;
constexpr std::int64_t sampleYear = 2001;

// Between them all calendars here count on without a leap, in one era.
constexpr double firstMillisecond = static_cast<double>(dayOfCivil(1600, 1, 2) * secondsOfDay * 1000);
constexpr double endMillisecond = static_cast<double>(dayOfCivil(2400, 1, 1) * secondsOfDay * 1000);

// How far the years of a calendar are ahead; absent where it differs in more than that.
std::optional<int> yearsAhead(Calendar::Identifier calendar) {
    switch (calendar) {
    case Calendar::Identifier::gregorian:
    case Calendar::Identifier::iso8601: return 0;
    case Calendar::Identifier::buddhist: return 543;
    default: return std::nullopt;
    }
}

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// The texts of some times, from different quarters of a year and of a day.
auto samplesBy(auto&& string) {
    return std::array{string(1'709'647'629'250), string(946'684'799'999), string(26'352'000'000),
                      string(2'163'672'645'000)};
}

} // namespace

struct DatePatternProgram::Moment {
    Moment(double milliseconds, const detail::ZoneRules& zone) {
        const auto whole = static_cast<std::int64_t>(std::floor(milliseconds));
        const auto time = flooredQuotient(whole, 1000);
        millisecond = static_cast<int>(whole - time * 1000);
        offset = zone.offsetAt(time);
        day = flooredQuotient(time + offset, secondsOfDay);
        second = static_cast<int>(time + offset - day * secondsOfDay);
        civil = civilDay(day);
    }

    int hour() const { return second / 3600; }
    int weekday() const { return static_cast<int>(flooredRemainder(day + 4, 7)); } // 0 is Sunday

    // Where the part's texts are counted from 0.
    int place(Part part) const {
        switch (part) {
        case Part::month: return civil.month - 1;
        case Part::weekday: return weekday();
        case Part::quarter: return (civil.month - 1) / 3;
        case Part::halfOfDay: return hour() / 12;
        default: return 0;
        }
    }

    std::int64_t number(Part part, int yearsBefore) const {
        switch (part) {
        case Part::year: return civil.year + yearsBefore;
        case Part::yearOfCentury: return (civil.year + yearsBefore) % 100;
        case Part::month: return civil.month;
        case Part::day: return civil.day;
        case Part::dayOfYear: return day - dayOfCivil(civil.year, 1, 1) + 1;
        case Part::hour: return hour();
        case Part::hourFromOne: return (hour() + 23) % 24 + 1;
        case Part::hourOfHalf: return hour() % 12;
        case Part::clockHour: return (hour() + 11) % 12 + 1;
        case Part::minute: return second / 60 % 60;
        case Part::second: return second % 60;
        default: return 0;
        }
    }

    CivilDay civil{};
    std::int64_t day = 0; // since 1970
    int second = 0;       // of the day
    int millisecond = 0;
    int offset = 0;
};

DatePatternProgram::DatePatternProgram(const DateLayout& layout)
    : zone_(layout.zone), yearsBefore_(yearsAhead(layout.calendar).value_or(0)) {}

std::optional<DatePatternProgram> DatePatternProgram::of(const DateFormat& format, const DateLayout& layout) {
    if (!yearsAhead(layout.calendar)) return std::nullopt;
    DatePatternProgram program(layout);
    const auto scribe = format.clone();
    const auto texts = samplesBy([&](double time) { return scribe->string(time); });
    if (!program.compile(scribe->pattern(), *scribe)) return std::nullopt;
    const bool agrees = samplesBy([&](double time) { return program.string(time).value_or(""); }) == texts;
    return agrees ? std::optional(std::move(program)) : std::nullopt;
}

bool DatePatternProgram::compile(std::string_view pattern, DateFormat& scribe) {
    readDigits(scribe);
    bool isQuoted = false;
    for (std::size_t at = 0; at < pattern.size();) {
        const auto end = std::min(pattern.find_first_not_of(pattern[at], at), pattern.size());
        if (pattern[at] == '\'') {
            addLiteral(std::string((end - at) / 2, '\''));
            isQuoted = isQuoted != ((end - at) % 2 != 0);
        } else if (isQuoted || !isLetter(pattern[at])) {
            addLiteral(pattern.substr(at, end - at));
        } else if (!addField(pattern[at], end - at, scribe)) {
            return false;
        }
        at = end;
    }
    return true;
}

void DatePatternProgram::addLiteral(std::string_view text) {
    if (text.empty()) return;
    if (steps_.empty() || steps_.back().part != Part::literal)
        steps_.push_back({.part = Part::literal, .count = 0, .texts = {std::string()}});
    steps_.back().texts.front() += text;
}

std::optional<DatePatternProgram::Part> DatePatternProgram::partOf(char letter, std::size_t count) {
    switch (letter) {
    case 'y': return count == 2 ? Part::yearOfCentury : Part::year;
    case 'M':
    case 'L': return Part::month;
    case 'd': return Part::day;
    case 'D': return Part::dayOfYear;
    case 'E':
    case 'e':
    case 'c': return Part::weekday;
    case 'Q':
    case 'q': return Part::quarter;
    case 'a': return Part::halfOfDay;
    case 'H': return Part::hour;
    case 'k': return Part::hourFromOne;
    case 'K': return Part::hourOfHalf;
    case 'h': return Part::clockHour;
    case 'm': return Part::minute;
    case 's': return Part::second;
    case 'S': return Part::millisecond;
    case 'X':
    case 'x':
    case 'Z': return Part::offset;
    default: return std::nullopt;
    }
}

bool DatePatternProgram::addField(char letter, std::size_t count, DateFormat& scribe) {
    constexpr std::size_t longest = 9;
    const std::string field(count, letter);
    if (letter == 'G') {
        scribe.setPattern(field);
        addLiteral(scribe.string(0));
        return true;
    }
    const auto part = partOf(letter, count);
    if (!part || count > longest || field == "ZZZZ") return false;
    steps_.push_back({.part = *part,
                      .count = static_cast<std::uint8_t>(count),
                      .letter = letter,
                      .texts = texts(*part, field, scribe)});
    return true;
}

// What ICU calls the values of a part; nothing where they are written as numbers.
std::vector<std::string> DatePatternProgram::texts(Part part, const std::string& field,
                                                   DateFormat& scribe) const {
    std::vector<std::string> result;
    scribe.setPattern(field);
    const auto add = [&](int month, int day, int hour) {
        const auto local = dayOfCivil(sampleYear, month, day) * secondsOfDay + hour * 3600;
        result.push_back(scribe.string(static_cast<double>(zone_->timeFromLocal(local)) * 1000));
    };
    switch (part) {
    case Part::month:
        for (int month = 1; month <= 12 && field.size() > 2; ++month) add(month, 15, 12);
        break;
    case Part::quarter:
        for (int quarter = 0; quarter < 4; ++quarter) add(quarter * 3 + 2, 15, 12);
        break;
    case Part::weekday:
        for (int day = 7; day < 14; ++day) add(1, day, 12); // 7 January 2001 was a Sunday
        break;
    case Part::halfOfDay:
        for (const int hour : {6, 18}) add(1, 15, hour);
        break;
    default: break;
    }
    return result;
}

void DatePatternProgram::readDigits(DateFormat& scribe) {
    scribe.setPattern("s");
    for (int digit = 0; digit < 10; ++digit)
        digits_[static_cast<std::size_t>(digit)] = scribe.string(digit * 1000);
    hasASCIIDigits_ = digits_[0] == "0" && digits_[9] == "9";
}

std::optional<std::string> DatePatternProgram::string(double milliseconds) const {
    if (!(milliseconds >= firstMillisecond && milliseconds < endMillisecond)) return std::nullopt;
    const Moment moment(milliseconds, *zone_);
    std::string text;
    text.reserve(steps_.size() * 4);
    for (const auto& step : steps_) write(text, step, moment);
    return text;
}

void DatePatternProgram::write(std::string& text, const Step& step, const Moment& moment) const {
    if (!step.texts.empty())
        text += step.texts[static_cast<std::size_t>(moment.place(step.part))];
    else if (step.part == Part::millisecond)
        writeFraction(text, moment.millisecond, step.count);
    else if (step.part == Part::offset)
        appendOffset(text, moment.offset, step.letter, step.count);
    else
        writeNumber(text, moment.number(step.part, yearsBefore_), step.count);
}

void DatePatternProgram::writeNumber(std::string& text, std::int64_t number, int digits) const {
    std::array<char, 20> buffer;
    auto* const end = buffer.data() + buffer.size();
    auto* start = end;
    for (; number > 0 || end - start < digits; number /= 10) *--start = static_cast<char>('0' + number % 10);
    if (hasASCIIDigits_) {
        text.append(start, end);
    } else {
        for (; start != end; ++start) text += digits_[static_cast<std::size_t>(*start - '0')];
    }
}

// To as many digits as there are letters, of which ICU knows three.
void DatePatternProgram::writeFraction(std::string& text, int millisecond, int digits) const {
    const int known = std::min(digits, 3);
    writeNumber(text, known == 1 ? millisecond / 100 : known == 2 ? millisecond / 10 : millisecond, known);
    for (int digit = known; digit < digits; ++digit) text += digits_[0];
}

} // namespace vorlan
