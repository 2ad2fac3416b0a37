// SPDX-License-Identifier: Apache-2.0
#pragma once

// The user's surroundings, as they were when they were read last.

#include <VorlanFoundation/Platform/Calendar.h>
#include <VorlanFoundation/Platform/Locale.h>
#include <VorlanFoundation/Platform/TimeZone.h>

#include <optional>
#include <string>
#include <vector>

namespace vorlan {

/// What follows from the environment, or from what a test says in its place.
///
/// Threads: safe from any thread: it never changes.
struct CurrentRegion {
    Locale locale;
    std::optional<std::string> languageCode; ///< Of the locale.
    std::vector<Locale> preferredLanguages;
    std::vector<std::string> languageFolders; ///< Names of folders with resources in these, each but once.
    TimeZone timeZone;
    Calendar calendar;
};

/// The one in force. A reference stays good until the process ends: there are as many as there were changes, which a
/// user makes by hand. Costs a read of an atomic pointer; comparing addresses tells whether anything changed.
const CurrentRegion& currentRegion();

} // namespace vorlan
