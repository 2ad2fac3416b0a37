// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/JSONSerialization.h>

#include "platform/values/UTF8.h"

#include <VorlanFoundation/Platform/JSONReader.h>
#include <VorlanFoundation/Platform/JSONWriter.h>

#include <algorithm>
#include <cmath>

namespace vorlan {
namespace {

constexpr auto maximumDepth = JSONWriting().maximumDepth;

bool isContainer(Value::Kind kind) {
    return kind == Value::Kind::array || kind == Value::Kind::dictionary;
}

bool isValid(const Value& value, std::size_t depth);

// `depth` is how many arrays and dictionaries may still be entered.
bool isValid(const Value::Dictionary& dictionary, std::size_t depth) {
    return depth > 0 && std::ranges::all_of(dictionary, [&](const auto& entry) {
               return utf8::isWellFormed(entry.first) && isValid(entry.second, depth - 1);
           });
}

bool isValid(const Value::Array& array, std::size_t depth) {
    return depth > 0 &&
           std::ranges::all_of(array, [&](const Value& value) { return isValid(value, depth - 1); });
}

bool isValid(const Value& value, std::size_t depth) {
    switch (value.kind()) {
    case Value::Kind::date:
    case Value::Kind::data: return false;
    case Value::Kind::number: return std::isfinite(*value.as<double>());
    case Value::Kind::text: return utf8::isWellFormed(*value.text());
    case Value::Kind::array: return isValid(*value.array(), depth);
    case Value::Kind::dictionary: return isValid(*value.dictionary(), depth);
    default: return true;
    }
}

void write(const Value& value, JSONWriter& writer);

void write(const Value::Array& array, JSONWriter& writer) {
    writer.beginArray();
    for (const Value& element : array) write(element, writer);
    writer.endArray();
}

void write(const Value::Dictionary& dictionary, JSONWriter& writer) {
    writer.beginObject();
    for (const auto& [key, element] : dictionary) {
        writer.key(key);
        write(element, writer);
    }
    writer.endObject();
}

void write(const Value& value, JSONWriter& writer) {
    switch (value.kind()) {
    case Value::Kind::date: writer.fail("JSON has no dates", JSONError::Kind::invalidValue);
    case Value::Kind::data: writer.fail("JSON has no data", JSONError::Kind::invalidValue);
    case Value::Kind::array: return write(*value.array(), writer);
    case Value::Kind::dictionary: return write(*value.dictionary(), writer);
    default: writer.writeValue(value);
    }
}

} // namespace

bool JSONSerialization::isValidJSONObject(const Value& object) noexcept {
    return isContainer(object.kind()) && isValid(object, maximumDepth);
}

bool JSONSerialization::isValidJSONObject(const Value::Dictionary& object) noexcept {
    return isValid(object, maximumDepth);
}

Data JSONSerialization::data(const Value& object, JSONWritingOptions options) {
    JSONWriter writer({.prettyPrinted = options.prettyPrinted});
    if (!options.fragmentsAllowed && !isContainer(object.kind()))
        writer.fail("expected an array or a dictionary", JSONError::Kind::invalidValue);
    write(object, writer);
    return std::move(writer).takeData();
}

Data JSONSerialization::data(const Value::Dictionary& object, JSONWritingOptions options) {
    JSONWriter writer({.prettyPrinted = options.prettyPrinted});
    write(object, writer);
    return std::move(writer).takeData();
}

Value JSONSerialization::jsonObject(std::span<const std::byte> data, JSONReadingOptions options) {
    JSONReader reader({reinterpret_cast<const char*>(data.data()), data.size()});
    auto object = reader.readValue();
    reader.finish();
    if (!options.fragmentsAllowed && !isContainer(object.kind()))
        reader.fail("expected an array or an object", JSONError::Kind::typeMismatch);
    return object;
}

} // namespace vorlan
