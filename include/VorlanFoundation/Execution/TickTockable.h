// SPDX-License-Identifier: Apache-2.0
#pragma once

// What can be started and stopped and calls back in between.

#include <VorlanFoundation/Platform/Export.h>

#include <functional>

namespace vorlan {

/// Something that ticks: a host can drive it without knowing its class.
///
/// Threads: as the class that implements it says.
class VORLAN_EXPORT TickTockable {
public:
    TickTockable() = default;
    TickTockable(const TickTockable&) = delete;
    TickTockable& operator=(const TickTockable&) = delete;
    virtual ~TickTockable();

    /// Starts the ticking, or keeps it going, and makes `tick` what is called from now on.
    virtual void start(std::function<void()> tick) = 0;

    /// Pauses the ticking.
    virtual void stop() = 0;

protected:
    TickTockable(TickTockable&&) = default;
    TickTockable& operator=(TickTockable&&) = default;
};

} // namespace vorlan
