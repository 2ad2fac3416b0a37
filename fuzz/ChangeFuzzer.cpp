// SPDX-License-Identifier: Apache-2.0
// Any bytes of a journal are either passed over, or a change that is the same after it was written and read again.

#include "fuzz/Fuzzing.h"
#include "platform/defaults/Change.h"

#include <cstdint>
#include <span>

using namespace vorlan;

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
