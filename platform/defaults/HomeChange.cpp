// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/HomeChange.h>

#include "platform/defaults/DefaultsDomain.h"

#include <atomic>

namespace vorlan::detail {

namespace {

std::atomic<std::uint64_t> generation = 0;

} // namespace

void changeHome(FunctionRef<void()> change) {
    for (const auto& domain : DefaultsDomain::all()) domain->leaveHome();
    change();
    generation.fetch_add(1, std::memory_order_relaxed);
    for (const auto& domain : DefaultsDomain::all()) domain->tellAll();
}

std::uint64_t homeGeneration() noexcept {
    return generation.load(std::memory_order_relaxed);
}

} // namespace vorlan::detail
