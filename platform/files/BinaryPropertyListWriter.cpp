// SPDX-License-Identifier: Apache-2.0
#include "platform/files/BinaryPropertyList.h"
#include "platform/files/PropertyList.h"
#include "platform/values/UTF8.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace vorlan {

namespace {

using namespace bplist;

// How many bytes an unsigned number needs, of those that the form allows.
unsigned bytesFor(std::uint64_t number) {
    if (number <= std::numeric_limits<std::uint8_t>::max()) return 1;
    if (number <= std::numeric_limits<std::uint16_t>::max()) return 2;
    return number <= std::numeric_limits<std::uint32_t>::max() ? 4 : 8;
}

// Objects are written level by level, so that those in one array or dictionary have numbers in a row, and no table
// of numbers is needed.
class Writer {
public:
    Data write(const Value& root) {
        objects_.reserve(4); // enough for a change of one entry, which is what is written most often
        gather(root);
        referenceSize_ = bytesFor(objects_.size());
        out_.resize(largestSize());
        append(magic);
        offsets_.reserve(objects_.size());
        for (const auto& object : objects_) {
            offsets_.push_back(size_);
            if (object.key != nullptr) {
                writeText(*object.key);
            } else {
                writeValue(*object.value);
            }
        }
        writeTrailer();
        return std::move(out_);
    }

private:
    struct Object {
        const std::string* key; ///< Or null, and then it is
        const Value* value;
        int depth;
    };

    void gather(const Value& root) {
        objects_.push_back({nullptr, &root, 1});
        for (std::size_t i = 0; i < objects_.size(); ++i) {
            const auto [key, value, depth] = objects_[i];
            if (key != nullptr || (value->array() == nullptr && value->dictionary() == nullptr)) continue;
            if (depth > propertyListDepthLimit)
                throw std::invalid_argument("the value has too many levels for a property list");
            gatherElements(*value, depth + 1);
        }
    }

    void gatherElements(const Value& value, int depth) {
        const auto* array = value.array();
        reserveFor(array != nullptr ? array->size() : 2 * value.dictionary()->size());
        if (array != nullptr) {
            for (const auto& element : *array) objects_.push_back({nullptr, &element, depth});
        } else {
            for (const auto& entry : *value.dictionary()) objects_.push_back({&entry.first, nullptr, depth});
            for (const auto& entry : *value.dictionary()) objects_.push_back({nullptr, &entry.second, depth});
        }
    }

    void reserveFor(std::size_t count) {
        const auto needed = objects_.size() + count;
        if (needed > objects_.capacity()) objects_.reserve(std::max(needed, 2 * objects_.capacity()));
    }

    // No list of these objects is larger: so the rest need not look whether there is room.
    std::size_t largestSize() const {
        constexpr std::size_t ends = magic.size() + trailer::size + sizeof(std::uint64_t);
        constexpr std::size_t head = 18;  // the largest integer, or a first byte and a length
        constexpr std::size_t offset = 8; // in the table
        std::size_t content = 0;
        for (const auto& [key, value, depth] : objects_) {
            const auto* text = key != nullptr ? key : value->text();
            if (text != nullptr) content += 2 * text->size();
            if (value != nullptr && value->data() != nullptr) content += value->data()->size();
        }
        return ends + content + objects_.size() * (head + offset + referenceSize_);
    }

    void writeValue(const Value& value) {
        switch (value.kind()) {
        case Value::Kind::null: throw std::invalid_argument("a null is no part of a property list");
        case Value::Kind::boolean: append(*value.as<bool>() ? trueObject : falseObject); break;
        case Value::Kind::integer: writeInteger(value); break;
        case Value::Kind::number: writeDouble(Marker::real, *value.as<double>()); break;
        case Value::Kind::date:
            writeDouble(Marker::date, value.as<Date>()->timeIntervalSinceReferenceDate());
            break;
        case Value::Kind::text: writeText(*value.text()); break;
        case Value::Kind::data:
            writeStart(Marker::data, value.data()->size());
            append(*value.data());
            break;
        case Value::Kind::array:
            writeStart(Marker::array, value.array()->size());
            writeReferences(value.array()->size());
            break;
        case Value::Kind::dictionary:
            writeStart(Marker::dictionary, value.dictionary()->size());
            writeReferences(2 * value.dictionary()->size());
            break;
        }
    }

