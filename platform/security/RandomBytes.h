// SPDX-License-Identifier: Apache-2.0
#pragma once

// Bytes that nobody can guess.

#include <VorlanFoundation/Platform/FatalError.h>

#include <openssl/rand.h>

#include <cstddef>
#include <span>

namespace vorlan::security {

/// Fills bytes at random. Stops the process when the system has no random numbers: nothing may be sealed then.
inline void fillRandomly(std::span<std::byte> bytes) {
    if (RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(bytes.size())) != 1)
        fatalError("the system gives no random numbers", "VorlanFoundation/Keychain");
}

} // namespace vorlan::security
