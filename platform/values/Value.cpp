// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Value.h>

#include <VorlanFoundation/Platform/CheckedArithmetic.h>
#include <VorlanFoundation/Platform/Describe.h>

#include <array>
#include <cmath>

namespace vorlan {

namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

// What an element is that is not there. Never destroyed: it may be asked for at the very end of the process.
const Value& nothing() noexcept {
    static const auto* const value = new Value;
    return *value;
}

// The integer that a number is, if it is one.
template <class Integer>
std::optional<Integer> exactly(double number) noexcept {
    if (!checked::isInRange<Integer>(number) || std::trunc(number) != number) return std::nullopt;
    return static_cast<Integer>(number);
}

// The number that an integer is, if a number of 64 bits can say it.
template <class Integer>
std::optional<double> exactlyAsNumber(Integer integer) noexcept {
    const auto number = static_cast<double>(integer);
    return exactly<Integer>(number) == integer ? std::optional(number) : std::nullopt;
}

std::string hexOf(unsigned byte) {
    return {hexDigits[byte >> 4], hexDigits[byte & 0xF]};
}

std::string quoted(std::string_view text) {
    std::string out = "\"";
    for (const char c : detail::repairedText(text)) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += {'\\', c};
        } else if (byte < 0x20) {
            out += "\\u00" + hexOf(byte);
        } else {
            out += c;
        }
    }
    return out += '"';
}

std::string hexOf(const Data& data) {
    std::string out = "<";
    for (const auto byte : data) out += hexOf(std::to_integer<unsigned>(byte));
    return out += '>';
}

std::string readable(const Value& value);

std::string readable(const Value::Array& array) {
    std::string out = "[";
    for (const auto& element : array) {
        if (&element != array.data()) out += ", ";
        out += readable(element);
    }
    return out += ']';
}

std::string readable(const Value::Dictionary& dictionary) {
    std::string out = "{";
    for (const auto& [key, element] : dictionary) {
        if (out.size() > 1) out += ", ";
        out += quoted(key) + ": " + readable(element);
    }
    return out += '}';
}

std::string readable(const Value& value) {
    switch (value.kind()) {
    case Value::Kind::null: return "null";
    case Value::Kind::boolean: return describe(*value.as<bool>());
    case Value::Kind::integer:
        if (const auto integer = value.as<std::int64_t>()) return describe(*integer);
        return describe(*value.as<std::uint64_t>());
    case Value::Kind::number: return describe(*value.as<double>());
    case Value::Kind::text: return quoted(*value.text());
    case Value::Kind::data: return hexOf(*value.data());
    case Value::Kind::date: return describe(*value.as<Date>());
    case Value::Kind::array: return readable(*value.array());
    case Value::Kind::dictionary: return readable(*value.dictionary());
    }
    return {};
}

} // namespace

Value::Value() noexcept = default;
Value::Value(const Value&) = default;
Value::Value(Value&&) noexcept = default;
Value& Value::operator=(const Value&) = default;
Value& Value::operator=(Value&&) noexcept = default;
Value::~Value() = default;

Value::Kind Value::kind() const noexcept {
    // In the order of the content's types.
    constexpr std::array kinds{Kind::null, Kind::boolean, Kind::integer, Kind::integer, Kind::number,
                               Kind::text, Kind::data,    Kind::date,    Kind::array,   Kind::dictionary};
    return kinds[content_.index()];
}

const Value& Value::operator[](std::string_view key) const noexcept {
    if (dictionary() == nullptr) return nothing();
    const auto found = dictionary()->find(key);
    return found != dictionary()->end() ? found->second : nothing();
}

const Value& Value::operator[](std::size_t index) const noexcept {
    return array() != nullptr && index < array()->size() ? (*array())[index] : nothing();
}

std::string Value::description() const {
    return text() != nullptr ? detail::repairedText(*text()) : readable(*this);
}

bool operator==(const Value& a, const Value& b) {
    return a.content_ == b.content_;
}

std::optional<bool> Value::boolean() const noexcept {
    if (const auto* value = std::get_if<bool>(&content_)) return *value;
    const auto value = signedInteger();
    return value == 0 || value == 1 ? std::optional(*value == 1) : std::nullopt;
}

std::optional<std::int64_t> Value::signedInteger() const noexcept {
    if (const auto* value = std::get_if<std::int64_t>(&content_)) return *value;
    if (const auto* value = std::get_if<bool>(&content_)) return *value ? 1 : 0;
    if (const auto* value = std::get_if<double>(&content_)) return exactly<std::int64_t>(*value);
    return std::nullopt;
}

std::optional<std::uint64_t> Value::unsignedInteger() const noexcept {
    if (const auto* value = std::get_if<std::uint64_t>(&content_)) return *value;
    if (const auto* value = std::get_if<double>(&content_)) return exactly<std::uint64_t>(*value);
    const auto value = signedInteger();
    return value >= 0 ? std::optional(static_cast<std::uint64_t>(*value)) : std::nullopt;
}

std::optional<double> Value::number() const noexcept {
    if (const auto* value = std::get_if<double>(&content_)) return *value;
    if (const auto* value = std::get_if<std::uint64_t>(&content_)) return exactlyAsNumber(*value);
    const auto value = signedInteger();
    return value ? exactlyAsNumber(*value) : std::nullopt;
}

std::optional<float> Value::narrowed(double number) noexcept {
    constexpr double highest = std::numeric_limits<float>::max();
    if (std::isfinite(number) && std::abs(number) > highest) return std::nullopt;
    const auto narrow = static_cast<float>(number);
    const bool survives = std::isnan(number) || static_cast<double>(narrow) == number;
    return survives ? std::optional(narrow) : std::nullopt;
}

} // namespace vorlan
