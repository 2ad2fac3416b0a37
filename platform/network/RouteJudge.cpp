// SPDX-License-Identifier: Apache-2.0
#include "platform/network/RouteJudge.h"

#include <linux/rtnetlink.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace vorlan::network {

namespace {

Verdict verdict(Verdict::Kind kind, std::string reason, Route route = {}) {
    return {kind, std::move(route), 0, std::move(reason)};
}

Verdict ofError(int error, const IPAddress& destination) {
    // A kernel that was told to do without IPv6 does not know the question. Where that is its answer for IPv4, it
    // is a sandbox that does not take it.
    if (error == EOPNOTSUPP && destination.family() == IPAddress::Family::v6)
        return verdict(Verdict::Kind::unreachable, "the kernel has no IPv6");
    switch (error) {
    case ENETUNREACH: return verdict(Verdict::Kind::unreachable, "no route");
    case EHOSTUNREACH: return verdict(Verdict::Kind::unreachable, "a route says unreachable");
    case EINVAL: return verdict(Verdict::Kind::unreachable, "a route drops it silently");
    case EACCES: return verdict(Verdict::Kind::unreachable, "a route or rule prohibits it");
    default: break;
    }
    return {Verdict::Kind::failed,
            {},
            error,
            "the kernel did not answer: " + std::system_category().message(error)};
}

bool leavesTheMachine(std::uint8_t type) {
    return type == RTN_UNICAST || type == RTN_BROADCAST || type == RTN_MULTICAST || type == RTN_ANYCAST;
}

// The loopback device and its like keep addresses that every link may use as a source.
bool lendsAddresses(const Link& link) {
    return link.isLoopback() || link.kind == "dummy";
}

std::string describe(const Route& route, const Link& link) {
    std::string text = "leaves by " + link.name;
    if (route.source) text += " from " + route.source->text();
    if (route.gateway) text += " via " + scopedText(*route.gateway, link);
    return text;
}

} // namespace

std::string scopedText(const IPAddress& address, const Link& link) {
    const bool needsScope = address.family() == IPAddress::Family::v6 && address.isLinkLocal();
    return needsScope ? address.text() + "%" + link.name : address.text();
}

bool isRoutableSource(const IPAddress& source) {
    return !source.isUnspecified() && !source.isLoopback() && !source.isLinkLocal();
}

bool isUsableSource(const Snapshot& snapshot, const Link& link, const IPAddress& source,
                    const IPAddress& destination) {
    const bool nearby = destination.isLinkLocal() || destination.isMulticast();
    if (!isRoutableSource(source) && !(nearby && source.isLinkLocal())) return false;
    if (link.isPointToPoint()) return true;
    return std::ranges::any_of(snapshot.addresses, [&](const LinkAddress& address) {
        if (address.local != source) return false;
        if (address.link == link.index || address.link == link.master) return true;
        const Link* holder = snapshot.link(address.link);
        return holder != nullptr && lendsAddresses(*holder);
    });
}

Verdict judge(Kernel& kernel, const Snapshot& snapshot, const IPAddress& destination, LinkIndex outLink) {
    const auto answer = kernel.route(destination, outLink);
    if (!answer) return ofError(answer.error(), destination);
    const Route& route = *answer;
    if (route.type == RTN_LOCAL) return verdict(Verdict::Kind::local, "is this machine", route);
    if (!leavesTheMachine(route.type)) return verdict(Verdict::Kind::unreachable, "a route drops it", route);

    const Link* link = snapshot.link(route.outLink);
    if (link == nullptr)
        return verdict(Verdict::Kind::stale, "leaves by a link that has just changed", route);
    if (link->isLoopback()) return verdict(Verdict::Kind::local, "stays on this machine", route);
    const std::string way = describe(route, *link);
    if (!link->isRunning()) return verdict(Verdict::Kind::unreachable, way + ", which has no carrier", route);
    if (!route.source || !isUsableSource(snapshot, *link, *route.source, destination))
        return verdict(Verdict::Kind::unreachable, way + ", which is no address to answer to there", route);
    return verdict(Verdict::Kind::reachable, way, route);
}

} // namespace vorlan::network
