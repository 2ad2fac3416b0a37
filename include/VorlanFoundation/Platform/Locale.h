// SPDX-License-Identifier: Apache-2.0
#pragma once

// The user's language and customs.

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
    /// The user's, as the desktop sets it: LC_ALL, LC_MESSAGES or LANG, the first that is not empty.
    static Locale current();

    /// The languages that the user reads, preferred first: those of LANGUAGE, then that of `current()`. None in
    /// the locales "C" and "POSIX".
    static std::vector<Locale> preferredLanguages();

    /// A locale by its identifier, as in "de", "de_CH" or "de_CH.UTF-8@euro".
    explicit Locale(std::string identifier) : identifier_(std::move(identifier)) {}

    /// The identifier that it was made with.
    const std::string& identifier() const noexcept { return identifier_; }

    /// The code of the language, as in "de"; absent where the identifier names none, as "C" and "POSIX".
    std::optional<std::string> languageCode() const;

private:
    std::string identifier_;
};

} // namespace vorlan
