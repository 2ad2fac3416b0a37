// SPDX-License-Identifier: Apache-2.0
#pragma once

// The user's language and customs.
//
//     Locale::current().identifier();         // "en_US.UTF-8", as the desktop sets it
//     Locale("de_CH").languageCode();         // "de"

#include <VorlanFoundation/Platform/Export.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vorlan {

/// A language, with the customs of a region.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
class VORLAN_EXPORT Locale {
public:
    /// The user's, as the desktop sets it: the language of the messages (LC_ALL, LC_MESSAGES or LANG, the first that
    /// is not empty), with the customs of the region that dates are written for (LC_ALL, LC_TIME or LANG). With
    /// LANG=en_US.UTF-8 and LC_TIME=de_DE.UTF-8 that is "en_DE": English words in the order that Germans write. Where
    /// the messages are in no language ("C"), it is that of LC_TIME; where that has none either, "C".
    ///
    /// The environment is read at the first use and then at each `resetCurrent()`.
    static Locale current();

    /// The languages that the user reads, preferred first: those of LANGUAGE, then that of the messages. None in
    /// the locales "C" and "POSIX". Read together with `current()`.
    static std::vector<Locale> preferredLanguages();

    /// Reads the environment again at the next use: what follows `current()`, as formatters without a locale of their
    /// own, follows from then on. Not while another thread changes the environment.
    static void resetCurrent();

    /// A locale by its identifier, as in "de", "de_CH", "zh_Hant_TW", "de_CH.UTF-8@euro" or "th_TH@calendar=gregorian".
    /// One that is not known is taken as far as it is: "de_XX" counts as "de"; what is in no known language is written
    /// in that of the process's environment.
    explicit Locale(std::string identifier) : identifier_(std::move(identifier)) {}

    /// The identifier that it was made with.
    const std::string& identifier() const noexcept { return identifier_; }

    /// The code of the language, as in "de"; absent where the identifier names none, as "C" and "POSIX".
    std::optional<std::string> languageCode() const;

    /// The code of the region, as in "CH" or "419"; absent where the identifier names none.
    std::optional<std::string> regionCode() const;

    /// Whether they have the same identifier.
    friend bool operator==(const Locale&, const Locale&) = default;

private:
    std::string identifier_;
};

} // namespace vorlan
