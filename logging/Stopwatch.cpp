// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Logging/Stopwatch.h>

#include <VorlanFoundation/Platform/CheckedArithmetic.h>
#include <VorlanFoundation/Platform/Clocks.h>

#include <utility>

namespace vorlan {

Stopwatch::~Stopwatch() = default;

double Stopwatch::milliseconds() const {
    return static_cast<double>(nanoseconds()) / 1'000'000.0;
}

double Stopwatch::seconds() const {
    return static_cast<double>(nanoseconds()) / 1'000'000'000.0;
}

DefaultStopwatch::DefaultStopwatch(Clock calculationFunction, Timebase timebase)
    : numer_(timebase.numer),
      denom_(timebase.denom),
      calculationFunction_(std::move(calculationFunction)),
      startTime_(calculationFunction_()) {}

void DefaultStopwatch::reset() {
    startTime_ = calculationFunction_();
}

std::uint64_t DefaultStopwatch::nanoseconds() const {
    const auto ticks = checked::subtract(calculationFunction_(), startTime_);
    // The usual case; dividing would take a third of the time that reading the clock does.
    if (numer_ == 1 && denom_ == 1) return ticks;
    return checked::divide(checked::multiply(ticks, numer_), denom_);
}

AbsoluteStopwatch::AbsoluteStopwatch() : DefaultStopwatch(clocks::monotonic) {}
ContinuousStopwatch::ContinuousStopwatch() : DefaultStopwatch(clocks::boottime) {}
ApproximateStopwatch::ApproximateStopwatch() : DefaultStopwatch(clocks::monotonicCoarse) {}
ContinuousApproximateStopwatch::ContinuousApproximateStopwatch() : DefaultStopwatch(clocks::boottime) {}

} // namespace vorlan
