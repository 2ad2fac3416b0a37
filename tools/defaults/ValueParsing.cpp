// SPDX-License-Identifier: Apache-2.0
#include "tools/defaults/ValueParsing.h"

#include "tools/defaults/DateText.h"
#include "tools/support/Program.h"
#include "tools/support/Quoting.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <system_error>
#include <utility>

namespace tool {

using vorlan::Value;

namespace {

constexpr std::array<std::pair<std::string_view, ValueType>, 6> options{{{"-bool", ValueType::boolean},
                                                                         {"-int", ValueType::integer},
                                                                         {"-float", ValueType::number},
                                                                         {"-string", ValueType::text},
                                                                         {"-date", ValueType::date},
                                                                         {"-data", ValueType::data}}};

// The number that the whole text is.
template <class Number, class... Base>
std::optional<Number> parseNumber(std::string_view text, Base... base) {
    Number number{};
    const auto* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number, base...);
    if (parsed.ec != std::errc() || parsed.ptr != end) return std::nullopt;
    return number;
}

std::optional<Value> parseBoolean(std::string_view text) {
    if (text == "true" || text == "yes" || text == "1") return true;
    if (text == "false" || text == "no" || text == "0") return false;
    return std::nullopt;
}

std::optional<Value> parseInteger(std::string_view text) {
    if (const auto integer = parseNumber<std::int64_t>(text)) return *integer;
    if (const auto integer = parseNumber<std::uint64_t>(text)) return *integer;
    return std::nullopt;
}

std::optional<Value> parseData(std::string_view text) {
    if (text.size() % 2 != 0) return std::nullopt;
    vorlan::Data data;
    data.reserve(text.size() / 2);
    for (; !text.empty(); text.remove_prefix(2)) {
        const auto byte = parseNumber<std::uint8_t>(text.substr(0, 2), 16);
        if (!byte) return std::nullopt;
        data.push_back(static_cast<std::byte>(*byte));
    }
    return data;
}

std::optional<Value> parse(ValueType type, std::string_view text) {
    switch (type) {
    case ValueType::boolean: return parseBoolean(text);
    case ValueType::integer: return parseInteger(text);
    case ValueType::number: return parseNumber<double>(text);
    case ValueType::text: return text;
    case ValueType::date: return parseDate(text);
    case ValueType::data: return parseData(text);
    }
    return std::nullopt;
}

const char* demandOf(ValueType type) {
    switch (type) {
    case ValueType::boolean: return "none of true, false, yes, no, 1 and 0";
    case ValueType::integer: return "no integer of 64 bits";
    case ValueType::number: return "no number in the range of 64 bits";
    case ValueType::text: return "no text";
    case ValueType::date: return "no date like 2026-03-05 or 2026-03-05T14:07:09Z";
    case ValueType::data: return "no row of hexadecimal digits, two a byte";
    }
    return "no value";
}

} // namespace

std::optional<ValueType> valueTypeOf(std::string_view option) {
    const auto* const found =
        std::ranges::find(options, option, &std::pair<std::string_view, ValueType>::first);
    return found != options.end() ? std::optional(found->second) : std::nullopt;
}

Value parseValue(ValueType type, std::string_view text) {
    if (auto value = parse(type, text)) return *std::move(value);
    throw UsageError(inQuotes(text) + " is " + demandOf(type));
}

} // namespace tool
