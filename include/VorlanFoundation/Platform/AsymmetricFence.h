// SPDX-License-Identifier: Apache-2.0
#pragma once

// Two fences that order a store before a later load, between a thread that does so all the time and one that
// does so seldom: the first pays nothing, the second a system call.
//
//     often:   announce.store(true);  lightFence();  if (stop.load()) ...
//     seldom:  stop.store(true);      heavyFence();  if (announce.load()) ...
//
// At least one of the two sees what the other stored. The heavy side is Linux's membarrier(2) in its private
// expedited form, which runs a full barrier on every processor that runs a thread of the process.

#include <VorlanFoundation/Platform/Export.h>

#include <atomic>

namespace vorlan {

namespace detail {
/// Whether the kernel lets the heavy side carry the cost alone; set once, before the first heavy fence.
VORLAN_EXPORT extern std::atomic<bool> heavyFenceIsComplete;
} // namespace detail

/// The side that is passed often. Costs a compiler barrier where the kernel has membarrier(2), else a full
/// fence.
inline void lightFence() noexcept {
    if (detail::heavyFenceIsComplete.load(std::memory_order_relaxed)) {
        std::atomic_signal_fence(std::memory_order_seq_cst);
    } else {
        std::atomic_thread_fence(std::memory_order_seq_cst);
    }
}

/// The side that is passed seldom; some microseconds.
VORLAN_EXPORT void heavyFence() noexcept;

} // namespace vorlan
