// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONRecogniser.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

namespace vorlan::tests {

namespace {

constexpr std::size_t maximumDepth = 512;

struct TooDeep {};

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

// How many bytes the letter takes that begins with these; 0 when they are ill-formed. From table 3-7 of Unicode.
std::size_t lengthOfLetter(std::string_view text) {
    struct Row {
        std::uint8_t firstLow, firstHigh, secondLow, secondHigh;
        std::size_t length;
    };
    static constexpr std::array<Row, 9> rows{{{0x00, 0x7F, 0x00, 0x00, 1},
                                              {0xC2, 0xDF, 0x80, 0xBF, 2},
                                              {0xE0, 0xE0, 0xA0, 0xBF, 3},
                                              {0xE1, 0xEC, 0x80, 0xBF, 3},
                                              {0xED, 0xED, 0x80, 0x9F, 3},
                                              {0xEE, 0xEF, 0x80, 0xBF, 3},
                                              {0xF0, 0xF0, 0x90, 0xBF, 4},
                                              {0xF1, 0xF3, 0x80, 0xBF, 4},
                                              {0xF4, 0xF4, 0x80, 0x8F, 4}}};
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    for (const Row& row : rows) {
        if (byte(0) < row.firstLow || byte(0) > row.firstHigh) continue;
        if (text.size() < row.length) return 0;
        if (row.length > 1 && (byte(1) < row.secondLow || byte(1) > row.secondHigh)) return 0;
        for (std::size_t i = 2; i < row.length; ++i)
            if (byte(i) < 0x80 || byte(i) > 0xBF) return 0;
        return row.length;
    }
    return 0;
}

// Each rule takes what it describes from the front of the rest, and says whether it was there.
class Recogniser {
public:
    explicit Recogniser(std::string_view text) : rest_(text) {}

    bool text() { return blanks() && value() && blanks() && rest_.empty(); }

private:
    bool take(char expected) { return takeAny({&expected, 1}); }

    bool takeAny(std::string_view expected) {
        if (!at(expected)) return false;
        rest_.remove_prefix(1);
        return true;
    }

    bool at(std::string_view any) const {
        return !rest_.empty() && any.find(rest_[0]) != std::string_view::npos;
    }

    bool takeWord(std::string_view word) {
        if (!rest_.starts_with(word)) return false;
        rest_.remove_prefix(word.size());
        return true;
    }

    bool blanks() {
        while (takeAny(" \t\n\r")) {}
        return true;
    }

    bool value() {
        if (at("{")) return nested('}', &Recogniser::member);
        if (at("[")) return nested(']', &Recogniser::value);
        if (at("\"")) return string();
        return takeWord("true") || takeWord("false") || takeWord("null") || number();
    }

    bool nested(char end, bool (Recogniser::*item)()) {
        if (++depth_ > maximumDepth) throw TooDeep();
        rest_.remove_prefix(1);
        blanks();
        if (!take(end)) {
            do {
                blanks();
                if (!(this->*item)()) return false;
                blanks();
            } while (take(','));
            if (!take(end)) return false;
        }
        --depth_;
        return true;
    }

    bool member() { return string() && blanks() && take(':') && blanks() && value(); }

    bool digits() {
        if (rest_.empty() || !isDigit(rest_[0])) return false;
        while (!rest_.empty() && isDigit(rest_[0])) rest_.remove_prefix(1);
        return true;
    }

    bool number() {
        take('-');
        if (!take('0') && !digits()) return false;
        if (take('.') && !digits()) return false;
        if (!takeAny("eE")) return true;
        takeAny("+-");
        return digits();
    }

    bool string() {
        if (!take('"')) return false;
        while (!rest_.empty()) {
            if (take('"')) return true;
            if (!(at("\\") ? escape() : letter())) return false;
        }
        return false;
    }

    bool letter() {
        const std::size_t length = lengthOfLetter(rest_);
        if (length == 0 || static_cast<std::uint8_t>(rest_[0]) < 0x20) return false;
        rest_.remove_prefix(length);
        return true;
    }

    bool escape() {
        rest_.remove_prefix(1);
        if (takeAny("\"\\/bfnrt")) return true;
        const auto unit = numbered();
        if (!unit || (*unit >= 0xDC00 && *unit <= 0xDFFF)) return false;
        if (*unit < 0xD800 || *unit > 0xDBFF) return true;
        if (!take('\\')) return false;
        const auto second = numbered();
        return second && *second >= 0xDC00 && *second <= 0xDFFF;
    }

    std::optional<unsigned> numbered() {
        if (!take('u')) return std::nullopt;
        unsigned unit = 0;
        for (int i = 0; i < 4; ++i) {
            constexpr std::string_view small = "0123456789abcdef";
            constexpr std::string_view capital = "0123456789ABCDEF";
            if (rest_.empty()) return std::nullopt;
            const auto digit = std::min(small.find(rest_[0]), capital.find(rest_[0]));
            if (digit == std::string_view::npos) return std::nullopt;
            unit = unit * 16 + static_cast<unsigned>(digit);
            rest_.remove_prefix(1);
        }
        return unit;
    }

    std::string_view rest_;
    std::size_t depth_ = 0;
};

} // namespace

Judgement judgementOf(std::string_view text) {
    try {
        return Recogniser(text).text() ? Judgement::json : Judgement::noJSON;
    } catch (const TooDeep&) {
        return Judgement::tooDeep;
    }
}

} // namespace vorlan::tests
