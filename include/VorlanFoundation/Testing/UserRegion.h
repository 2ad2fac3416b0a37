// SPDX-License-Identifier: Apache-2.0
#pragma once

// A user of another place.
//
//     testing::UserRegion user({.locale = "de_DE", .timeZone = "Europe/Berlin"});
//     EXPECT_EQ(dateFormatter::shortDate().string(noon), "22.11.26");

#include <VorlanFoundation/Platform/Calendar.h>
#include <VorlanFoundation/Platform/Region.h>

#include <optional>
#include <string>

namespace vorlan::testing {

/// While it lives, the user's locale, time zone and calendar (`Locale::current()`, `TimeZone::current()`,
/// `Calendar::current()`) are what it says, for the whole process. The environment stays as it is.
///
/// Threads: safe from any thread; one that is made while another lives is destroyed before it.
class UserRegion {
public:
    /// What it sets; what is left out stays as it was.
    struct Settings {
        std::optional<std::string> locale = {};            ///< an identifier, as for `Locale`
        std::optional<std::string> timeZone = {};          ///< a name, as for `TimeZone::fromIdentifier`
        std::optional<Calendar::Identifier> calendar = {}; ///< at first the one in use where the locale is
    };

    /// Stops the process when there is no time zone of that name.
    explicit UserRegion(const Settings& settings);
    UserRegion(const UserRegion&) = delete;
    UserRegion& operator=(const UserRegion&) = delete;
    ~UserRegion();

private:
    detail::RegionOverride former_;
};

} // namespace vorlan::testing
