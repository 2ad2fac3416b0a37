// SPDX-License-Identifier: Apache-2.0
#pragma once

// The classes of the keychain's items.

#include <VorlanFoundation/Platform/RawValues.h>
#include <VorlanFoundation/Platform/Security.h>

#include <array>
#include <string_view>
#include <utility>

namespace vorlan {

/// What an item of the keychain is. The raw values are the texts of the keychain's own constants:
/// `rawValue(SecurityClass::genericPassword)` is kSecClassGenericPassword; `allCases<SecurityClass>()` lists them.
enum class SecurityClass { genericPassword, internetPassword, certificate, key, identity };

template <>
struct RawValues<SecurityClass> {
    static constexpr std::array cases{
        std::pair(SecurityClass::genericPassword, std::string_view(kSecClassGenericPassword)),
        std::pair(SecurityClass::internetPassword, std::string_view(kSecClassInternetPassword)),
        std::pair(SecurityClass::certificate, std::string_view(kSecClassCertificate)),
        std::pair(SecurityClass::key, std::string_view(kSecClassKey)),
        std::pair(SecurityClass::identity, std::string_view(kSecClassIdentity)),
    };
};

} // namespace vorlan