    // Integers of up to four bytes have no sign, those of eight have one, and sixteen hold the rest.
    void writeInteger(const Value& value) {
        const auto integer = value.as<std::int64_t>();
        if (!integer) {
            append(marker(Marker::integer, 4));
            appendNumber(0, 8);
            appendNumber(*value.as<std::uint64_t>(), 8);
            return;
        }
        const auto bits = static_cast<std::uint64_t>(*integer);
        writeInteger(bits, *integer < 0 ? 8 : bytesFor(bits));
    }

    void writeInteger(std::uint64_t bits, unsigned size) {
        append(marker(Marker::integer, static_cast<unsigned>(std::countr_zero(size))));
        appendNumber(bits, size);
    }

    void writeDouble(Marker kind, double number) {
        append(marker(kind, 3));
        appendNumber(std::bit_cast<std::uint64_t>(number), 8);
    }

    void writeText(const std::string& text) {
        if (utf8::isASCII(text)) {
            writeStart(Marker::ascii, text.size());
            append(text);
            return;
        }
        units_.clear();
        for (std::string_view rest = text; !rest.empty();) {
            const auto first = utf8::firstCharacter(rest);
            if (!first.isWellFormed) throw std::invalid_argument("a text is not well-formed UTF-8");
            appendUnits(first.character);
            rest.remove_prefix(first.length);
        }
        writeStart(Marker::utf16, units_.size());
        for (const auto unit : units_) appendNumber(unit, 2);
    }

    void appendUnits(char32_t character) {
        if (character < 0x10000) {
            units_.push_back(static_cast<char16_t>(character));
            return;
        }
        units_.push_back(static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)));
        units_.push_back(static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF)));
    }

    void writeReferences(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) appendNumber(nextReference_++, referenceSize_);
    }

    void writeStart(Marker kind, std::size_t length) {
        if (length < lengthFollows) {
            append(marker(kind, static_cast<unsigned>(length)));
            return;
        }
        append(marker(kind, lengthFollows));
        writeInteger(length, bytesFor(length));
    }

    void writeTrailer() {
        const std::size_t tableOffset = size_;
        const unsigned offsetSize = bytesFor(tableOffset);
        for (const auto offset : offsets_) appendNumber(offset, offsetSize);
        appendNumber(0, trailer::offsetSize);
        append(static_cast<std::byte>(offsetSize));
        append(static_cast<std::byte>(referenceSize_));
        appendNumber(objects_.size(), 8);
        appendNumber(0, 8);
        appendNumber(tableOffset, 8);
        out_.resize(size_);
        std::ranges::copy(checksum(out_), out_.end() - trailer::size);
    }

    static std::byte marker(Marker kind, unsigned detail) {
        return static_cast<std::byte>((static_cast<unsigned>(kind) << 4) | detail);
    }

    void append(std::byte byte) { out_[size_++] = byte; }
    void append(std::string_view text) { append(std::as_bytes(std::span(text))); }
    void append(std::span<const std::byte> bytes) {
        std::ranges::copy(bytes, out_.begin() + static_cast<std::ptrdiff_t>(size_));
        size_ += bytes.size();
    }

    // Writes eight bytes, of which the first are the number, and the next to come overwrite the others.
    void appendNumber(std::uint64_t number, unsigned size) {
        auto word = number << (64 - 8 * size);
        if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap64(word);
        std::memcpy(out_.data() + size_, &word, sizeof word);
        size_ += size;
    }

    Data out_;             ///< Larger than the list, until that is complete.
    std::size_t size_ = 0; ///< Of the list so far.
    std::vector<Object> objects_;
    std::vector<std::size_t> offsets_;
    std::vector<char16_t> units_; ///< Of the text that is being written.
    unsigned referenceSize_ = 0;
    std::uint64_t nextReference_ = 1;
};

} // namespace

Data writeBinaryPropertyList(const Value& value) {
    return Writer().write(value);
}

} // namespace vorlan
