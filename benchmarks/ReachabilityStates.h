// SPDX-License-Identifier: Apache-2.0
#pragma once

// States that a machine's network can be in.

#include <string>
#include <vector>

namespace vorlan::benchmarks {

/// One state: what is done to a network that works, and who is to be reached then.
///
/// The network that works has a cable, whose end is `veth0`, with 10.9.0.1/24 and a default route by the router at
/// 10.9.0.2. Behind that is a server with two addresses, 198.51.100.7 and 203.0.113.7, and 2001:db8:1::7.
struct NetworkState {
    /// What it is, for people.
    std::string name;
    /// What is done here: lines for ip(8).
    std::string changes{};
    /// What is done at the router.
    std::string changesAtRouter{};
    /// The host that is asked for; empty for the network in general.
    std::string host{};
    /// What /etc/hosts has to say.
    std::string hosts{};
    /// A setting of `veth0`, below /proc/sys/net/ipv6/conf, and its value; nothing for none.
    std::string setting{};
    std::string settingValue{};
};

/// All of them.
std::vector<NetworkState> networkStates();

} // namespace vorlan::benchmarks
