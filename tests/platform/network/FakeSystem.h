// SPDX-License-Identifier: Apache-2.0
#pragma once

// A machine that exists on paper: links, addresses and routes, and a kernel that looks routes up in them.

#include "platform/network/PathEvaluator.h"
#include "platform/network/Sysfs.h"

#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>

#include <cerrno>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace vorlan::network::fake {

inline constexpr std::uint32_t running = IFF_UP | IFF_RUNNING;

inline IPAddress ip(const std::string& text) {
    return IPAddress::fromText(text).value();
}

/// A line of a routing table. Tables of a lower `rule` are looked at first.
struct TableRoute {
    std::string network;
    unsigned prefixLength = 0;
    LinkIndex link = 0;
    std::string gateway{};
    std::string source{};
    std::uint32_t metric = 0;
    std::uint8_t type = RTN_UNICAST;
    int error = 0;
    int rule = 1;
};

/// Knows devices' traits by their names.
///
/// Threads: one thread at a time.
class FakeSysfs final : public Sysfs {
public:
    DeviceTraits traits(const Link& link) const override {
        const auto found = devices.find(link.name);
        return found == devices.end() ? DeviceTraits{} : found->second;
    }

    std::map<std::string, DeviceTraits> devices;
};

/// Answers from tables: the first table by rule that has a route, in it the longest prefix, then the least
/// metric.
///
/// Threads: one thread at a time.
class FakeKernel final : public Kernel {
public:
    /// Adds a running Ethernet link, to be changed at will.
    Link& add(LinkIndex index, const std::string& name, const std::string& kind = {}) {
        return world.links[index] = {
                   .index = index, .name = name, .flags = running, .hardware = ARPHRD_ETHER, .kind = kind};
    }

    /// Adds the loopback device, and eth0 as link 2 with a default route over IPv4.
    void addCable() {
        Link& loopback = add(1, "lo");
        loopback.flags |= IFF_LOOPBACK;
        loopback.hardware = ARPHRD_LOOPBACK;
        address(1, "127.0.0.1", 8);
        add(2, "eth0");
        address(2, "10.0.0.5", 24);
        routes = {{"0.0.0.0", 0, 2, "10.0.0.1"}};
    }

    void address(LinkIndex link, const std::string& text, unsigned prefixLength) {
        world.addresses.push_back({link, ip(text), ip(text), prefixLength});
    }

    Answer<Snapshot> snapshot() override {
        ++snapshots;
        if (snapshotError != 0) return Answer<Snapshot>::failure(snapshotError);
        Snapshot answer = world;
        if (onSnapshot) onSnapshot();
        return answer;
    }

    Answer<Route> route(const IPAddress& destination, LinkIndex outLink) override {
        const TableRoute* best = find(destination, outLink);
        if (routeError != 0) return Answer<Route>::failure(routeError);
        if (best == nullptr) return Answer<Route>::failure(ENETUNREACH);
        if (best->error != 0) return Answer<Route>::failure(best->error);
        return answer(*best, destination);
    }

    Answer<Route> tableEntry(const IPAddress& destination, LinkIndex outLink) override {
        return route(destination, outLink);
    }

    Answer<std::vector<LinkIndex>> hostRouteLinks() override {
        std::vector<LinkIndex> links;
        for (const auto& route : routes)
            if (route.prefixLength == 32 && !route.gateway.empty()) links.push_back(route.link);
        return links;
    }

    Snapshot world;
    std::vector<TableRoute> routes;
    int snapshotError = 0;
    int routeError = 0;
    int snapshots = 0;
    std::function<void()> onSnapshot;

private:
    const TableRoute* find(const IPAddress& destination, LinkIndex outLink) const {
        const TableRoute* best = nullptr;
        const auto order = [](const TableRoute& route) {
            return std::tuple(route.rule, 128 - route.prefixLength, route.metric);
        };
        for (const auto& candidate : routes) {
            if (!destination.isInside(ip(candidate.network), candidate.prefixLength)) continue;
            if (outLink != 0 && candidate.link != outLink) continue;
            if (best == nullptr || order(candidate) < order(*best)) best = &candidate;
        }
        return best;
    }

    Answer<Route> answer(const TableRoute& from, const IPAddress& destination) const {
        Route route{.family = destination.family(), .type = from.type, .prefixLength = from.prefixLength};
        route.outLink = from.link;
        route.metric = from.metric;
        if (!from.gateway.empty()) route.gateway = ip(from.gateway);
        if (!from.source.empty()) route.source = ip(from.source);
        for (const auto& address : world.addresses)
            if (!route.source && address.link == from.link && address.local.family() == destination.family())
                route.source = address.local;
        return route;
    }
};

/// The path as a center would work it out.
inline Evaluation evaluatePath(Kernel& kernel, const Sysfs& sysfs) {
    std::optional<Survey> survey;
    Evaluation evaluation;
    evaluation.progress = examine(kernel, sysfs, survey, [&](const Survey& taken) {
        evaluation = network::evaluatePath(taken);
        return evaluation.progress;
    });
    return evaluation;
}

} // namespace vorlan::network::fake
