// SPDX-License-Identifier: Apache-2.0
#pragma once

// Counts what a thread allocates through operator new, also inside shared libraries.

#include <cstddef>

namespace vorlan::benchmarks {

/// How many allocations the calling thread has made since it started.
std::size_t allocationCount();

} // namespace vorlan::benchmarks
