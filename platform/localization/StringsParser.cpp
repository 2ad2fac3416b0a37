// SPDX-License-Identifier: Apache-2.0
#include "platform/localization/StringsParser.h"

#include "platform/localization/TextDecoding.h"
#include "platform/values/UTF8.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <utility>

namespace vorlan {

namespace {

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr bool isOfWord(char c) {
    return isLetter(c) || isDigit(c) || std::string_view("_-.$/:").find(c) != std::string_view::npos;
}

// The value of a hexadecimal digit; 16 for what is none.
constexpr unsigned hexDigit(char c) {
    if (isDigit(c)) return static_cast<unsigned>(c - '0');
    if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
    return 16;
}

// What an escape of one letter stands for; absent for the others.
constexpr std::optional<char> controlCharacter(char letter) {
    constexpr std::string_view letters = "abfnrtv";
    constexpr std::string_view characters = "\a\b\f\n\r\t\v";
    const auto index = letters.find(letter);
    return index != std::string_view::npos ? std::optional(characters[index]) : std::nullopt;
}

class StringsParser {
public:
    StringsParser(std::string_view text, FunctionRef<void(std::string, StringTableEntry)> use)
        : text_(text), use_(use), positions_(text) {}

    void parse() {
        skipBlanks();
        const bool isBraced = skip('{');
        for (skipBlanks(); !isAtEnd() && !(isBraced && next() == '}'); skipBlanks()) parsePair();
        if (isBraced && !skip('}')) failToFind("a key or '}'");
        skipBlanks();
        if (!isAtEnd()) failToFind("the end of the file");
    }

private:
    bool isAtEnd() const { return at_ == text_.size(); }
    char next() const { return text_[at_]; }
    std::string_view rest() const { return text_.substr(at_); }

    bool skip(char c) {
        const bool isThere = !isAtEnd() && next() == c;
        if (isThere) ++at_;
        return isThere;
    }

    [[noreturn]] void fail(const std::string& message, std::size_t offset) {
        throw StringTableError(message, positions_.at(offset));
    }

    [[noreturn]] void failToFind(const std::string& expected) {
        fail("expected " + expected + ", found " + found(), at_);
    }

    // What is next, for a message.
    std::string found() const {
        if (isAtEnd()) return "the end of the file";
        const auto [length, character, isWellFormed] = utf8::firstCharacter(rest());
        if (character >= ' ' && character != 0x7F) return "'" + std::string(rest().substr(0, length)) + "'";
        std::array<char, 16> number{};
        std::snprintf(number.data(), number.size(), "U+%04X", static_cast<unsigned>(character));
        return number.data();
    }

    void skipBlanks() {
        while (true) {
            at_ = std::min(text_.find_first_not_of(" \t\n\r\v\f", at_), text_.size());
            if (rest().starts_with("//")) {
                at_ = std::min(text_.find_first_of("\n\r", at_), text_.size());
            } else if (rest().starts_with("/*")) {
                const auto end = text_.find("*/", at_ + 2);
                if (end == std::string_view::npos) fail("expected '*/' to end this comment", at_);
                at_ = end + 2;
            } else {
                return;
            }
        }
    }

    void parsePair() {
        const auto begin = at_;
        auto key = takeText("a key");
        skipBlanks();
        const bool hasValue = skip('=');
        if (hasValue) skipBlanks();
        auto value = hasValue ? takeText("a text") : key;
        skipBlanks();
        if (!skip(';')) failToFind(hasValue ? "';'" : "'=' or ';'");
        use_(std::move(key), {.text = std::move(value), .position = positions_.at(begin)});
    }

    std::string takeText(const char* expected) {
        if (!isAtEnd() && next() == '"') return takeQuoted();
        const auto begin = at_;
        while (!isAtEnd() && isOfWord(next())) ++at_;
        if (at_ == begin) failToFind(expected);
        return std::string(text_.substr(begin, at_ - begin));
    }

    std::string takeQuoted() {
        const auto begin = at_++;
        std::string text;
        while (true) {
            const auto end = text_.find_first_of("\"\\", at_);
            if (end == std::string_view::npos) fail("expected '\"' to end this text", begin);
            text.append(text_, at_, end - at_);
            at_ = end + 1;
            if (text_[end] == '"') return text;
            takeEscape(text, end);
        }
    }

    // What comes behind the backslash at `begin`.
    void takeEscape(std::string& text, std::size_t begin) {
        if (isAtEnd()) return; // the text that it is in has no end
        const char c = next();
        if (const auto control = controlCharacter(c)) {
            text += *control;
            ++at_;
        } else if (c >= '0' && c <= '7') {
            utf8::append(text, takeOctal(begin));
        } else if (c == 'U' || c == 'u') {
            utf8::append(text, takeCharacter(begin));
        } else if (isLetter(c) || isDigit(c)) {
            fail(std::string("unknown escape \\") + c, begin);
        } else {
            text += c;
            ++at_;
        }
    }

    char32_t takeOctal(std::size_t begin) {
        char32_t character = 0;
        for (int i = 0; i < 3 && !isAtEnd() && next() >= '0' && next() <= '7'; ++i)
            character = character * 8 + static_cast<char32_t>(text_[at_++] - '0');
        if (character > 0xFF) fail("expected an octal escape up to \\377", begin);
        return character;
    }

    char32_t takeCharacter(std::size_t begin) {
        const auto unit = takeUnit(begin);
        if (!isSurrogate(unit)) return unit;
        if (rest().starts_with("\\U") || rest().starts_with("\\u")) {
            const auto second = at_++;
            if (const auto pair = surrogatePair(unit, takeUnit(second))) return *pair;
        }
        fail("half a surrogate pair", begin);
    }

    // A 'U' with its digits.
    char32_t takeUnit(std::size_t begin) {
        ++at_;
        char32_t unit = 0;
        for (int i = 0; i < 4; ++i, ++at_) {
            const auto digit = isAtEnd() ? 16 : hexDigit(next());
            if (digit == 16) fail("expected four hexadecimal digits in this escape", begin);
            unit = unit << 4 | digit;
        }
        return unit;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    FunctionRef<void(std::string, StringTableEntry)> use_;
    TextPositions positions_;
};

} // namespace

void parseStrings(std::string_view text, FunctionRef<void(std::string, StringTableEntry)> use) {
    StringsParser(text, use).parse();
}

} // namespace vorlan
