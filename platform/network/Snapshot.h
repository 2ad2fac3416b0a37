// SPDX-License-Identifier: Apache-2.0
#pragma once

// The machine's links and addresses at one moment, as the kernel's dumps tell them, and what it answers when
// asked for a route.

#include "platform/network/IPAddress.h"
#include "platform/network/NetlinkReader.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vorlan::network {

/// Numbers a network device; never 0.
using LinkIndex = std::uint32_t;

/// One network device.
///
/// Threads: safe from any thread (a plain value).
struct Link {
    LinkIndex index = 0;
    std::string name{};
    std::uint32_t flags = 0;       ///< The IFF_ bits.
    std::uint16_t hardware = 0;    ///< The ARPHRD_ number.
    LinkIndex master = 0;          ///< The bridge, bond or team that it is a port of; 0 for none.
    LinkIndex lower = 0;           ///< The link beneath it, or a peer; 0 for none.
    bool lowerIsElsewhere = false; ///< `lower` counts in another network namespace.
    std::string kind{};            ///< What made it ("veth", "bridge", "wireguard"); empty for hardware.

    /// Up, and with a carrier that is ready to pass data: a link that waits for authentication is not.
    bool isRunning() const noexcept;
    /// Whether it is the loopback device.
    bool isLoopback() const noexcept;
    /// Whether there is one peer at the other end rather than a shared medium.
    bool isPointToPoint() const noexcept;
};

/// One address of a link.
///
/// Threads: safe from any thread (a plain value).
struct LinkAddress {
    LinkIndex link = 0;
    IPAddress local;
    IPAddress network; ///< An address of the network that it stands in: the peer's, on a point-to-point link.
    unsigned prefixLength = 0;
};

/// All links and addresses at one moment.
///
/// Threads: safe from any thread once filled (a plain value).
struct Snapshot {
    std::map<LinkIndex, Link> links;
    std::vector<LinkAddress> addresses;

    /// The link of an index, or null.
    const Link* link(LinkIndex index) const;
};

/// Where the kernel would send packets.
///
/// Threads: safe from any thread (a plain value).
struct Route {
    IPAddress::Family family = IPAddress::Family::v4;
    std::uint8_t type = 0; ///< The RTN_ number.
    unsigned prefixLength = 0;
    LinkIndex outLink = 0;
    std::uint32_t metric = 0;
    std::optional<IPAddress> source{};
    std::optional<IPAddress> gateway{};
};

/// The link of an RTM_NEWLINK message's payload; nothing when it is not one of a device.
std::optional<Link> decodeLink(ByteView payload);
/// The address of an RTM_NEWADDR message's payload; nothing when it is of another family or damaged.
std::optional<LinkAddress> decodeAddress(ByteView payload);
/// The route of an RTM_NEWROUTE message's payload; nothing when it is of another family or damaged.
std::optional<Route> decodeRoute(ByteView payload);

} // namespace vorlan::network
