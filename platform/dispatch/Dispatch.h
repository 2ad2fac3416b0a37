// SPDX-License-Identifier: Apache-2.0
#pragma once

// The one place that includes libdispatch.
//
// Its headers ask for clang's feature tests and declare functions over blocks where the compiler has them;
// we use the function forms alone.

#if !defined(__clang__)
// g++ 12 has no such tests; libdispatch's headers use them unguarded.
#define __has_feature(x) 0   // NOLINT(bugprone-reserved-identifier)
#define __has_extension(x) 0 // NOLINT(bugprone-reserved-identifier)
#endif

#include <dispatch/dispatch.h>

#if !defined(__clang__)
#undef __has_feature
#undef __has_extension
#endif

extern "C" {
// Exported for run loops, but declared in a private header of the engine only.
int _dispatch_get_main_queue_handle_4CF(void);         // NOLINT(bugprone-reserved-identifier)
void _dispatch_main_queue_callback_4CF(void* ignored); // NOLINT(bugprone-reserved-identifier)
}
