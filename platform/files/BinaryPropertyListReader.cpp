// SPDX-License-Identifier: Apache-2.0
#include "platform/files/BinaryPropertyList.h"
#include "platform/files/PropertyList.h"
#include "platform/values/UTF8.h"

#include <VorlanFoundation/Platform/Describe.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <string>

namespace vorlan {

namespace {

using namespace bplist;

[[noreturn]] void refuse(const char* reason) {
    throw PropertyListError(reason);
}

template <class Word>
std::uint64_t wordOf(std::span<const std::byte> bytes) {
    Word word = 0;
    std::memcpy(&word, bytes.data(), sizeof word);
    if constexpr (std::endian::native == std::endian::big) return word;
    if constexpr (sizeof word == 2) return __builtin_bswap16(word);
    if constexpr (sizeof word == 4) return __builtin_bswap32(word);
    return __builtin_bswap64(word);
}

std::uint64_t numberOf(std::span<const std::byte> bytes) {
    switch (bytes.size()) {
    case 1: return std::to_integer<std::uint64_t>(bytes[0]);
    case 2: return wordOf<std::uint16_t>(bytes);
    case 4: return wordOf<std::uint32_t>(bytes);
    case 8: return wordOf<std::uint64_t>(bytes);
    default: break;
    }
    std::uint64_t number = 0;
    for (const auto byte : bytes) number = (number << 8) | std::to_integer<std::uint64_t>(byte);
    return number;
}

// Reads a number at a place of the trailer.
std::uint64_t field(std::span<const std::byte> end, std::size_t place, std::size_t size) {
    return numberOf(end.subspan(place, size));
}

class Reader {
public:
    Reader(std::span<const std::byte> bytes, std::size_t sourceSize) : bytes_(bytes) {
        if (bytes.size() < magic.size() + trailer::size ||
            !std::ranges::equal(bytes.first(magic.size()), std::as_bytes(std::span(magic))))
            refuse("it is no binary property list");
        verifyChecksum();
        const auto end = bytes.last(trailer::size);
        offsetSize_ = field(end, trailer::offsetSize, 1);
        referenceSize_ = field(end, trailer::referenceSize, 1);
        count_ = field(end, trailer::objectCount, 8);
        const auto tableOffset = field(end, trailer::tableOffset, 8);
        const auto tableEnd = bytes.size() - trailer::size;
        if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8 ||
            tableOffset < magic.size() || tableOffset > tableEnd ||
            count_ > (tableEnd - tableOffset) / offsetSize_)
            refuse("its trailer is damaged");
        objects_ = bytes.first(tableOffset);
        table_ = bytes.subspan(tableOffset, count_ * offsetSize_);
        // A value takes some thirty times the bytes that it has in the most compact of honest lists.
        constexpr std::size_t freeSize = 1 << 16;
        budget_ = 64 * std::max(sourceSize, freeSize);
    }

    Value read() { return readObject(field(bytes_.last(trailer::size), trailer::rootObject, 8), 1); }

private:
    // An object's first byte, taken apart, and what comes after it.
    struct Head {
        unsigned marker;
        unsigned detail;
        std::span<const std::byte> rest;
    };

    void verifyChecksum() const {
        const auto found = bytes_.last(trailer::size).first(trailer::checksumLength);
        const bool hasOne = std::ranges::any_of(found, [](std::byte byte) { return byte != std::byte{0}; });
        if (hasOne && !std::ranges::equal(found, checksum(bytes_))) refuse("its checksum is wrong");
    }

    Head headOf(std::uint64_t reference) const {
        if (reference >= count_) refuse("an object is missing");
        const auto offset = numberOf(table_.subspan(reference * offsetSize_, offsetSize_));
        if (offset >= objects_.size()) refuse("an object is outside of it");
        const auto first = std::to_integer<unsigned>(objects_[offset]);
        return {first >> 4, first & 0xF, objects_.subspan(offset + 1)};
    }

    Value readObject(std::uint64_t reference, int depth) {
        const auto head = headOf(reference);
        spend(sizeof(Value));
        switch (static_cast<Marker>(head.marker)) {
        case Marker::simple: return readSimple(head);
        case Marker::integer: return readInteger(head);
        case Marker::real: return readReal(head);
        case Marker::date:
            if (head.detail != 3) refuse("a date is of unknown form");
            return Date(std::bit_cast<double>(numberOf(take(head.rest, 8))));
        case Marker::data: {
            const auto bytes = contentOf(head, 1);
            return Data(bytes.begin(), bytes.end());
        }
        case Marker::ascii:
        case Marker::utf16: return readText(head);
        case Marker::uid:
            if (head.detail >= 8) refuse("a reference of an archiver is of unknown form");
            return Value::Dictionary{{"CF$UID", numberOf(take(head.rest, head.detail + 1))}};
        case Marker::array:
        case Marker::orderedSet:
        case Marker::set: return readArray(head, depth);
        case Marker::dictionary: return readDictionary(head, depth);
        }
        refuse("an object is of unknown kind");
    }

    static Value readSimple(const Head& head) {
        const auto byte = static_cast<std::byte>(head.detail);
        if (byte != falseObject && byte != trueObject) refuse("an object is of unknown kind");
        return byte == trueObject;
    }

