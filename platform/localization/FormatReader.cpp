// SPDX-License-Identifier: Apache-2.0
#include "platform/localization/FormatReader.h"

#include "platform/values/UTF8.h"

#include <tuple>
#include <utility>

namespace vorlan {

namespace {

using Kind = FormatDirective::Kind;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

Kind kindOf(char conversion) {
    switch (conversion) {
    case '@':
    case 'p': return Kind::anything;
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X':
    case 'o':
    case 'c':
    case 'C': return Kind::integer;
    case 'f':
    case 'F':
    case 'e':
    case 'E':
    case 'g':
    case 'G':
    case 'a':
    case 'A': return Kind::number;
    case 's':
    case 'S': return Kind::text;
    default: return Kind::unknown;
    }
}

} // namespace

std::optional<FormatGap> FormatReader::next() {
    const auto start = format_.find('%', at_);
    if (start == std::string_view::npos) return std::nullopt;
    at_ = start + 1;
    isTooMuch_ = false;
    FormatGap gap{.offset = start};
    if (skip('%')) {
        gap.kind = Kind::percent;
    } else {
        gap.argument = argument();
        readFlags(gap.form);
        if (!readName(gap)) {
            readWidth(gap);
            readPrecision(gap);
            readLength(gap.form);
            readConversion(gap);
        }
        if (isTooMuch_) gap.kind = Kind::unknown;
    }
    gap.length = at_ - start;
    return gap;
}

bool FormatReader::skip(char character) {
    if (at_ == format_.size() || format_[at_] != character) return false;
    ++at_;
    return true;
}

// The number that the digits here say, if there are any.
std::optional<std::size_t> FormatReader::count() {
    if (!isDigit(peek())) return std::nullopt;
    std::size_t number = 0;
    for (; isDigit(peek()); ++at_)
        if (number <= mostCount) number = number * 10 + static_cast<std::size_t>(peek() - '0');
    if (number > mostCount) isTooMuch_ = true;
    return number;
}

// The number of an argument, as in "2$"; 0, and nothing is read, where there is none.
std::size_t FormatReader::argument() {
    const auto start = std::pair(at_, isTooMuch_);
    if (peek() != '0')
        if (const auto number = count(); number && skip('$')) return *number;
    std::tie(at_, isTooMuch_) = start;
    return 0;
}

GapStar FormatReader::star(std::size_t start) {
    const auto number = argument();
    return {.offset = start, .length = at_ - start, .argument = number};
}

void FormatReader::readFlags(GapForm& form) {
    for (;; ++at_) switch (peek()) {
        case '-': form.isLeft = true; break;
        case '+': form.hasPlus = true; break;
        case ' ': form.hasBlank = true; break;
        case '#': form.isAlternative = true; break;
        case '0': form.hasZeros = true; break;
        case '\'': break; // groups in the locale's way, as is done there without it
        default: return;
        }
}

void FormatReader::readWidth(FormatGap& gap) {
    const auto start = at_;
    if (skip('*')) {
        gap.widthBy = star(start);
    } else {
        gap.form.width = count().value_or(0);
    }
}

void FormatReader::readPrecision(FormatGap& gap) {
    if (!skip('.')) return;
    const auto start = at_;
    if (skip('*')) {
        gap.precisionBy = star(start);
    } else {
        gap.form.precision = count().value_or(0);
    }
}

void FormatReader::readLength(GapForm& form) {
    if (skip('h')) {
        form.bits = skip('h') ? 8 : 16;
        return;
    }
    for (; std::string_view("lqjztL").find(peek()) != std::string_view::npos && peek() != '\0'; ++at_)
        form.bits = 64;
}

void FormatReader::readConversion(FormatGap& gap) {
    gap.form.conversion = peek();
    gap.kind = kindOf(peek());
    if (gap.kind != Kind::unknown) {
        ++at_;
    } else if (peek() != '%') {
        skipCharacter(); // with which the gap, such as it is, ends
    }
}

// The rest of a variable, as in "@files@", if it is one.
bool FormatReader::readName(FormatGap& gap) {
    if (!gap.form.isAlternative || peek() != '@') return false;
    const auto end = format_.find_first_of("@%", at_ + 1);
    if (end == std::string_view::npos || format_[end] == '%' || end == at_ + 1) return false;
    gap.kind = Kind::variable;
    gap.name = format_.substr(at_ + 1, end - at_ - 1);
    at_ = end + 1;
    return true;
}

void FormatReader::skipCharacter() {
    if (at_ < format_.size()) at_ += utf8::characterLength(format_.data() + at_, format_.size() - at_);
}

} // namespace vorlan
