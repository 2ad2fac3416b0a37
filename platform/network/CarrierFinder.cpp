// SPDX-License-Identifier: Apache-2.0
#include "platform/network/CarrierFinder.h"

#include <linux/rtnetlink.h>

#include <tuple>
#include <utility>

namespace vorlan::network {

bool CarrierFinder::canCarry(const Link& link) const {
    return link.isRunning() && !link.isLoopback() && !classifier_.isTunnel(link);
}

const Link* CarrierFinder::byDefaultRoute(const IPAddress& destination) const {
    const Link* best = nullptr;
    std::pair<unsigned, std::uint32_t> bestCost;
    for (const auto& [index, link] : snapshot_.links) {
        if (!canCarry(link)) continue;
        const auto entry = kernel_.tableEntry(destination, index);
        if (!entry || entry->type != RTN_UNICAST) continue;
        const std::pair cost(destination.bitCount() - entry->prefixLength, entry->metric);
        if (best == nullptr || cost < bestCost) std::tie(best, bestCost) = std::pair(&link, cost);
    }
    return best;
}

const Link* CarrierFinder::byHostRoute() const {
    const auto leads = kernel_.hostRouteLinks();
    if (!leads) return nullptr;
    for (const LinkIndex index : *leads) {
        const Link* link = snapshot_.link(index);
        if (link != nullptr && canCarry(*link)) return link;
    }
    return nullptr;
}

const Link* CarrierFinder::find(const IPAddress& destination) const {
    const Link* link = byDefaultRoute(destination);
    return link != nullptr ? link : byHostRoute();
}

} // namespace vorlan::network