    static Value readInteger(const Head& head) {
        if (head.detail < 4) {
            const auto number = numberOf(take(head.rest, std::size_t{1} << head.detail));
            if (head.detail == 3) return std::bit_cast<std::int64_t>(number);
            return number;
        }
        if (head.detail > 4) refuse("an integer has too many bits");
        const auto high = numberOf(take(head.rest, 8));
        const auto low = numberOf(take(head.rest.subspan(8), 8));
        const auto withSign = std::bit_cast<std::int64_t>(low);
        if (high == 0) return low;
        if (high != std::numeric_limits<std::uint64_t>::max() || withSign >= 0)
            refuse("an integer has too many bits");
        return withSign;
    }

    static Value readReal(const Head& head) {
        if (head.detail == 2)
            return std::bit_cast<float>(static_cast<std::uint32_t>(numberOf(take(head.rest, 4))));
        if (head.detail != 3) refuse("a number is of unknown form");
        return std::bit_cast<double>(numberOf(take(head.rest, 8)));
    }

    std::string readText(const Head& head) {
        const bool isWide = static_cast<Marker>(head.marker) == Marker::utf16;
        const auto bytes = contentOf(head, isWide ? 2 : 1);
        if (isWide) return textOfUnits(bytes);
        auto text = textFromData(bytes);
        return utf8::isASCII(text) ? text
                                   : detail::repairedText(text); // some writers put more than that here
    }

    // Halves of pairs that stand alone become U+FFFD.
    static std::string textOfUnits(std::span<const std::byte> bytes) {
        const auto unitAt = [&](std::size_t i) {
            return static_cast<char32_t>(numberOf(bytes.subspan(i, 2)));
        };
        std::string text;
        for (std::size_t i = 0; i < bytes.size(); i += 2) {
            char32_t character = unitAt(i);
            if (character >= 0xD800 && character < 0xE000) {
                const char32_t low = i + 2 < bytes.size() ? unitAt(i + 2) : 0;
                const bool isPair = character < 0xDC00 && low >= 0xDC00 && low < 0xE000;
                character = isPair ? 0x10000 + ((character - 0xD800) << 10) + (low - 0xDC00)
                                   : utf8::replacementCharacter;
                if (isPair) i += 2;
            }
            utf8::append(text, character);
        }
        return text;
    }

    Value readArray(const Head& head, int depth) {
        checkDepth(depth);
        const auto references = contentOf(head, referenceSize_);
        Value::Array array;
        array.reserve(references.size() / referenceSize_);
        for (std::size_t i = 0; i < references.size(); i += referenceSize_)
            array.push_back(readObject(numberOf(references.subspan(i, referenceSize_)), depth + 1));
        return array;
    }

    Value readDictionary(const Head& head, int depth) {
        checkDepth(depth);
        const auto references = contentOf(head, 2 * referenceSize_);
        const auto keys = references.first(references.size() / 2);
        const auto values = references.last(references.size() / 2);
        Value::Dictionary dictionary;
        for (std::size_t i = 0; i < keys.size(); i += referenceSize_) {
            const auto key = headOf(numberOf(keys.subspan(i, referenceSize_)));
            if (static_cast<Marker>(key.marker) != Marker::ascii &&
                static_cast<Marker>(key.marker) != Marker::utf16)
                refuse("a key is no text");
            // Our own writer sorts, and then each key belongs at the end.
            dictionary.emplace_hint(dictionary.end(), readText(key),
                                    readObject(numberOf(values.subspan(i, referenceSize_)), depth + 1));
        }
        return dictionary;
    }

    // What follows an object's first byte and length: as many pieces of a size as the length says.
    std::span<const std::byte> contentOf(const Head& head, std::size_t size) {
        std::uint64_t length = head.detail;
        auto rest = head.rest;
        if (head.detail == lengthFollows) {
            if (rest.empty()) refuse("an object ends too early");
            const auto first = std::to_integer<unsigned>(rest[0]);
            if (first >> 4 != static_cast<unsigned>(Marker::integer) || (first & 0xF) > 3)
                refuse("a length is damaged");
            const std::size_t lengthSize = std::size_t{1} << (first & 0xF);
            length = numberOf(take(rest.subspan(1), lengthSize));
            rest = rest.subspan(1 + lengthSize);
        }
        if (length > rest.size() / size) refuse("an object ends too early");
        spend(length * size);
        return rest.first(length * size);
    }

    static std::span<const std::byte> take(std::span<const std::byte> bytes, std::size_t size) {
        if (bytes.size() < size) refuse("an object ends too early");
        return bytes.first(size);
    }

    static void checkDepth(int depth) {
        if (depth > propertyListDepthLimit) refuse("it has too many levels");
    }

    void spend(std::size_t size) {
        if (size > budget_) refuse("it would become far larger than it is");
        budget_ -= size;
    }

    std::span<const std::byte> bytes_;
    std::span<const std::byte> objects_;
    std::span<const std::byte> table_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t count_ = 0;
    std::size_t budget_ = 0;
};

} // namespace

Value bplist::read(std::span<const std::byte> bytes, std::size_t sourceSize) {
    return Reader(bytes, sourceSize).read();
}

Value readBinaryPropertyList(std::span<const std::byte> bytes) {
    return bplist::read(bytes, bytes.size());
}

} // namespace vorlan
