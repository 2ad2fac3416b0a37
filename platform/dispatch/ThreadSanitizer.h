// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tells ThreadSanitizer the order that queues guarantee.
//
// The engine orders work by means that the tool cannot see (it is not instrumented, and relies on dependency
// order), so each hand-over is stated here: `release` as the last act before it, `acquire` as the first after
// it. Empty in every other build.

#if defined(__SANITIZE_THREAD__)
#define VORLAN_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define VORLAN_THREAD_SANITIZER 1
#endif
#endif

#if defined(VORLAN_THREAD_SANITIZER)
#include <sanitizer/tsan_interface.h>
#endif

namespace vorlan::sanitizer {

inline void release([[maybe_unused]] const void* address) {
#if defined(VORLAN_THREAD_SANITIZER)
    __tsan_release(const_cast<void*>(address));
#endif
}

inline void acquire([[maybe_unused]] const void* address) {
#if defined(VORLAN_THREAD_SANITIZER)
    __tsan_acquire(const_cast<void*>(address));
#endif
}

} // namespace vorlan::sanitizer
