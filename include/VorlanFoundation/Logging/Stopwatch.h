// SPDX-License-Identifier: Apache-2.0
#pragma once

// Elapsed time, over four clocks of the system.
//
//     AbsoluteStopwatch watch;
//     work();
//     Logger::log(watch.milliseconds());

#include <VorlanFoundation/Platform/Export.h>

#include <cstdint>
#include <functional>

namespace vorlan {

/// Measures the time since it was made or reset.
///
/// Threads: may be read from any thread while none resets it.
/// Time:    never negative; which clock, and whether it counts while the machine sleeps, is up to the class.
class VORLAN_EXPORT Stopwatch {
public:
    Stopwatch() = default;
    virtual ~Stopwatch();

    /// Starts anew.
    virtual void reset() = 0;

    /// The clock's reading at the start, in its ticks.
    virtual std::uint64_t startTime() const = 0;

    /// The time since the start.
    virtual std::uint64_t nanoseconds() const = 0;
    virtual double milliseconds() const;
    virtual double seconds() const;

protected:
    Stopwatch(const Stopwatch&) = default;
    Stopwatch& operator=(const Stopwatch&) = default;
};

/// How many nanoseconds a tick of a clock lasts: `numer / denom`.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct Timebase {
    std::uint32_t numer = 1;
    std::uint32_t denom = 1;

    /// The system's clocks' own: they tick in nanoseconds.
    static constexpr Timebase system() noexcept { return {1, 1}; }
};

/// A stopwatch over any clock that counts in ticks of one length.
///
/// Threads: as `Stopwatch`, as far as the clock may be read.
/// Errors:  a clock that went back below the start, a time that does not fit into 64 bits before it is divided by
///          `denom`, and a `denom` of zero stop the process.
class VORLAN_EXPORT DefaultStopwatch : public Stopwatch {
public:
    /// Reads a clock, in ticks.
    using Clock = std::function<std::uint64_t()>;

    void reset() override;
    std::uint64_t startTime() const override { return startTime_; }

    /// (now - start) * numer / denom, in whole numbers, in this order.
    std::uint64_t nanoseconds() const override;

protected:
    /// Starts over a clock.
    explicit DefaultStopwatch(Clock calculationFunction, Timebase timebase = Timebase::system());

private:
    std::uint64_t numer_;
    std::uint64_t denom_;
    Clock calculationFunction_;
    std::uint64_t startTime_;
};

/// Goes by the clock that stands still while the machine sleeps.
///
/// Threads: as `Stopwatch`.
/// Time:    CLOCK_MONOTONIC.
class VORLAN_EXPORT AbsoluteStopwatch : public DefaultStopwatch {
public:
    AbsoluteStopwatch();
};

/// Goes by the clock that counts on while the machine sleeps.
///
/// Threads: as `Stopwatch`.
/// Time:    CLOCK_BOOTTIME.
class VORLAN_EXPORT ContinuousStopwatch : public DefaultStopwatch {
public:
    ContinuousStopwatch();
};

/// Cheaper to read than `AbsoluteStopwatch`, and as exact as the kernel's tick: to some milliseconds.
///
/// Threads: as `Stopwatch`.
/// Time:    CLOCK_MONOTONIC_COARSE.
class VORLAN_EXPORT ApproximateStopwatch : public DefaultStopwatch {
public:
    ApproximateStopwatch();
};

/// For where an approximate time including sleep is enough.
///
/// Threads: as `Stopwatch`.
/// Time:    CLOCK_BOOTTIME: the kernel has no cheaper clock that counts while the machine sleeps.
class VORLAN_EXPORT ContinuousApproximateStopwatch : public DefaultStopwatch {
public:
    ContinuousApproximateStopwatch();
};

} // namespace vorlan
