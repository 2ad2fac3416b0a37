// SPDX-License-Identifier: Apache-2.0
#include "platform/localization/TextDecoding.h"

#include "platform/values/UTF8.h"

namespace vorlan {

namespace {

enum class Encoding { utf8, utf16LittleEndian, utf16BigEndian };

// How a file is encoded, and how long its byte order mark is.
struct Detected {
    Encoding encoding;
    std::size_t markLength = 0;
};

bool startsWith(std::string_view bytes, std::string_view mark) {
    return bytes.substr(0, mark.size()) == mark;
}

// Tables begin with ASCII, which has a zero in each unit of UTF-16.
Encoding encodingByZeros(std::string_view bytes) {
    const auto first = bytes.substr(0, 4);
    const auto isZeroAt = [first](std::size_t index) { return index < first.size() && first[index] == '\0'; };
    const int high = isZeroAt(0) + isZeroAt(2);
    const int low = isZeroAt(1) + isZeroAt(3);
    if (high > low) return Encoding::utf16BigEndian;
    return low > high ? Encoding::utf16LittleEndian : Encoding::utf8;
}

Detected detect(std::string_view bytes) {
    if (startsWith(bytes, "\xEF\xBB\xBF")) return {Encoding::utf8, 3};
    if (startsWith(bytes, "\xFF\xFE")) return {Encoding::utf16LittleEndian, 2};
    if (startsWith(bytes, "\xFE\xFF")) return {Encoding::utf16BigEndian, 2};
    return {encodingByZeros(bytes)};
}

[[noreturn]] void failBehind(std::string_view text, const char* message) {
    throw StringTableError(message, TextPositions(text).at(text.size()));
}

std::string fromUTF8(std::string_view bytes) {
    const auto length = utf8::wellFormedLength(bytes);
    if (length != bytes.size()) failBehind(bytes.substr(0, length), "ill-formed UTF-8");
    return std::string(bytes);
}

std::string fromUTF16(std::string_view bytes, Encoding encoding) {
    const std::size_t high = encoding == Encoding::utf16BigEndian ? 0 : 1;
    const auto unitAt = [&](std::size_t at) -> char32_t {
        if (at + 1 >= bytes.size()) return 0;
        const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(bytes[at + index]); };
        return static_cast<char32_t>(byte(high) << 8 | byte(1 - high));
    };
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t at = 0; at < bytes.size(); at += 2) {
        if (at + 1 == bytes.size()) failBehind(text, "ill-formed UTF-16: half a unit at the end");
        auto character = unitAt(at);
        if (const auto pair = surrogatePair(character, unitAt(at + 2))) {
            at += 2;
            character = *pair;
        }
        if (isSurrogate(character)) failBehind(text, "ill-formed UTF-16: half a surrogate pair");
        utf8::append(text, character);
    }
    return text;
}

} // namespace

std::string decodedText(std::span<const std::byte> bytes) {
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const auto [encoding, markLength] = detect(text);
    text.remove_prefix(markLength);
    return encoding == Encoding::utf8 ? fromUTF8(text) : fromUTF16(text, encoding);
}

TextPosition TextPositions::at(std::size_t offset) noexcept {
    if (offset < offset_) *this = TextPositions(text_);
    for (; offset_ < offset; ++offset_) {
        const char c = text_[offset_];
        const bool endsCRLF = c == '\n' && offset_ > 0 && text_[offset_ - 1] == '\r';
        if (endsCRLF) continue;
        if (c == '\n' || c == '\r') {
            position_ = {position_.line + 1, 1};
        } else if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) {
            ++position_.column;
        }
    }
    return position_;
}

} // namespace vorlan
