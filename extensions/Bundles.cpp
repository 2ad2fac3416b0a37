// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Extensions/Bundles.h>

#include "platform/text/CurrentRegion.h"

#include <VorlanFoundation/Platform/CheckedArithmetic.h>

#include <algorithm>
#include <charconv>
#include <string_view>
#include <system_error>

namespace vorlan {

namespace {

std::optional<std::string> entry(std::string_view key) {
    return Bundle::main().objectForInfoDictionaryKey(key).as<std::string>();
}

// The integer that a version is without its dots; 0 where that is none.
std::int64_t packed(std::optional<std::string> version) {
    if (!version) return 0;
    std::erase(*version, '.');
    std::string_view digits = *version;
    if (digits.starts_with('+') && !digits.starts_with("+-")) digits.remove_prefix(1);
    std::int64_t number = 0;
    const auto* const end = digits.data() + digits.size();
    const auto parsed = std::from_chars(digits.data(), end, number);
    return parsed.ec == std::errc() && parsed.ptr == end ? number : 0;
}

} // namespace

std::optional<std::string> bundle::appIdentifier(const Bundle&) {
    return entry("CFBundleIdentifier");
}

std::optional<std::string> bundle::appMajorVersion(const Bundle&) {
    return entry("CFBundleShortVersionString");
}

std::optional<std::string> bundle::bundleVersion(const Bundle&) {
    return entry("CFBundleVersion");
}

std::optional<std::string> bundle::facebookAppVersionString(const Bundle&) {
    return "Version: " + appMajorVersion().value_or("");
}

std::string bundle::applicationName(const Bundle&) {
    if (auto name = entry("CFBundleDisplayName")) return *std::move(name);
    return entry("CFBundleName").value_or("");
}

std::int64_t bundle::appVersion(const Bundle&) {
    constexpr std::int64_t weightOfVersion = 10;
    return checked::add(checked::multiply(packed(appMajorVersion()), weightOfVersion),
                        packed(bundleVersion()));
}

std::string locale::currentLanguageCode() {
    return currentRegion().languageCode.value_or("en");
}

} // namespace vorlan
