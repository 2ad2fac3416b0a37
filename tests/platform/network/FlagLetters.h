// SPDX-License-Identifier: Apache-2.0
#pragma once

// Reachability flags as short texts, for expectations that are read at a glance.

#include <VorlanFoundation/Platform/SCNetworkReachabilitySource.h>

#include <array>
#include <cstdint>
#include <string>
#include <utility>

namespace vorlan::network::fake {

/// R for reachable, t for transientConnection, l for isLocalAddress, d for isDirect, - for none at all, ? for those
/// that the system never finds.
inline std::string letters(SCNetworkReachabilityFlags flags) {
    using enum SCNetworkReachabilityFlags;
    static constexpr std::array known{std::pair{reachable, 'R'}, std::pair{transientConnection, 't'},
                                      std::pair{isLocalAddress, 'l'}, std::pair{isDirect, 'd'}};
    std::string text;
    auto rest = static_cast<std::uint32_t>(flags);
    for (const auto& [bit, letter] : known) {
        if (contains(flags, bit)) text += letter;
        rest &= ~static_cast<std::uint32_t>(bit);
    }
    if (rest != 0) text += '?';
    return text.empty() ? "-" : text;
}

} // namespace vorlan::network::fake
