// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the application says of itself, and the language of its user.
//
//     bundle::applicationName();              // "Notes"
//     bundle::appVersion();                   // 2017 for version 2.0.1, build 7
//     locale::currentLanguageCode();          // "de"

#include <VorlanFoundation/Platform/Bundle.h>
#include <VorlanFoundation/Platform/Export.h>

#include <cstdint>
#include <optional>
#include <string>

/// What bundles say about the application.
///
/// All of it is of the application's own bundle, `Bundle::main()`, whatever bundle is asked: what a plug-in reads
/// through its bundle is the application's, not the plug-in's. An entry that is missing or no text counts as
/// absent. Safe from any thread.
namespace vorlan::bundle {

/// The entry "CFBundleIdentifier".
VORLAN_EXPORT std::optional<std::string> appIdentifier(const Bundle& bundle = Bundle::main());

/// The entry "CFBundleShortVersionString": the version that users see.
VORLAN_EXPORT std::optional<std::string> appMajorVersion(const Bundle& bundle = Bundle::main());

/// The entry "CFBundleVersion": the number of the build.
VORLAN_EXPORT std::optional<std::string> bundleVersion(const Bundle& bundle = Bundle::main());

/// "Version: " and `appMajorVersion()`, or nothing where that is absent.
VORLAN_EXPORT std::optional<std::string> facebookAppVersionString(const Bundle& bundle = Bundle::main());

/// The entry "CFBundleDisplayName", else "CFBundleName", else the empty text.
VORLAN_EXPORT std::string applicationName(const Bundle& bundle = Bundle::main());

/// Version and build as one number: the digits of the version without its dots, times 10, plus those of the
/// build. What is no number counts as 0. Versions with builds of more than one digit overlap: 1.2 with build 15 is
/// 135, as is 1.3 with build 5. A number that does not fit stops the process.
VORLAN_EXPORT std::int64_t appVersion(const Bundle& bundle = Bundle::main());

} // namespace vorlan::bundle

/// What locales say about the user. Safe from any thread.
namespace vorlan::locale {

/// The code of the user's language, as in "de"; "en" where the current locale has none.
VORLAN_EXPORT std::string currentLanguageCode();

} // namespace vorlan::locale
