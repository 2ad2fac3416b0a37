// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the targets share.

#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// The engine's entry, which each target defines.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzzing {

/// Stops the process, so that the engine keeps the input, where something does not hold. Unlike `assert`, in every
/// build type.
inline void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "It does not hold that %s\n", what);
    std::abort();
}

} // namespace fuzzing
