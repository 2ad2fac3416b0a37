// SPDX-License-Identifier: Apache-2.0
#pragma once

// A generic socket address as a record of bytes.
//
//     SocketAddress zero{.length = 16, .family = SocketAddress::ipv4};     // the network in general
//     auto router = SocketAddress::fromText("192.168.1.1");

#include <VorlanFoundation/Platform/Export.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vorlan {

/// An address and a port as the BSD systems lay them out, which is not what Linux calls a sockaddr: the first byte
/// is the record's length, the second its family.
///
/// Behind them an IPv4 record (16 bytes) has the port (2 bytes), the address (4) and 8 bytes of padding; an IPv6
/// record (28 bytes) has the port (2), the flow (4), the address (16) and the number of the interface that a
/// link-local address belongs to (4, in the machine's byte order; 0 for none). All others are in network order.
///
/// Threads: safe from any thread (a plain value).
struct VORLAN_EXPORT SocketAddress {
    /// The number of IPv4, here and on every system.
    static constexpr std::uint8_t ipv4 = 2;
    /// The number of IPv6 in these records; not Linux's AF_INET6.
    static constexpr std::uint8_t ipv6 = 30;

    /// The record's size in bytes, these two included: 16 for IPv4, 28 for IPv6.
    std::uint8_t length = 0;
    /// `ipv4` or `ipv6`.
    std::uint8_t family = 0;
    /// What follows; bytes beyond the length mean nothing and stay zero.
    std::array<std::byte, 26> data{};

    /// The zero address of IPv4, which stands for the network in general.
    static constexpr SocketAddress zero() noexcept { return {.length = 16, .family = ipv4}; }

    /// The address of a dotted or colon-separated text ("10.0.0.1", "fd00::1"; no interface), with that port; absent
    /// when the text is neither.
    static std::optional<SocketAddress> fromText(std::string_view text, std::uint16_t port = 0);

    /// The address in its usual form, without the port: "10.0.0.1", "fe80::1%2" with the interface's number; for
    /// a record of another length or family, a sentence that says so.
    std::string description() const;

    friend bool operator==(const SocketAddress&, const SocketAddress&) = default;
};

} // namespace vorlan
