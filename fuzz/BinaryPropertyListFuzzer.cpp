// SPDX-License-Identifier: Apache-2.0
// Any bytes are either refused, or a value that is the same after it was written and read again.

#include "fuzz/Fuzzing.h"
#include "fuzz/PropertyListMutator.h"
#include "platform/files/PropertyList.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

using namespace vorlan;

namespace {

std::optional<Value> read(std::span<const std::byte> bytes) try {
    return readBinaryPropertyList(bytes);
} catch (const PropertyListError&) {
    return std::nullopt;
}

bool isSame(const Value& a, const Value& b);

bool isSame(const Value::Array& a, const Value::Array& b) {
    return std::ranges::equal(a, b, [](const Value& one, const Value& other) { return isSame(one, other); });
}

bool isSame(const Value::Dictionary& a, const Value::Dictionary& b) {
    return std::ranges::equal(a, b, [](const auto& one, const auto& other) {
        return one.first == other.first && isSame(one.second, other.second);
    });
}

bool isSameBits(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

// As equal, but for numbers, which have to be the same bit by bit: a NaN equals nothing.
bool isSame(const Value& a, const Value& b) {
    if (a.kind() != b.kind()) return false;
    switch (a.kind()) {
    case Value::Kind::number: return isSameBits(*a.as<double>(), *b.as<double>());
    case Value::Kind::date:
        return isSameBits(a.as<Date>()->timeIntervalSinceReferenceDate(),
                          b.as<Date>()->timeIntervalSinceReferenceDate());
    case Value::Kind::array: return isSame(*a.array(), *b.array());
    case Value::Kind::dictionary: return isSame(*a.dictionary(), *b.dictionary());
    default: return a == b;
    }
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
    static const std::vector<Data> samples{
        writeBinaryPropertyList("text"),
        writeBinaryPropertyList(Value::Array{true, 1, 300, -1, ~std::uint64_t{0}, 0.5, Date(1), Data(3)}),
        writeBinaryPropertyList(Value::Dictionary{{"a", Value::Array{1, "\xC3\xA9\xF0\x9F\x98\x80"}},
                                                  {"\xC3\xA9", Value::Dictionary{{"b", Value::Array()}}},
                                                  {"long", std::string(20, 'x')}})};
    return fuzzing::mutateList(data, size, maxSize, seed, samples);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto value = read(std::as_bytes(std::span(data, size)));
    if (!value) return 0;
    const auto again = read(writeBinaryPropertyList(*value));
    fuzzing::require(again.has_value(), "what was written can be read");
    fuzzing::require(isSame(*value, *again), "what was written comes back as it was");
    return 0;
}
