// SPDX-License-Identifier: Apache-2.0
#pragma once

// A wall clock that stands still.
//
//     testing::WallClock clock(noon);         // Date() is noon from here on
//     clock.advance(24h);
//     EXPECT_FALSE(calendar::isToday(noon));

#include <VorlanFoundation/Platform/Date.h>

#include <chrono>
#include <optional>

namespace vorlan::testing {

/// While it lives, the present (`Date()`) is what it says, for the whole process. Clocks that measure spans, as those
/// of queues, timers and stopwatches, are not touched.
///
/// Threads: safe from any thread; one that is made while another lives is destroyed before it.
class WallClock {
public:
    /// Stops the clock at a date.
    explicit WallClock(Date now);
    WallClock(const WallClock&) = delete;
    WallClock& operator=(const WallClock&) = delete;
    ~WallClock();

    /// Sets it to another date.
    void set(Date now);

    /// Puts it forward; back, when negative.
    void advance(std::chrono::duration<double> span);

private:
    std::optional<Date> former_;
};

} // namespace vorlan::testing
