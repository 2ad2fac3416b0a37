// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the cases about hosts by name have in common.

#include "tests/platform/network/Namespace.h"
#include "tests/platform/network/WatchedReachability.h"

#include <optional>
#include <string>

namespace vorlan::tests {

/// The flags of a name that nobody watches.
inline std::optional<ReachabilityFlags> flagsOfName(const std::string& name) {
    return flagsOf(SCNetworkReachabilityCreateWithName(name));
}

/// Says what a watched host is, for when it is not what it should be.
inline std::string stateOf(const WatchedReachability& watched) {
    return "it was last " + ::testing::PrintToString(watched.last()) + " and is now " +
           ::testing::PrintToString(flagsOf(watched.target()));
}

/// Makes a running network of 10.9.0.0/24 and fd00:9::/64, with default routes; returns when it carries.
inline void connectBothFamilies() {
    ip("link set lo up\nlink add veth0 type veth peer name vpeer\n"
       "addr add 10.9.0.1/24 dev veth0\naddr add fd00:9::1/64 dev veth0 nodad\n"
       "link set veth0 up\nlink set vpeer up\n"
       "route add default via 10.9.0.2\n-6 route add default via fd00:9::2");
    // The kernel sees the carrier a little later.
    for (const auto* address : {"192.0.2.1", "2001:db8::1"})
        EXPECT_TRUE(WatchedReachability(addressTarget(address)).becomes(routed)) << address;
}

} // namespace vorlan::tests
