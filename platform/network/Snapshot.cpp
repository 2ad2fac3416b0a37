// SPDX-License-Identifier: Apache-2.0
#include "platform/network/Snapshot.h"

#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

namespace vorlan::network {

namespace {

std::optional<IPAddress::Family> familyOf(unsigned number) {
    if (number == AF_INET) return IPAddress::Family::v4;
    if (number == AF_INET6) return IPAddress::Family::v6;
    return std::nullopt;
}

std::string kindOf(ByteView linkInfo) {
    AttributeReader attributes(linkInfo);
    while (const auto attribute = attributes.next())
        if (attribute->type == IFLA_INFO_KIND) return std::string(readText(attribute->value));
    return {};
}

void apply(const NetlinkAttribute& attribute, Link& link) {
    switch (attribute.type) {
    case IFLA_IFNAME: link.name = readText(attribute.value); break;
    case IFLA_MASTER: link.master = readNumber<std::uint32_t>(attribute.value).value_or(0); break;
    case IFLA_LINK: link.lower = readNumber<std::uint32_t>(attribute.value).value_or(0); break;
    case IFLA_LINK_NETNSID: link.lowerIsElsewhere = true; break;
    case IFLA_LINKINFO: link.kind = kindOf(attribute.value); break;
    default: break;
    }
}

// A gateway of the other family (IPv4 routed through an IPv6 neighbour) travels with its family in front.
std::optional<IPAddress> decodeVia(ByteView value) {
    const auto number = readRecord<std::uint16_t>(value);
    const auto family = number ? familyOf(*number) : std::nullopt;
    if (!family) return std::nullopt;
    return IPAddress::fromBytes(*family, value.subspan(sizeof(std::uint16_t)));
}

void apply(const NetlinkAttribute& attribute, IPAddress::Family family, Route& route) {
    switch (attribute.type) {
    case RTA_OIF: route.outLink = readNumber<std::uint32_t>(attribute.value).value_or(0); break;
    case RTA_PRIORITY: route.metric = readNumber<std::uint32_t>(attribute.value).value_or(0); break;
    case RTA_PREFSRC: route.source = IPAddress::fromBytes(family, attribute.value); break;
    case RTA_GATEWAY: route.gateway = IPAddress::fromBytes(family, attribute.value); break;
    case RTA_VIA: route.gateway = decodeVia(attribute.value); break;
    default: break;
    }
}

} // namespace

bool Link::isRunning() const noexcept {
    return (flags & IFF_UP) != 0 && (flags & IFF_RUNNING) != 0;
}

bool Link::isLoopback() const noexcept {
    return (flags & IFF_LOOPBACK) != 0;
}

bool Link::isPointToPoint() const noexcept {
    return (flags & IFF_POINTOPOINT) != 0;
}

const Link* Snapshot::link(LinkIndex index) const {
    const auto found = links.find(index);
    return found == links.end() ? nullptr : &found->second;
}

std::optional<Link> decodeLink(ByteView payload) {
    const auto header = readRecord<ifinfomsg>(payload);
    // Messages of a bridge about its ports come on the same group, with that family and other attributes.
    if (!header || header->ifi_family == AF_BRIDGE || header->ifi_index <= 0) return std::nullopt;
    Link link;
    link.index = static_cast<LinkIndex>(header->ifi_index);
    link.flags = header->ifi_flags;
    link.hardware = header->ifi_type;
    AttributeReader attributes(payload.subspan(sizeof(ifinfomsg)));
    while (const auto attribute = attributes.next()) apply(*attribute, link);
    return link;
}

std::optional<LinkAddress> decodeAddress(ByteView payload) {
    const auto header = readRecord<ifaddrmsg>(payload);
    const auto family = header ? familyOf(header->ifa_family) : std::nullopt;
    if (!family) return std::nullopt;
    std::optional<IPAddress> local;
    std::optional<IPAddress> network;
    AttributeReader attributes(payload.subspan(sizeof(ifaddrmsg)));
    while (const auto attribute = attributes.next()) {
        if (attribute->type == IFA_LOCAL) local = IPAddress::fromBytes(*family, attribute->value);
        if (attribute->type == IFA_ADDRESS) network = IPAddress::fromBytes(*family, attribute->value);
    }
    if (!local) local = network;
    if (!network) network = local;
    if (!local || header->ifa_index == 0 || header->ifa_prefixlen > local->bitCount()) return std::nullopt;
    return LinkAddress{header->ifa_index, *local, *network, header->ifa_prefixlen};
}

std::optional<Route> decodeRoute(ByteView payload) {
    const auto header = readRecord<rtmsg>(payload);
    const auto family = header ? familyOf(header->rtm_family) : std::nullopt;
    if (!family) return std::nullopt;
    Route route;
    route.family = *family;
    route.type = header->rtm_type;
    route.prefixLength = header->rtm_dst_len;
    AttributeReader attributes(payload.subspan(sizeof(rtmsg)));
    while (const auto attribute = attributes.next()) apply(*attribute, *family, route);
    return route;
}

} // namespace vorlan::network
