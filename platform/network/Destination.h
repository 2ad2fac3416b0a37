// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/network/IPAddress.h"
#include "platform/network/Snapshot.h"

#include <VorlanFoundation/Platform/SocketAddress.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vorlan::network {

/// An address, and the link that it belongs to if it means nothing without.
///
/// Threads: safe from any thread (a plain value).
struct Destination {
    IPAddress address;
    LinkIndex link = 0;     ///< The link's number; 0 for none.
    std::string linkName{}; ///< Its name, where the number has to be looked up; empty for none.

    /// The destination of a text ("10.0.0.1", "fe80::1%eth0", "fe80::1%2"); nothing when it is no address.
    static std::optional<Destination> fromText(std::string_view text);

    /// The destination of a record; nothing when its length and family do not fit each other.
    static std::optional<Destination> fromSocketAddress(const SocketAddress& record);

    /// The same, with an IPv4 address in IPv6's clothes left as it is.
    static std::optional<Destination> asWritten(const SocketAddress& record);

    /// The record of it; a link that is known by name only is left out.
    SocketAddress socketAddress(std::uint16_t port) const;

    /// The text of it.
    std::string text() const;

    friend bool operator==(const Destination&, const Destination&) = default;
};

} // namespace vorlan::network
