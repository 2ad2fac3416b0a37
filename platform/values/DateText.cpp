// SPDX-License-Identifier: Apache-2.0
#include "platform/values/DateText.h"

#include "platform/values/Epoch.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace vorlan {
namespace {

using namespace std::chrono;

using Seconds = std::int64_t;

constexpr Seconds secondsOfDay = 86'400;

constexpr Seconds secondsBefore(sys_days day) {
    return Seconds{(day - referenceDate).count()} * secondsOfDay;
}

// Since 2001.
constexpr Seconds firstSecond = secondsBefore(year(1) / January / 1);
constexpr Seconds lastSecond = secondsBefore(year(9999) / December / 31) + secondsOfDay - 1;

// A date by its second and the decimal digits of the fraction that it is after that.
struct Parts {
    Seconds second;
    std::string fraction;
};

// The fraction that is left to 1: the complement of each digit to 9, and of the last that is no zero to 10. Of no
// digits, or of zeros only, there is none.
void complement(std::string& fraction) {
    const auto last = fraction.find_last_not_of('0');
    if (last == std::string::npos) return;
    for (std::size_t at = 0; at < last; ++at) fraction[at] = static_cast<char>('0' + '9' - fraction[at]);
    fraction[last] = static_cast<char>('0' + 10 - (fraction[last] - '0'));
}

// From the shortest decimal that reads back as the number: before 2001 that counts backwards.
Parts partsOf(double interval) {
    // Twelve digits before the point, and behind it those of the smallest number.
    std::array<char, 512> decimal;
    const char* const end =
        std::to_chars(decimal.begin(), decimal.end(), std::abs(interval), std::chars_format::fixed).ptr;
    const char* const point = std::find<const char*>(decimal.begin(), end, '.');
    Parts parts{0, point == end ? std::string() : std::string(point + 1, end)};
    std::from_chars(decimal.begin(), point, parts.second);
    if (!(interval < 0)) return parts;
    parts.second = -parts.second - (parts.fraction.empty() ? 0 : 1);
    complement(parts.fraction);
    return parts;
}

// The same way back: to the decimal, and from that to the nearest number.
double intervalOf(Parts parts) {
    if (parts.fraction.find_first_not_of('0') == std::string::npos) return static_cast<double>(parts.second);
    const bool isBefore = parts.second < 0;
    if (isBefore) {
        parts.second = -(parts.second + 1);
        complement(parts.fraction);
    }
    const auto decimal = std::to_string(parts.second) + "." + parts.fraction;
    double interval = 0;
    std::from_chars(decimal.data(), decimal.data() + decimal.size(), interval, std::chars_format::fixed);
    return isBefore ? -interval : interval;
}

void appendNumber(std::string& text, int digits, unsigned number, char after) {
    std::array<char, 4> written;
    for (int at = digits; at-- > 0; number /= 10)
        written[static_cast<std::size_t>(at)] = static_cast<char>('0' + number % 10);
    text.append(written.data(), static_cast<std::size_t>(digits));
    if (after != '\0') text += after;
}

// Reads a text from its front. What is not there as expected makes it fail for good.
class Scanner {
public:
    explicit Scanner(std::string_view text) noexcept : left_(text) {}

    // Exactly so many digits, of a number from `least` to `most`.
    int number(std::size_t digits, int least, int most) {
        const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
        if (left_.size() < digits || !std::ranges::all_of(left_.substr(0, digits), isDigit)) return fail();
        int number = 0;
        for (const char digit : left_.substr(0, digits)) number = number * 10 + (digit - '0');
        left_.remove_prefix(digits);
        return number < least || number > most ? fail() : number;
    }

    // Whether one of these characters is next; it is then taken.
    bool takes(std::string_view characters) noexcept {
        if (left_.empty() || characters.find(left_.front()) == std::string_view::npos) return false;
        left_.remove_prefix(1);
        return true;
    }
    void require(std::string_view characters) noexcept {
        if (!takes(characters)) fail();
    }

    std::string_view digits() noexcept {
        const auto found = left_.substr(0, left_.find_first_not_of("0123456789"));
        left_.remove_prefix(found.size());
        return found;
    }

    int fail() noexcept {
        hasFailed_ = true;
        return 0;
    }

    bool isDone() const noexcept { return !hasFailed_ && left_.empty(); }

private:
    std::string_view left_;
    bool hasFailed_ = false;
};

sys_days day(Scanner& text) {
    const year years(text.number(4, 1, 9999));
    text.require("-");
    const month months(static_cast<unsigned>(text.number(2, 1, 12)));
    text.require("-");
    const std::chrono::day days(static_cast<unsigned>(text.number(2, 1, 31)));
    const year_month_day date(years, months, days);
    if (!date.ok()) text.fail();
    return date;
}

// In seconds, which have to be added to UTC for the time there.
Seconds offset(Scanner& text) {
    if (text.takes("Zz")) return 0;
    const bool isWest = text.takes("-");
    if (!isWest) text.require("+");
    const Seconds hours = text.number(2, 0, 23);
    text.require(":");
    const Seconds away = hours * 3600 + text.number(2, 0, 59) * 60;
    return isWest ? -away : away;
}

bool beginsMonth(Seconds second) {
    const auto days = floor<std::chrono::days>(seconds(second));
    return seconds(second) == days && year_month_day(referenceDate + days).day() == std::chrono::day(1);
}

} // namespace

std::optional<std::string> rfc3339FromDate(Date date) {
    const double interval = date.timeIntervalSinceReferenceDate();
    if (!(interval >= static_cast<double>(firstSecond) && interval < static_cast<double>(lastSecond + 1)))
        return std::nullopt;
    const auto [second, fraction] = partsOf(interval);
    const auto days = floor<std::chrono::days>(seconds(second));
    const year_month_day date_(referenceDate + days);
    const auto ofDay = static_cast<unsigned>(second - Seconds{days.count()} * secondsOfDay);
    std::string text;
    text.reserve(sizeof "2024-03-05T14:07:09.123456789Z");
    appendNumber(text, 4, static_cast<unsigned>(static_cast<int>(date_.year())), '-');
    appendNumber(text, 2, static_cast<unsigned>(date_.month()), '-');
    appendNumber(text, 2, static_cast<unsigned>(date_.day()), 'T');
    appendNumber(text, 2, ofDay / 3600, ':');
    appendNumber(text, 2, ofDay / 60 % 60, ':');
    appendNumber(text, 2, ofDay % 60, '\0');
    if (!fraction.empty()) text.append(".").append(fraction);
    return text += 'Z';
}

std::optional<Date> dateFromRFC3339(std::string_view text) {
    Scanner scanner(text);
    Parts parts{secondsBefore(day(scanner)), {}};
    scanner.require("Tt");
    parts.second += scanner.number(2, 0, 23) * 3600;
    scanner.require(":");
    parts.second += scanner.number(2, 0, 59) * 60;
    scanner.require(":");
    const int second = scanner.number(2, 0, 60);
    parts.second += second;
    if (scanner.takes(".")) {
        parts.fraction = scanner.digits();
        if (parts.fraction.empty()) return std::nullopt;
    }
    parts.second -= offset(scanner);
    if (!scanner.isDone() || parts.second < firstSecond || parts.second > lastSecond) return std::nullopt;
    if (second == 60 && !beginsMonth(parts.second)) return std::nullopt;
    return Date(intervalOf(std::move(parts)));
}

} // namespace vorlan
