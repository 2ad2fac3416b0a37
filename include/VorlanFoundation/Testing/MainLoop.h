// SPDX-License-Identifier: Apache-2.0
#pragma once

// Turns the main run loop from a test until something has come true.
//
//     testing::MainLoop::pumpUntil([&] { return done; }, 5s);

#include <VorlanFoundation/Platform/DispatchTimeInterval.h>
#include <VorlanFoundation/Platform/FunctionRef.h>

namespace vorlan::testing {

/// The main run loop, turned by hand.
///
/// Threads: main queue only: the main thread.
class MainLoop {
public:
    /// Serves the main queue until `condition` is true; returns false when `limit` went by before.
    ///
    /// The condition is looked at after everything that the loop handled, and every few milliseconds, so that
    /// it may also be made true by another thread (it has to be read without a data race then).
    static bool pumpUntil(FunctionRef<bool()> condition, DispatchTimeInterval limit);
};

} // namespace vorlan::testing
