// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/JSONWriter.h>

#include "platform/json/JSONWriterText.h"
#include "platform/values/DateText.h"
#include "platform/values/Epoch.h"

#include <VorlanFoundation/Platform/JSONFieldNames.h>

#include <cmath>
#include <cstdint>

namespace vorlan {

JSONWriter::JSONWriter(const JSONWriting& writing) : text_(std::make_unique<Text>(writing)) {}

JSONWriter::~JSONWriter() = default;

const JSONWriting& JSONWriter::writing() const noexcept {
    return text_->writing();
}

void JSONWriter::beginObject() {
    text_->beginContainer(true);
}

void JSONWriter::key(std::string_view name) {
    text_->writeName(name);
}

void JSONWriter::field(const detail::JSONFieldNames& names, std::size_t index) {
    text_->writePlainName(names.styled(writing().strategies.keys)[index]);
}

void JSONWriter::endObject() {
    text_->endContainer(true);
}

void JSONWriter::beginArray() {
    text_->beginContainer(false);
}

void JSONWriter::endArray() {
    text_->endContainer(false);
}

void JSONWriter::writeNull() {
    text_->writeLiteral("null");
}

void JSONWriter::writeBoolean(bool value) {
    text_->writeLiteral(value ? "true" : "false");
}

void JSONWriter::writeInteger(std::int64_t value) {
    text_->writeNumber(value);
}

void JSONWriter::writeUnsigned(std::uint64_t value) {
    text_->writeNumber(value);
}

void JSONWriter::writeNumber(double value) {
    text_->writeNumber(value);
}

void JSONWriter::writeFloat(float value) {
    text_->writeNumber(value);
}

void JSONWriter::writeText(std::string_view text) {
    text_->writeQuoted(text);
}

void JSONWriter::writeDate(Date date) {
    const double seconds = date.timeIntervalSinceReferenceDate();
    switch (writing().strategies.dates) {
    case JSONDates::deferredToDate: return writeNumber(seconds);
    case JSONDates::secondsSince1970: return writeNumber(seconds + secondsFrom1970To2001);
    // Rounded once.
    case JSONDates::millisecondsSince1970:
        return writeNumber(std::fma(seconds, 1000, secondsFrom1970To2001 * 1000));
    case JSONDates::iso8601: break;
    }
    const auto text = rfc3339FromDate(date);
    if (!text) text_->lose("the date is not in the years from 1 to 9999", JSONError::Kind::invalidValue);
    writeText(*text);
}

void JSONWriter::writeData(std::span<const std::byte> data) {
    if (writing().strategies.data == JSONBytes::base64) return text_->writeBase64(data);
    beginArray();
    for (const std::byte byte : data) writeUnsigned(std::to_integer<std::uint64_t>(byte));
    endArray();
}

void JSONWriter::writeValue(const Value& value) {
    switch (value.kind()) {
    case Value::Kind::null: return writeNull();
    case Value::Kind::boolean: return writeBoolean(*value.as<bool>());
    case Value::Kind::integer:
        if (const auto integer = value.as<std::int64_t>()) return writeInteger(*integer);
        return writeUnsigned(*value.as<std::uint64_t>());
    case Value::Kind::number: return writeNumber(*value.as<double>());
    case Value::Kind::text: return writeText(*value.text());
    case Value::Kind::data: return writeData(*value.data());
    case Value::Kind::date: return writeDate(*value.as<Date>());
    case Value::Kind::dictionary: return writeValue(*value.dictionary());
    case Value::Kind::array: break;
    }
    beginArray();
    for (const Value& element : *value.array()) writeValue(element);
    endArray();
}

void JSONWriter::writeValue(const Value::Dictionary& dictionary) {
    beginObject();
    for (const auto& [name, value] : dictionary) {
        key(name);
        writeValue(value);
    }
    endObject();
}

Data JSONWriter::takeData() && {
    return dataFromText(text_->take());
}

std::string JSONWriter::takeText() && {
    return std::string(text_->take());
}

void JSONWriter::fail(const std::string& message, JSONError::Kind kind) const {
    text_->fail(message, kind);
}

} // namespace vorlan
