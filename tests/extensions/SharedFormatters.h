// SPDX-License-Identifier: Apache-2.0
#pragma once

// The formatters that are shared by all, with what they are to be.

#include <VorlanFoundation/Extensions/Dates.h>

#include <array>

namespace vorlan::tests {

/// A place that a formatter is shared at, and what makes one with the settings that it has at first.
template <class Formatter>
struct SharedPlace {
    const char* name;
    Formatter (*get)();
    void (*set)(Formatter);
    Formatter (*make)();
};

/// All but `relativeShortTimeFormatter`, which is the one in the place of `relativeShortFormatter`: a case that uses
/// it has to do so in a process of its own.
extern const std::array<SharedPlace<DateFormatter>, 5> sharedDateFormatters;

extern const std::array<SharedPlace<DateComponentsFormatter>, 6> sharedDateComponentsFormatters;

/// What `relativeShortTimeFormatter` is to be.
DateFormatter makeRelativeShortTime();

} // namespace vorlan::tests
