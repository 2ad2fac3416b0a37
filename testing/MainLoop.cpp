// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/MainLoop.h>

#include <VorlanFoundation/Platform/RunLoop.h>

#include <algorithm>
#include <chrono>

namespace vorlan::testing {

bool MainLoop::pumpUntil(FunctionRef<bool()> condition, DispatchTimeInterval limit) {
    // Often enough for a condition that another thread makes true, which wakes no loop.
    constexpr auto tick = std::chrono::milliseconds(5);
    const auto deadline = DispatchTime::now() + limit;
    while (!condition()) {
        const auto now = DispatchTime::now();
        if (now >= deadline) return false;
        RunLoop::main().runOnce(std::min(deadline, now + tick));
    }
    return true;
}

} // namespace vorlan::testing
