// SPDX-License-Identifier: Apache-2.0
#include "platform/files/BinaryPropertyList.h"
#include "platform/files/PropertyList.h"
#include "platform/values/UTF8.h"

#include <algorithm>
#include <bit>
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
        // Enough for a change of one entry, which is what is written most often.
        objects_.reserve(4);
        out_.reserve(128);
        gather(root);
        referenceSize_ = bytesFor(objects_.size());
        append(magic);
        offsets_.reserve(objects_.size());
        for (const auto& object : objects_) {
            offsets_.push_back(out_.size());
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
        if (const auto* array = value.array()) {
            for (const auto& element : *array) objects_.push_back({nullptr, &element, depth});
        } else {
            for (const auto& entry : *value.dictionary()) objects_.push_back({&entry.first, nullptr, depth});
            for (const auto& entry : *value.dictionary()) objects_.push_back({nullptr, &entry.second, depth});
        }
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
            out_.insert(out_.end(), value.data()->begin(), value.data()->end());
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
        if (std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
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
        const std::size_t tableOffset = out_.size();
        const unsigned offsetSize = bytesFor(tableOffset);
        for (const auto offset : offsets_) appendNumber(offset, offsetSize);
        out_.resize(out_.size() + trailer::offsetSize);
        append(static_cast<std::byte>(offsetSize));
        append(static_cast<std::byte>(referenceSize_));
        appendNumber(objects_.size(), 8);
        appendNumber(0, 8);
        appendNumber(tableOffset, 8);
        const auto sum = checksum(out_);
        std::ranges::copy(sum, out_.end() - trailer::size);
    }

    static std::byte marker(Marker kind, unsigned detail) {
        return static_cast<std::byte>((static_cast<unsigned>(kind) << 4) | detail);
    }

    void append(std::byte byte) { out_.push_back(byte); }
    void append(std::string_view text) {
        const auto bytes = std::as_bytes(std::span(text));
        out_.insert(out_.end(), bytes.begin(), bytes.end());
    }
    void appendNumber(std::uint64_t number, unsigned size) {
        for (unsigned i = size; i-- > 0;) out_.push_back(static_cast<std::byte>(number >> (8 * i)));
    }

    Data out_;
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
