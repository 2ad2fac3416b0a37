// SPDX-License-Identifier: Apache-2.0
#pragma once

// Texts with gaps, filled by arguments: printf's formats, without its dangers.
//
//     formatText("%d of %@", {3, "nine"});                                  // "3 of nine"
//     formatText("%2$@, %1$@", {"first", "second"});                        // "second, first"
//     formatText("%.2f", {1234.5}, {.locale = Locale("de")});               // "1.234,50"

#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Locale.h>
#include <VorlanFoundation/Platform/StringTable.h>
#include <VorlanFoundation/Platform/Value.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace vorlan {

/// What fills a gap: an integer, a floating-point number or a text. A character is the integer that it has for a number,
/// a pointer to anything but characters the text of its address; anything else is its description.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
/// Owns:    its text.
class FormatArgument {
public:
    using Content = std::variant<std::int64_t, std::uint64_t, double, std::string>;

    template <class T>
        requires(!std::same_as<std::remove_cvref_t<T>, FormatArgument>)
    FormatArgument(const T& value)
        : content_(contentOf(value)) {} // NOLINT(*-explicit-*): stands for the value

    const Content& content() const noexcept { return content_; }

private:
    template <class T>
    static constexpr bool isAddress = std::is_pointer_v<T> && std::convertible_to<T, const void*> &&
                                      !std::convertible_to<T, std::string_view>;

    template <class T>
    static Content contentOf(const T& value) {
        if constexpr (detail::Integer<T>) {
            if (std::in_range<std::int64_t>(value)) return static_cast<std::int64_t>(value);
            return static_cast<std::uint64_t>(value);
        } else if constexpr (std::integral<T> && !std::same_as<T, bool>) {
            return static_cast<std::int64_t>(value);
        } else if constexpr (std::floating_point<T>) {
            return static_cast<double>(value);
        } else if constexpr (isAddress<T>) {
            return describeAddress(value);
        } else {
            return describe(value);
        }
    }

    Content content_;
};

/// By whose custom gaps are filled.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct FormatCustom {
    /// How numbers are written: grouped, with the digits and the decimal point of the locale. Absent: as in C.
    std::optional<Locale> locale = {};
    /// By which rules numbers choose the forms of plural variables. Absent: those of `locale`, else the user's.
    std::optional<Locale> pluralRules = {};
};

/// Fills the gaps of a printf-style format.
///
/// Known are `%@` (any argument), `%d %i %u %x %X %o %c %C` with the lengths `hh h l ll q j z t L`, `%f %F %e %E %g %G %a
/// %A`, `%s` and `%S` (a text), `%p` and `%%`, with the flags `- + # 0 ' ` and blank, width, precision, either of them
/// `*`, and the number of an argument, as in `%2$@`. Gaps without a number take the arguments in their order, whatever
/// those with one take.
///
/// Texts are as in C, whatever `setlocale` set, but that widths and the precision of a text count characters. With a
/// locale, `%d %i %u`, `%f %e %g` in either case, and the numbers of `%@` have its digits, grouped as there, and no more
/// than 340 behind the decimal point; they are rounded as `NumberFormatter` does, by the shortest digits that stand for
/// them, where C goes by all that they hold.
///
/// A format that does not fit its arguments does no harm. An argument of another kind is written by its own: `%d` of
/// the text "a" is "a", `%d` of 1.5 is "1.5" and `%s` of 3 is "3". An integer is a number, too: `%.1f` of 3 is "3.0". `%c`
/// takes the number of a character, or a text for its first. Lengths are not needed, as arguments know their own: `%d`
/// of 2^63 and `%u` of -1 are what they say. Only `%x`, `%X` and `%o` of a negative number go by the length, as in C: its
/// two's complement has 32 bits, or as many as the length says; 64 where it needs more.
///
/// A gap without an argument, or one that is not understood, is written as it stands in the format. Widths, precisions and
/// numbers of arguments beyond 4096 are not understood; a `*` for which there is no such integer counts for nothing. The
/// problem handler (Problems.h) is told of each such format once; where there are more than 500, perhaps again. Arguments
/// that no gap is for are not missed.
///
/// Safe from any thread. The result is always well-formed UTF-8: ill-formed bytes become U+FFFD.
VORLAN_EXPORT std::string formatText(std::string_view format, std::span<const FormatArgument> arguments,
                                     const FormatCustom& custom = {});
inline std::string formatText(std::string_view format, std::initializer_list<FormatArgument> arguments,
                              const FormatCustom& custom = {}) {
    return formatText(format, std::span(arguments.begin(), arguments.size()), custom);
}

/// Fills the gaps of a translated text, of whose variables (`%#@files@`) the arguments choose the forms.
///
/// Variables and gaps take the arguments in their order, or by number (`%2$#@files@`). Within a form, the first gap
/// without a number that is no variable is for the number that chose it; what else has none takes the next arguments.
/// "zero", where there is one, is chosen by 0 in all languages; a form that a variable lacks is "other".
///
/// The number is taken as it is shown, so that 1 written as "1.0" is no "one" in English: as the gap for it in "other" has
/// it, or else the `valueType`. The text of a number, as "3", is that number; any other chooses "other", and is reported.
/// So is a variable that is not there or stands within itself, or one beyond the 32nd, which is written as it stands.
VORLAN_EXPORT std::string formatText(const StringTableEntry& entry, std::span<const FormatArgument> arguments,
                                     const FormatCustom& custom = {});

/// A gap in a format, as far as it says what it takes.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct FormatDirective {
    /// What is to fill it.
    enum class Kind : std::uint8_t {
        anything, ///< `%@`
        integer,  ///< `%d` and its like, `%c`, and `*`
        number,   ///< `%f` and its like
        text,     ///< `%s`
        variable, ///< `%#@name@`
        percent,  ///< `%%`, which takes none
        unknown,  ///< what is no directive
    };

    std::size_t offset = {};   ///< In the format, in bytes.
    std::size_t length = {};   ///< In bytes.
    Kind kind = {};            ///< What is to fill it.
    std::size_t argument = {}; ///< Which argument, from 1; 0 where it takes none.
    std::string name = {};     ///< Of a variable.

    friend bool operator==(const FormatDirective&, const FormatDirective&) = default;
};

/// The gaps of a format in their order; each `*` is one of its own, before that which it belongs to. Safe from any
/// thread.
VORLAN_EXPORT std::vector<FormatDirective> formatDirectives(std::string_view format);

} // namespace vorlan
