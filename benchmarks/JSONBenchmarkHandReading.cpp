// SPDX-License-Identifier: Apache-2.0

// The least code that does it, for these records alone: in one pass, with members in any order, unknown ones passed
// over, all escapes and blanks. It holds the text to RFC 8259 only so far, and not at all to UTF-8.

#include "benchmarks/JSONBenchmarkCodecs.h"

#include <charconv>
#include <cstddef>
#include <cstring>
#include <stdexcept>

namespace vorlan::benchmarks {

namespace {

bool isPlain(char character) {
    return static_cast<unsigned char>(character) >= 0x20 && character != '"' && character != '\\';
}

bool isBlank(char character) {
    return character == ' ' || character == '\n' || character == '\r' || character == '\t';
}

void appendUTF8(std::string& out, unsigned code) {
    const auto append = [&](unsigned byte) { out += static_cast<char>(byte); };
    const auto appendTail = [&](unsigned shift) { append(0x80U | (code >> shift & 0x3FU)); };
    if (code < 0x80) return append(code);
    if (code < 0x800) {
        append(0xC0U | code >> 6U);
    } else {
        if (code < 0x10000) {
            append(0xE0U | code >> 12U);
        } else {
            append(0xF0U | code >> 18U);
            appendTail(12);
        }
        appendTail(6);
    }
    appendTail(0);
}

class Cursor {
public:
    explicit Cursor(std::string_view text) : at_(text.data()), end_(text.data() + text.size()) {}

    /// Whether that is what comes next; if so, it is passed.
    bool take(char expected) {
        passBlanks();
        if (at_ == end_ || *at_ != expected) return false;
        ++at_;
        return true;
    }

    void require(char expected) {
        if (!take(expected)) fail();
    }

    void read(bool& value) {
        value = takeWord("true");
        if (!value && !takeWord("false")) fail();
    }

    template <class Number>
    void read(Number& number) {
        passBlanks();
        const char* digits = at_ != end_ && *at_ == '-' ? at_ + 1 : at_;
        if (digits == end_ || *digits < '0' || *digits > '9') fail();
        const auto [end, error] = std::from_chars(at_, end_, number);
        if (error != std::errc()) fail();
        at_ = end;
    }

    void read(std::string& text) {
        require('"');
        text.clear();
        for (;;) {
            const char* run = at_;
            passPlain();
            text.append(run, at_);
            if (*at_++ == '"') return;
            appendEscape(text);
        }
    }

    template <class Value>
    void read(std::optional<Value>& value) {
        if (!takeWord("null")) read(value.emplace());
    }

    void read(std::vector<std::string>& texts) {
        readArray([&] { read(texts.emplace_back()); });
    }

    template <class ReadElement>
    void readArray(const ReadElement& readElement) {
        require('[');
        if (take(']')) return;
        do readElement();
        while (take(','));
        require(']');
    }

    template <class ReadMember>
    void readObject(const ReadMember& readMember) {
        require('{');
        if (take('}')) return;
        do {
            const auto name = readName();
            require(':');
            readMember(name);
        } while (take(','));
        require('}');
    }

    void pass() {
        passBlanks();
        if (at_ == end_) fail();
        if (*at_ == '{') return readObject([&](std::string_view) { pass(); });
        if (*at_ == '[') return readArray([&] { pass(); });
        if (*at_ == '"') return read(scratch_);
        if (takeWord("true") || takeWord("false") || takeWord("null")) return;
        double number = 0;
        read(number);
    }

    void requireEnd() {
        passBlanks();
        if (at_ != end_) fail();
    }

    [[noreturn]] static void fail() { throw std::runtime_error("not what was expected"); }

private:
    void passBlanks() {
        while (at_ != end_ && isBlank(*at_)) ++at_;
    }

    // To a quote or backslash; there must be one.
    void passPlain() {
        while (at_ != end_ && isPlain(*at_)) ++at_;
        if (at_ == end_ || static_cast<unsigned char>(*at_) < 0x20) fail();
    }

    bool takeWord(std::string_view word) {
        passBlanks();
        if (!std::string_view(at_, end_).starts_with(word)) return false;
        at_ += word.size();
        return true;
    }

    std::string_view readName() {
        require('"');
        const char* begin = at_;
        passPlain();
        if (*at_ == '"') return {begin, at_++};
        at_ = begin - 1;
        read(scratch_);
        return scratch_;
    }

    void appendEscape(std::string& out) {
        constexpr std::string_view letters = "\"\\/bfnrt";
        constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        if (at_ == end_) fail();
        const char letter = *at_++;
        if (letter == 'u') return appendUTF8(out, readCode());
        const auto which = letters.find(letter);
        if (which == std::string_view::npos) fail();
        out += meanings[which];
    }

    unsigned readCode() {
        const unsigned high = readFour();
        if (high < 0xD800 || high > 0xDFFF) return high;
        if (high > 0xDBFF || end_ - at_ < 2 || *at_++ != '\\' || *at_++ != 'u') fail();
        const unsigned low = readFour();
        if (low < 0xDC00 || low > 0xDFFF) fail();
        return 0x10000U + (high - 0xD800U) * 0x400U + low - 0xDC00U;
    }

    unsigned readFour() {
        unsigned code = 0;
        if (end_ - at_ < 4 || std::from_chars(at_, at_ + 4, code, 16).ptr != at_ + 4) fail();
        at_ += 4;
        return code;
    }

    const char* at_;
    const char* end_;
    std::string scratch_;
};

void readPosition(Cursor& cursor, Position& position) {
    unsigned found = 0;
    cursor.readObject([&](std::string_view name) {
        if (name == "latitude") {
            cursor.read(position.latitude);
            found |= 1U;
        } else if (name == "longitude") {
            cursor.read(position.longitude);
            found |= 2U;
        } else {
            cursor.pass();
        }
    });
    if (found != 3U) Cursor::fail();
}

/// Reads the member of that name; its bit, or none.
unsigned readMember(Cursor& cursor, std::string_view name, Record& record) {
    if (name == "id") return cursor.read(record.id), 1U << 0U;
    if (name == "name") return cursor.read(record.name), 1U << 1U;
    if (name == "email") return cursor.read(record.email), 1U << 2U;
    if (name == "isActive") return cursor.read(record.isActive), 1U << 3U;
    if (name == "visits") return cursor.read(record.visits), 1U << 4U;
    if (name == "balance") return cursor.read(record.balance), 1U << 5U;
    if (name == "rating") return cursor.read(record.rating), 1U << 6U;
    if (name == "note") return cursor.read(record.note), 0U;
    if (name == "tags") return cursor.read(record.tags), 1U << 7U;
    if (name == "position") return readPosition(cursor, record.position), 1U << 8U;
    return cursor.pass(), 0U;
}

void readRecord(Cursor& cursor, Record& record) {
    unsigned found = 0;
    cursor.readObject([&](std::string_view name) { found |= readMember(cursor, name, record); });
    if (found != (1U << 9U) - 1) Cursor::fail();
}

} // namespace

Records decodeByHand(std::string_view text) {
    Cursor cursor(text);
    Records records;
    cursor.readArray([&] { readRecord(cursor, records.emplace_back()); });
    cursor.requireEnd();
    return records;
}

} // namespace vorlan::benchmarks
