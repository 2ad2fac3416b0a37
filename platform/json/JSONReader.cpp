// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/JSONReader.h>

#include "platform/json/JSONReaderText.h"
#include "platform/values/Base64.h"
#include "platform/values/DateText.h"
#include "platform/values/Epoch.h"

#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/JSONFieldNames.h>

#include <algorithm>
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace vorlan {
namespace {

// As it stands in messages.
std::string shortened(std::string_view text) {
    constexpr std::size_t most = 40;
    if (text.size() <= most) return std::string(text);
    return describe(text.substr(0, most)) + "…";
}

std::optional<std::int64_t> signedInteger(const json::Number& number) {
    constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    const auto magnitude = json::wholeMagnitude(number);
    if (!magnitude || *magnitude > largest + (number.isNegative ? 1 : 0)) return std::nullopt;
    return static_cast<std::int64_t>(number.isNegative ? std::uint64_t{0} - *magnitude : *magnitude);
}

std::optional<std::uint64_t> unsignedInteger(const json::Number& number) {
    const auto magnitude = json::wholeMagnitude(number);
    return number.isNegative && magnitude != 0U ? std::nullopt : magnitude;
}

// The same of short numbers: these have at most 19 digits, which fit into 64 bits without a sign.
std::optional<std::int64_t> shortInteger(const json::ShortNumber& number) {
    constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (number.fraction > 0 || number.digits > largest) return std::nullopt;
    const auto magnitude = static_cast<std::int64_t>(number.digits);
    return number.isNegative ? -magnitude : magnitude;
}

std::optional<std::uint64_t> shortUnsigned(const json::ShortNumber& number) {
    return number.fraction > 0 || number.isNegative ? std::nullopt : std::optional(number.digits);
}

std::optional<double> shortDouble(const json::ShortNumber& number) {
    return json::nearestDouble(number);
}

std::string noInteger(const json::Number& number, std::string_view sign) {
    const auto text = "the number " + shortened(number.text());
    return json::isWhole(number) ? text + " does not fit into 64 bits " + std::string(sign) + " a sign"
                                 : text + " is not whole";
}

template <class T>
std::optional<T> nonFinite(std::string_view text, const JSONNonFinite& texts) {
    if (text == texts.positiveInfinity) return std::numeric_limits<T>::infinity();
    if (text == texts.negativeInfinity) return -std::numeric_limits<T>::infinity();
    if (text == texts.nan) return std::numeric_limits<T>::quiet_NaN();
    return std::nullopt;
}

// A number of a type, whose `nearest` is the one that is nearest to what is written. (Readers' texts are known to readers
// only.)
template <class T, class Text>
T floating(Text& text, std::optional<T> (*nearest)(const json::Number&)) {
    const auto& texts = text.reading().strategies.nonFinite;
    if (texts && text.first() == '"') {
        if (const auto value = nonFinite<T>(text.takeText(), *texts)) return *value;
        text.fail(JSONError::Kind::typeMismatch, "expected a number, found a string");
    }
    const auto number = text.takeNumber();
    if (const auto value = nearest(number)) return *value;
    text.fail(JSONError::Kind::outOfRange, "the number " + shortened(number.text()) + " is too large for " +
                                               std::to_string(sizeof(T) * 8) + " bits");
}

template <class Text>
Value numberOf(Text& text) {
    const auto quick = [](const json::ShortNumber& number) -> std::optional<Value> {
        if (number.fraction > 0) return json::nearestDouble(number);
        // An integer has no -0.
        if (number.isNegative && number.digits == 0) return Value(-0.0);
        return shortInteger(number);
    };
    if (auto value = text.takeShortNumber(quick)) return *std::move(value);
    const auto number = text.takeNumber();
    if (const auto value = number.isInteger ? signedInteger(number) : std::nullopt) return *value;
    if (const auto value = number.isInteger ? unsignedInteger(number) : std::nullopt) return *value;
    if (const auto value = json::nearestDouble(number)) return *value;
    text.fail(JSONError::Kind::outOfRange,
              "the number " + shortened(number.text()) + " is too large for 64 bits");
}

// Where a name is among others, which are looked through from `from` on and then from the first; their number where it is
// none of them.
std::size_t placeOf(std::string_view name, std::span<const std::string_view> names, std::size_t from) {
    const auto start = names.begin() + static_cast<std::ptrdiff_t>(std::min(from, names.size()));
    auto found = std::find(start, names.end(), name);
    if (found != names.end()) return static_cast<std::size_t>(found - names.begin());
    found = std::find(names.begin(), start, name);
    return found == start ? names.size() : static_cast<std::size_t>(found - names.begin());
}

// Arrays and dictionaries that are being read, each within the one before. They are not kept by recursion, as there may be
// more of them than a thread's stack has room for.
using OpenValues = std::vector<Value*>;

// Reads what is next, up to the end of what has one at once.
template <class Text>
void readOne(Text& text, Value& value, OpenValues& open) {
    using Kind = JSONReader::Kind;
    switch (const auto kind = text.kind()) {
    case Kind::object:
    case Kind::array:
        text.enter(kind);
        value = kind == Kind::array ? Value(Value::Array()) : Value(Value::Dictionary());
        open.push_back(&value);
        return;
    case Kind::text: value = Value(text.takeText()); return;
    case Kind::number: value = numberOf(text); return;
    case Kind::boolean: value = Value(text.takeBoolean()); return;
    case Kind::null:
        text.takeLiteral("null");
        value = Value();
        return;
    }
}

// The place of the next element of what is being read.
template <class Text>
Value* nextPlace(Text& text, OpenValues& open) {
    for (; !open.empty(); open.pop_back()) {
        if (auto* const array = open.back()->array()) {
            if (text.reachElement()) return &array->emplace_back();
        } else if (text.reachMember()) {
            auto* const dictionary = open.back()->dictionary();
            // Keys are often sorted.
            return &dictionary->try_emplace(dictionary->end(), std::string(text.takeKey()))->second;
        }
    }
    return nullptr;
}

} // namespace

JSONReader::JSONReader(std::string_view text, const JSONReading& reading) : text_(Text::take()) {
    text_->begin(text, reading);
}

JSONReader::~JSONReader() {
    Text::giveBack(std::move(text_));
}

const JSONReading& JSONReader::reading() const noexcept {
    return text_->reading();
}

JSONReader::Kind JSONReader::nextKind() {
    return text_->kind();
}

bool JSONReader::readNull() {
    if (text_->first() != 'n') return false;
    text_->takeLiteral("null");
    return true;
}

bool JSONReader::readBoolean() {
    return text_->takeBoolean();
}

std::int64_t JSONReader::readInteger() {
    if (const auto value = text_->takeShortNumber(shortInteger)) return *value;
    const auto number = text_->takeNumber();
    if (const auto value = signedInteger(number)) return *value;
    text_->fail(JSONError::Kind::outOfRange, noInteger(number, "with"));
}

std::uint64_t JSONReader::readUnsigned() {
    if (const auto value = text_->takeShortNumber(shortUnsigned)) return *value;
    const auto number = text_->takeNumber();
    if (const auto value = unsignedInteger(number)) return *value;
    text_->fail(JSONError::Kind::outOfRange, noInteger(number, "without"));
}

double JSONReader::readNumber() {
    if (const auto value = text_->takeShortNumber(shortDouble)) return *value;
    return floating<double>(*text_, json::nearestDouble);
}

float JSONReader::readFloat() {
    return floating<float>(*text_, json::nearestFloat);
}

std::string_view JSONReader::readText() {
    return text_->takeText();
}

Date JSONReader::readDate() {
    switch (reading().strategies.dates) {
    case JSONDates::secondsSince1970: return Date(readNumber() - secondsFrom1970To2001);
    case JSONDates::millisecondsSince1970: return Date(readNumber() / 1000 - secondsFrom1970To2001);
    case JSONDates::iso8601: {
        const auto text = readText();
        if (const auto date = dateFromRFC3339(text)) return *date;
        text_->fail(JSONError::Kind::invalidValue, "\"" + shortened(text) + "\" is no date as in RFC 3339");
    }
    default: return Date(readNumber());
    }
}

Data JSONReader::readData() {
    if (reading().strategies.data == JSONBytes::base64) {
        if (auto data = dataFromBase64(readText())) return *std::move(data);
        text_->fail(JSONError::Kind::invalidValue, "the string is not in base64");
    }
    Data data;
    enterArray();
    while (nextElement()) {
        const auto byte = unsignedInteger(text_->takeNumber());
        if (!byte || *byte > 255)
            text_->fail(JSONError::Kind::outOfRange, "a byte is a number from 0 to 255");
        data.push_back(static_cast<std::byte>(*byte));
    }
    return data;
}

Value JSONReader::readValue() {
    Value value;
    OpenValues open;
    for (Value* place = &value; place != nullptr; place = nextPlace(*text_, open))
        readOne(*text_, *place, open);
    return value;
}

void JSONReader::enterObject() {
    text_->enter(Kind::object);
}

std::optional<std::string_view> JSONReader::nextKey() {
    if (!text_->reachMember()) return std::nullopt;
    return text_->takeKey();
}

void JSONReader::enterArray() {
    text_->enter(Kind::array);
}

bool JSONReader::nextElement() {
    return text_->reachElement();
}

void JSONReader::skip() {
    text_->skip();
}

void JSONReader::finish() {
    text_->finish();
}

void JSONReader::fail(const std::string& message, JSONError::Kind kind) const {
    text_->fail(kind, message);
}

std::size_t JSONReader::nextField(const detail::JSONFieldNames& names, std::size_t expected) {
    const auto list = names.styled(text_->reading().strategies.keys);
    while (text_->reachMember()) {
        if (expected < list.size() && text_->takeKeyIf(list[expected])) return expected;
        if (const auto found = placeOf(text_->takeKey(), list, expected); found < list.size()) return found;
        if (text_->reading().unknownMembers == JSONUnknownMembers::refuse)
            text_->fail(JSONError::Kind::unknownMember, "is not a member of the type");
    }
    return list.size();
}

void JSONReader::failForMissing(const detail::JSONFieldNames& names, std::size_t index) const {
    text_->failForMissing(names.styled(text_->reading().strategies.keys)[index]);
}

} // namespace vorlan
