// SPDX-License-Identifier: Apache-2.0
#include "tools/defaults/DateText.h"

#include <VorlanFoundation/Platform/Describe.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace tool {

using vorlan::Date;

namespace {

using std::chrono::days;
using std::chrono::sys_days;

constexpr sys_days referenceDay = std::chrono::year(2001) / 1 / 1;
constexpr std::int64_t secondsPerDay = 86'400;

// Takes a text apart from its start. Once a part is not as wanted, all that follow are not either.
class Scanner {
public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    bool isGood() const noexcept { return isGood_; }
    bool isAtEnd() const noexcept { return rest_.empty(); }

    // Takes the character if it is next.
    bool takes(char character) {
        const bool isNext = isGood_ && rest_.starts_with(character);
        if (isNext) rest_.remove_prefix(1);
        return isNext;
    }

    void expect(char character) { isGood_ = takes(character); }

    // So many digits, which make no more than `highest`.
    int number(std::size_t digits, int highest) {
        const auto text = takeDigits();
        int value = 0;
        for (const char digit : text) value = value * 10 + (digit - '0');
        isGood_ = isGood_ && text.size() == digits && value <= highest;
        return value;
    }

    // The digits behind a point.
    double fraction() {
        const auto digits = takeDigits();
        isGood_ = isGood_ && !digits.empty() && digits.size() <= 9;
        if (!isGood_) return 0;
        const std::string text = "0." + std::string(digits);
        double value = 0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    }

private:
    // Not more than are of use, so that no text is too long to be counted with.
    std::string_view takeDigits() {
        constexpr std::string_view all = "0123456789";
        const auto digits = rest_.substr(0, std::min(rest_.find_first_not_of(all), rest_.size()));
        rest_.remove_prefix(digits.size());
        if (digits.size() <= 9) return digits;
        isGood_ = false;
        return {};
    }

    std::string_view rest_;
    bool isGood_ = true;
};

// Seconds from the reference date to the start of the day; absent when the calendar has no such day.
std::optional<std::int64_t> scanDay(Scanner& scanner) {
    const int year = scanner.number(4, 9999);
    scanner.expect('-');
    const int month = scanner.number(2, 12);
    scanner.expect('-');
    const int day = scanner.number(2, 31);
    const std::chrono::year_month_day date(std::chrono::year(year),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day)));
    if (!scanner.isGood() || !date.ok()) return std::nullopt;
    return (sys_days(date) - referenceDay).count() * secondsPerDay;
}

std::int64_t scanHoursAndMinutes(Scanner& scanner) {
    const int hours = scanner.number(2, 23);
    scanner.expect(':');
    const int minutes = scanner.number(2, 59);
    return hours * 3600 + minutes * 60;
}

// Seconds that the local time is ahead of UTC.
std::int64_t scanOffset(Scanner& scanner) {
    if (scanner.takes('Z')) return 0;
    if (scanner.takes('+')) return scanHoursAndMinutes(scanner);
    scanner.expect('-');
    return -scanHoursAndMinutes(scanner);
}

std::string paddedText(std::int64_t number, std::size_t digits) {
    auto text = std::to_string(number);
    return text.size() < digits ? text.insert(0, digits - text.size(), '0') : text;
}

std::string fractionText(std::int64_t microseconds) {
    if (microseconds == 0) return "";
    auto digits = paddedText(microseconds, 6);
    digits.resize(digits.find_last_not_of('0') + 1);
    return "." + digits;
}

std::string timeText(std::int64_t second) {
    return paddedText(second / 3600, 2) + ":" + paddedText(second / 60 % 60, 2) + ":" +
           paddedText(second % 60, 2);
}

} // namespace

std::optional<Date> parseDate(std::string_view text) {
    Scanner scanner(text);
    const auto day = scanDay(scanner);
    if (!day) return std::nullopt;
    if (scanner.isAtEnd()) return Date(static_cast<double>(*day));
    scanner.expect('T');
    std::int64_t seconds = *day + scanHoursAndMinutes(scanner);
    scanner.expect(':');
    seconds += scanner.number(2, 59);
    const double fraction = scanner.takes('.') ? scanner.fraction() : 0;
    seconds -= scanOffset(scanner);
    if (!scanner.isGood() || !scanner.isAtEnd()) return std::nullopt;
    return Date(static_cast<double>(seconds) + fraction);
}

std::string dateText(Date date) {
    // The first and the last second of the years with four digits.
    constexpr double first = -63'145'526'400.0; // 0000-01-01
    constexpr double end = 252'423'993'600.0;   // 10000-01-01
    double whole = std::floor(date.timeIntervalSinceReferenceDate());
    auto microseconds = std::llround((date.timeIntervalSinceReferenceDate() - whole) * 1e6);
    if (microseconds == 1'000'000) {
        microseconds = 0;
        whole += 1;
    }
    if (!(whole >= first && whole < end)) return vorlan::describe(date);
    const auto seconds = static_cast<std::int64_t>(whole);
    const auto dayCount = static_cast<std::int64_t>(std::floor(whole / secondsPerDay));
    const std::chrono::year_month_day day(referenceDay + days(dayCount));
    return paddedText(static_cast<int>(day.year()), 4) + "-" +
           paddedText(static_cast<unsigned>(day.month()), 2) + "-" +
           paddedText(static_cast<unsigned>(day.day()), 2) + "T" +
           timeText(seconds - dayCount * secondsPerDay) + fractionText(microseconds) + "Z";
}

} // namespace tool
