// SPDX-License-Identifier: Apache-2.0
#pragma once

// A pattern of dates, taken apart once so that writing by it takes a fraction of the time.

#include "platform/dates/DateFormat.h"
#include "platform/dates/DateLayout.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan {

/// Writes dates of the Gregorian calendar, and of those that only count its years otherwise, as ICU does: the names and
/// digits are ICU's own texts.
///
/// Threads: safe from any thread: it never changes.
/// Owns:    the texts that it puts together.
class DatePatternProgram {
public:
    /// The program that writes what a format writes; absent where that has fields or customs that programs do not
    /// know. A program is kept only if it says the same as the format of some dates.
    static std::optional<DatePatternProgram> of(const DateFormat& format, const DateLayout& layout);

    /// The text of a time in milliseconds since 1970; absent where it is in a year that only ICU counts to.
    std::optional<std::string> string(double milliseconds) const;

private:
    /// The parts of a local time that patterns write.
    struct Moment;
    /// Which of its parts a step writes.
    enum class Part : std::uint8_t {
        literal, ///< a text that is always the same
        year,
        yearOfCentury,
        month,
        day,
        dayOfYear,
        weekday,
        quarter,
        halfOfDay,
        hour,        ///< 0 to 23
        hourFromOne, ///< 1 to 24
        hourOfHalf,  ///< 0 to 11
        clockHour,   ///< 1 to 12
        minute,
        second,
        millisecond,
        offset,
    };
    /// A part by its number, or by its name where there are names.
    struct Step {
        Part part;
        std::uint8_t count;             ///< how many letters the pattern has for it
        char letter = 0;                ///< by which the pattern names it
        std::vector<std::string> texts; ///< by value
    };

    /// What a field writes; absent where only ICU knows.
    static std::optional<Part> partOf(char letter, std::size_t count);

    explicit DatePatternProgram(const DateLayout& layout);

    bool compile(std::string_view pattern, DateFormat& scribe);
    bool addField(char letter, std::size_t count, DateFormat& scribe);
    void addLiteral(std::string_view text);
    std::vector<std::string> texts(Part part, const std::string& field, DateFormat& scribe) const;
    void readDigits(DateFormat& scribe);

    void write(std::string& text, const Step& step, const Moment& moment) const;
    void writeNumber(std::string& text, std::int64_t number, int digits) const;
    void writeFraction(std::string& text, int millisecond, int digits) const;

    const detail::ZoneRules* zone_;
    int yearsBefore_; ///< how far the calendar's years are ahead
    std::array<std::string, 10> digits_;
    bool hasASCIIDigits_ = false;
    std::vector<Step> steps_;
};

} // namespace vorlan
