// SPDX-License-Identifier: Apache-2.0
// Any bytes are either refused, or what a keychain would have written for what was read: as a keyring's secret, as packed
// parts, as a reference.

#include "fuzz/Fuzzing.h"
#include "platform/security/ItemAttributes.h"
#include "platform/security/StatusError.h"
#include "platform/security/embedded/Sealing.h"
#include "platform/security/secretservice/Failure.h"
#include "platform/security/secretservice/ItemSecret.h"

#include <algorithm>
#include <cstdint>
#include <span>

using namespace vorlan;
using namespace vorlan::security;

namespace {

void trySecret(std::span<const std::byte> bytes) {
    const auto text = textFromData(bytes);
    try {
        const auto value = secretservice::valueInSecret(text);
        const secretservice::SecretText again(value);
        fuzzing::require(secretservice::valueInSecret(again.text()) == value, "a value comes back as it was");
    } catch (const secretservice::Failure& failure) {
        fuzzing::require(failure.status() == errSecDecode, "what is no secret is damaged");
    }
}

void tryParts(std::span<const std::byte> bytes) {
    embedded::Unpacker parts(bytes);
    embedded::Packer again;
    try {
        while (again.bytes().size() < bytes.size()) again.add(parts.next());
        fuzzing::require(std::ranges::equal(again.bytes(), bytes), "parts are packed as they were");
    } catch (const StatusError& error) {
        fuzzing::require(error.status() == errSecDecode, "what is not packed is damaged");
    }
}

void tryReference(std::span<const std::byte> bytes) {
    const Data data(bytes.begin(), bytes.end());
    if (const auto reference = referenceFrom(data))
        fuzzing::require(bytesOf(*reference) == data, "a reference has one form");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto bytes = std::as_bytes(std::span(data, size));
    trySecret(bytes);
    tryParts(bytes);
    tryReference(bytes);
    return 0;
}
