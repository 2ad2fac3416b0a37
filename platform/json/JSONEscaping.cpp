// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONEscaping.h"

#include "platform/json/JSONBytes.h"
#include "platform/values/UTF8.h"

#include <array>

namespace vorlan::escaping {
namespace {

using Word = std::uint64_t;

template <class Part>
Part load(const char* from) noexcept {
    Part part;
    std::memcpy(&part, from, sizeof part);
    return part;
}

template <class Part>
void store(char* to, Part part) noexcept {
    std::memcpy(to, &part, sizeof part);
}

constexpr bool isPlain(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\';
}

std::size_t copyPlainBytes(char* to, const char* from, std::size_t size) noexcept {
    std::size_t at = 0;
    for (; at < size && isPlain(from[at]); ++at) to[at] = from[at];
    return at;
}

// The same of less than a word, but it may read and copy once more what comes before it, which is `copied` bytes. Words
// that overlap spare a loop for each byte.
std::size_t copyPlainRest(char* to, const char* from, std::size_t size, std::size_t copied) noexcept {
    Word word = 0;
    if (copied >= 8) {
        word = load<Word>(from + size - 8);
        store(to + size - 8, word);
    } else if (size >= 4) {
        const auto first = load<std::uint32_t>(from);
        const auto last = load<std::uint32_t>(from + size - 4);
        store(to, first);
        store(to + size - 4, last);
        word = first | Word{last} << 32;
    }
    return json::specialBytes(word) == 0 ? size : copyPlainBytes(to, from, size);
}

// Copies from `from` what can stand as it is, at most up to `end`; there must be room for a word more than that.
// Returns how many bytes that were.
std::size_t copyPlain(char* to, const char* from, const char* end) noexcept {
    const char* const begin = from;
    const auto done = [&] { return static_cast<std::size_t>(from - begin); };
    for (; end - from >= 8; from += 8, to += 8) {
        std::memcpy(to, from, sizeof(Word));
        if (const auto special = json::specialBytes(json::eightBytes(from)))
            return done() + json::plainBytes(special);
    }
    const auto left = static_cast<std::size_t>(end - from);
    return left == 0 ? done() : done() + copyPlainRest(to, from, left, done());
}

constexpr std::string_view hexDigits = "0123456789abcdef";

// What stands behind the backslash for a character that is escaped, 'u' where it has no letter of its own.
constexpr char escapeLetter(unsigned char character) {
    switch (character) {
    case '"': return '"';
    case '\\': return '\\';
    case '\b': return 'b';
    case '\f': return 'f';
    case '\n': return 'n';
    case '\r': return 'r';
    case '\t': return 't';
    default: return 'u';
    }
}

// Of one character below 0x80, which may be plain. There must be room for six.
char* writeASCII(char* to, unsigned char character) noexcept {
    if (isPlain(static_cast<char>(character))) {
        *to++ = static_cast<char>(character);
        return to;
    }
    *to++ = '\\';
    const char letter = escapeLetter(character);
    *to++ = letter;
    if (letter != 'u') return to;
    store(to, std::array{'0', '0', hexDigits[character >> 4], hexDigits[character & 0xF]});
    return to + 4;
}

// Copies the characters that are not ASCII from `from` on, up to the next that is. Returns how many bytes these were,
// none when the first is ill-formed.
std::size_t copyNonASCII(char* to, const char* from, const char* end) noexcept {
    const char* at = from;
    while (at != end && static_cast<unsigned char>(*at) >= 0x80) {
        const auto length = utf8::characterLength(at, static_cast<std::size_t>(end - at));
        if (length == 0) break;
        for (std::size_t index = 0; index < length; ++index) *to++ = *at++;
    }
    return static_cast<std::size_t>(at - from);
}

// The bytes that an escaped text stands for, one by one.
class Unescaping {
public:
    explicit Unescaping(const char* escaped) noexcept : at_(escaped) {}

    // -1 at the end.
    int next() noexcept {
        if (*at_ == '"') return -1;
        if (*at_ != '\\') return static_cast<unsigned char>(*at_++);
        ++at_;
        return escape(*at_++);
    }

private:
    int escape(char letter) noexcept {
        switch (letter) {
        case 'b': return '\b';
        case 'f': return '\f';
        case 'n': return '\n';
        case 'r': return '\r';
        case 't': return '\t';
        case 'u': {
            // Only control characters are written so.
            const auto value = hexDigits.find(at_[2]) * 16 + hexDigits.find(at_[3]);
            at_ += 4;
            return static_cast<int>(value);
        }
        default: return letter;
        }
    }

    const char* at_;
};

} // namespace

bool appendQuoted(JSONWriterBuffer& buffer, std::string_view text) {
    // The longest escape, the word that is copied beyond the text's end, and two quotes.
    constexpr std::size_t margin = 6 + 8 + 2;
    const char* from = text.data();
    const char* const end = from + text.size();
    const auto left = [&] { return static_cast<std::size_t>(end - from); };
    char* to = buffer.room(left() + margin);
    *to++ = '"';
    while (true) {
        const auto plain = copyPlain(to, from, end);
        from += plain;
        to += plain;
        if (from == end) break;
        if (static_cast<unsigned char>(*from) < 0x80) {
            to = writeASCII(to, static_cast<unsigned char>(*from++));
            buffer.setEnd(to);
            to = buffer.room(left() + margin);
        } else {
            const auto copied = copyNonASCII(to, from, end);
            if (copied == 0) return false;
            from += copied;
            to += copied;
        }
    }
    *to++ = '"';
    buffer.setEnd(to);
    return true;
}

std::string unescaped(const char* escaped) {
    std::string text;
    Unescaping bytes(escaped);
    for (int byte = bytes.next(); byte >= 0; byte = bytes.next()) text += static_cast<char>(byte);
    return text;
}

bool isBefore(const char* escaped, const char* other) noexcept {
    for (; *escaped == *other && isPlain(*escaped); ++escaped) ++other;
    Unescaping bytes(escaped);
    Unescaping others(other);
    while (true) {
        const int byte = bytes.next();
        const int against = others.next();
        if (byte != against) return byte < against;
        if (byte < 0) return false;
    }
}

} // namespace vorlan::escaping
