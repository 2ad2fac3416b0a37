// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/support/Allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local constinit std::size_t allocations = 0;

} // namespace

// Replaced for the whole process. The array and nothrow forms of the standard library come here as well; the
// forms for over-aligned types do not, and nothing that is measured has such a type.
void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size > 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace vorlan::benchmarks {

std::size_t allocationCount() {
    return allocations;
}

} // namespace vorlan::benchmarks
