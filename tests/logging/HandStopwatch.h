// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <VorlanFoundation/Logging/Stopwatch.h>

#include <cstdint>
#include <memory>

namespace vorlan::tests {

/// A stopwatch over a clock that the test sets.
class HandStopwatch : public DefaultStopwatch {
public:
    explicit HandStopwatch(std::shared_ptr<std::uint64_t> clock, Timebase timebase = Timebase::system())
        : DefaultStopwatch([clock] { return *clock; }, timebase) {}
};

} // namespace vorlan::tests
