// SPDX-License-Identifier: Apache-2.0
// Any bytes of a journal are either passed over, or a change that is the same after it was written and read again.

#include "fuzz/Fuzzing.h"
#include "fuzz/PropertyListMutator.h"
#include "platform/defaults/Change.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

using namespace vorlan;

namespace {

Data bytesOfChange(std::optional<Value> value) {
    return defaults::encodeChange("key", value);
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
    static const std::vector<Data> samples{
        bytesOfChange(std::nullopt), bytesOfChange(1),
        bytesOfChange(Value::Dictionary{{"a", Value::Array{1, "\xC3\xA9", Date(1), Data(20)}}})};
    return fuzzing::mutateList(data, size, maxSize, seed, samples);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto change = defaults::decodeChange(std::as_bytes(std::span(data, size)));
    if (!change) return 0;
    const auto bytes = defaults::encodeChange(change->key, change->value);
    const auto again = defaults::decodeChange(bytes);
    fuzzing::require(again.has_value(), "a change that was written can be read");
    fuzzing::require(again->key == change->key, "the key comes back as it was");
    fuzzing::require(again->value.has_value() == change->value.has_value(), "removals stay removals");
    // Values may hold NaNs, which equal nothing; what they are written as tells whether they are the same.
    auto value = again->value;
    fuzzing::require(defaults::encodeChange(again->key, value) == bytes, "the value comes back as it was");
    return 0;
}
