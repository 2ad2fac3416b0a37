// SPDX-License-Identifier: Apache-2.0
#pragma once

// How the tour writes: sections with a title, and lines of a name and what there is to say. Coloured on a
// terminal.

#include <VorlanFoundation/Platform/FunctionRef.h>

#include <string>
#include <string_view>

namespace tour {

/// Begins a section.
void title(std::string_view text);

/// Writes a line: the name of a thing in a column of its own, then what it did.
void line(std::string_view name, std::string_view text);

/// The text in the colour for good or bad news, on a terminal.
std::string good(std::string_view text);
std::string bad(std::string_view text);

/// The time of day, for lines about what happens now: "17:04:59".
std::string timeOfDay();

/// Serves the main queue until `condition` is true, for ten seconds at most; says so when it never was.
bool serveMainQueueUntil(vorlan::FunctionRef<bool()> condition);

} // namespace tour
