// SPDX-License-Identifier: Apache-2.0
#pragma once

// Asks the kernel for a route without netlink: a UDP socket that is connected learns its own address, and
// connecting sends nothing. It tells less (no link, no gateway) and needs no permission to speak of.

#include "platform/network/IPAddress.h"

#include <VorlanFoundation/Platform/NWPath.h>

#include <functional>
#include <optional>

namespace vorlan::network {

/// What a connected socket told; an error, or the address it would send from.
struct ConnectAnswer {
    int error = 0;
    std::optional<IPAddress> source{};
};

/// Connects a socket to an address and asks for its own.
using ConnectProbe = std::function<ConnectAnswer(const IPAddress& destination)>;

/// The probe that asks the running kernel.
ConnectAnswer connectSocket(const IPAddress& destination);

/// The path as far as a probe can tell, for a system on which netlink failed with `netlinkError`.
///
/// Satisfied when a destination can be reached. What the probe may not ask counts as reachable: that a
/// process lacks a permission does not make the machine offline.
NWPath pathByConnecting(const ConnectProbe& probe, int netlinkError);

} // namespace vorlan::network
