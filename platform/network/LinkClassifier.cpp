// SPDX-License-Identifier: Apache-2.0
#include "platform/network/LinkClassifier.h"

#include <linux/if_arp.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace vorlan::network {

namespace {

constexpr unsigned deepest = 8;
constexpr std::uint16_t rawIP = 519; // ARPHRD_RAWIP, newer than some kernels' headers

template <std::size_t Count>
bool isOneOf(std::string_view kind, const std::array<std::string_view, Count>& kinds) {
    return std::ranges::find(kinds, kind) != kinds.end();
}

bool isTunnelKind(std::string_view kind) {
    static constexpr std::array<std::string_view, 22> kinds{
        "tun",       "wireguard", "ovpn",   "gre",     "gretap", "erspan", "ip6gre", "ip6gretap",
        "ip6erspan", "ipip",      "ip6tnl", "sit",     "vti",    "vti6",   "xfrm",   "vxlan",
        "geneve",    "bareudp",   "gtp",    "l2tpeth", "amt",    "ppp"};
    return isOneOf(kind, kinds);
}

bool isTunnelHardware(std::uint16_t hardware) {
    static constexpr std::array<std::uint16_t, 7> types{
        ARPHRD_NONE, ARPHRD_PPP, ARPHRD_TUNNEL, ARPHRD_TUNNEL6, ARPHRD_SIT, ARPHRD_IPGRE, ARPHRD_IP6GRE};
    return std::ranges::find(types, hardware) != types.end();
}

bool isModem(const Link& link, const DeviceTraits& traits) {
    return traits.devtype == "wwan" || link.kind == "wwan" || link.kind == "rmnet" || link.hardware == rawIP;
}

// Ports that lead to containers and virtual machines say nothing about the way out.
bool leadsInside(const Link& port) {
    return port.kind == "veth" || port.kind == "tun";
}

} // namespace

LinkClassifier::Nature LinkClassifier::natureOf(const Link& link) {
    static constexpr std::array<std::string_view, 4> stacked{"vlan", "macvlan", "ipvlan", "macsec"};
    static constexpr std::array<std::string_view, 3> aggregated{"bridge", "bond", "team"};
    // A lower link in another namespace has an index that means something else here.
    if (isOneOf(link.kind, stacked)) return link.lowerIsElsewhere ? Nature::direct : Nature::stacked;
    return isOneOf(link.kind, aggregated) ? Nature::aggregated : Nature::direct;
}

const DeviceTraits& LinkClassifier::traitsOf(const Link& link) const {
    const auto known = traits_.find(link.index);
    return known != traits_.end() ? known->second
                                  : traits_.emplace(link.index, sysfs_.traits(link)).first->second;
}

InterfaceType LinkClassifier::directType(const Link& link) const {
    const DeviceTraits& traits = traitsOf(link);
    if (link.isLoopback()) return InterfaceType::loopback;
    if (traits.wireless) return InterfaceType::wifi;
    if (isModem(link, traits)) return InterfaceType::cellular;
    if (isTunnelKind(link.kind) || isTunnelHardware(link.hardware)) return InterfaceType::other;
    if (link.isPointToPoint() || traits.devtype == "bluetooth") return InterfaceType::other;
    return link.hardware == ARPHRD_ETHER ? InterfaceType::wiredEthernet : InterfaceType::other;
}

void LinkClassifier::collectPorts(const Link& master, Search& search) const {
    for (const auto& [index, port] : snapshot_.links)
        if (port.master == master.index && port.isRunning() && !leadsInside(port)) collect(port, search);
}

void LinkClassifier::collect(const Link& link, Search& search) const {
    const bool isNew = search.visited.insert(link.index).second;
    if (!isNew || search.depth > deepest) return;
    ++search.depth;
    switch (natureOf(link)) {
    case Nature::direct: search.found.insert(directType(link)); break;
    case Nature::aggregated: collectPorts(link, search); break;
    case Nature::stacked:
        if (const Link* lower = snapshot_.link(link.lower)) collect(*lower, search);
        break;
    }
    --search.depth;
}

InterfaceTypes LinkClassifier::types(const Link& link) const {
    Search search;
    collect(link, search);
    if (search.found.empty()) search.found.insert(InterfaceType::wiredEthernet);
    return std::move(search.found);
}

bool LinkClassifier::isTunnel(const Link& link) const {
    if (link.isLoopback() || natureOf(link) != Nature::direct) return false;
    if (!isTunnelKind(link.kind) && !isTunnelHardware(link.hardware) && !link.isPointToPoint()) return false;
    const DeviceTraits& traits = traitsOf(link);
    return !traits.wireless && !isModem(link, traits);
}

bool LinkClassifier::isTransient(const Link& link) const {
    return isTunnel(link) || types(link).contains(InterfaceType::cellular);
}

} // namespace vorlan::network
