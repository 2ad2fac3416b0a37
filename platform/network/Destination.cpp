// SPDX-License-Identifier: Apache-2.0
#include "platform/network/Destination.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <span>

namespace vorlan::network {

namespace {

constexpr std::uint8_t ipv4Size = 16;
constexpr std::uint8_t ipv6Size = 28;

// Where the fields are, behind length and family.
constexpr std::size_t ipv4Address = 2;
constexpr std::size_t ipv6Address = 6;
constexpr std::size_t ipv6Link = 22;

std::optional<LinkIndex> linkNumber(std::string_view text) {
    LinkIndex number = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && rest == end && number != 0 ? std::optional(number) : std::nullopt;
}

// Connections to an IPv4 address in IPv6's clothes are made over IPv4.
IPAddress unmapped(const IPAddress& address) {
    static const IPAddress mapped = *IPAddress::fromText("::ffff:0:0");
    if (!address.isInside(mapped, 96)) return address;
    return *IPAddress::fromBytes(IPAddress::Family::v4, address.bytes().subspan(12));
}

} // namespace

std::optional<Destination> Destination::fromText(std::string_view text) {
    const auto sign = text.find('%');
    const auto address = IPAddress::fromText(text.substr(0, sign));
    if (!address) return std::nullopt;
    if (sign == std::string_view::npos) return Destination{unmapped(*address)};
    const auto scope = text.substr(sign + 1);
    if (scope.empty() || address->family() != IPAddress::Family::v6) return std::nullopt;
    if (const auto number = linkNumber(scope)) return Destination{unmapped(*address), *number};
    return Destination{unmapped(*address), 0, std::string(scope)};
}

std::optional<Destination> Destination::asWritten(const SocketAddress& record) {
    const std::span<const std::byte> data(record.data);
    if (record.family == SocketAddress::ipv4 && record.length == ipv4Size)
        return Destination{*IPAddress::fromBytes(IPAddress::Family::v4, data.subspan(ipv4Address, 4))};
    if (record.family != SocketAddress::ipv6 || record.length != ipv6Size) return std::nullopt;
    Destination destination{*IPAddress::fromBytes(IPAddress::Family::v6, data.subspan(ipv6Address, 16))};
    std::memcpy(&destination.link, data.data() + ipv6Link, sizeof(destination.link));
    return destination;
}

std::optional<Destination> Destination::fromSocketAddress(const SocketAddress& record) {
    auto destination = asWritten(record);
    if (destination) destination->address = unmapped(destination->address);
    return destination;
}

SocketAddress Destination::socketAddress(std::uint16_t port) const {
    const bool isV4 = address.family() == IPAddress::Family::v4;
    SocketAddress record;
    record.length = isV4 ? ipv4Size : ipv6Size;
    record.family = isV4 ? SocketAddress::ipv4 : SocketAddress::ipv6;
    record.data[0] = static_cast<std::byte>(port >> 8U);
    record.data[1] = static_cast<std::byte>(port & 0xffU);
    std::ranges::copy(address.bytes(), record.data.begin() + (isV4 ? ipv4Address : ipv6Address));
    if (!isV4) std::memcpy(record.data.data() + ipv6Link, &link, sizeof(link));
    return record;
}

std::string Destination::text() const {
    if (!linkName.empty()) return address.text() + "%" + linkName;
    return link == 0 ? address.text() : address.text() + "%" + std::to_string(link);
}

} // namespace vorlan::network
