// SPDX-License-Identifier: Apache-2.0
#pragma once

// The kernel's clocks that are never set, in nanoseconds. Safe from any thread; none can fail.

#include <VorlanFoundation/Platform/Export.h>

#include <cstdint>

namespace vorlan::clocks {

/// Since some time before the machine started; stands still while it sleeps. CLOCK_MONOTONIC.
VORLAN_EXPORT std::uint64_t monotonic() noexcept;

/// The same at the kernel's last tick, some milliseconds ago at most, which costs less to ask. CLOCK_MONOTONIC_COARSE.
VORLAN_EXPORT std::uint64_t monotonicCoarse() noexcept;

/// Since the machine started, asleep or awake. CLOCK_BOOTTIME.
VORLAN_EXPORT std::uint64_t boottime() noexcept;

} // namespace vorlan::clocks
