// SPDX-License-Identifier: Apache-2.0
#include "platform/network/FlagsEvaluator.h"

#include <algorithm>

namespace vorlan::network {

namespace {

using Flags = SCNetworkReachabilityFlags;

// On a shared medium all that is reached without a gateway is next door. What is at the other end of a tunnel may be
// anything, but for the peer itself.
bool isNextDoor(const Survey& survey, const Link& link, const IPAddress& destination) {
    if (!link.isPointToPoint()) return true;
    return std::ranges::any_of(survey.snapshot().addresses, [&](const LinkAddress& address) {
        return address.link == link.index && destination.isInside(address.network, address.prefixLength);
    });
}

Flags flagsOfWay(const Survey& survey, const IPAddress& destination, const Route& route) {
    Flags flags = Flags::reachable;
    const Link* link = survey.snapshot().link(route.outLink); // there: the verdict rests on it
    if (survey.classifier().isTransient(*link)) flags |= Flags::transientConnection;
    if (!route.gateway && isNextDoor(survey, *link, destination)) flags |= Flags::isDirect;
    return flags;
}

Flags flagsOfVerdict(const Survey& survey, const IPAddress& destination, const Verdict& verdict) {
    if (verdict.kind == Verdict::Kind::local) return Flags::reachable | Flags::isLocalAddress;
    if (verdict.kind == Verdict::Kind::reachable) return flagsOfWay(survey, destination, verdict.route);
    return Flags();
}

FlagsEvaluation evaluateGeneralFlags(const Survey& survey) {
    Flags flags{};
    for (const Verdict& verdict : survey.probes()) {
        if (const Progress progress = progressOf(verdict); !progress.isSettled()) return {progress};
        if (verdict.kind != Verdict::Kind::reachable) continue;
        const Link& link = *survey.snapshot().link(verdict.route.outLink);
        flags |= Flags::reachable;
        if (survey.classifier().isTransient(link)) flags |= Flags::transientConnection;
    }
    return {{}, flags};
}

// 0 for no link, or for one that is not there.
LinkIndex linkOf(const Survey& survey, const Destination& destination) {
    if (destination.linkName.empty()) return destination.link;
    for (const auto& [index, link] : survey.snapshot().links)
        if (link.name == destination.linkName) return index;
    return 0;
}

} // namespace

FlagsEvaluation evaluateFlags(const Survey& survey, const Destination& destination) {
    if (destination.address.isUnspecified()) return evaluateGeneralFlags(survey);
    const LinkIndex link = linkOf(survey, destination);
    const bool namesLink = destination.link != 0 || !destination.linkName.empty();
    if (namesLink && survey.snapshot().link(link) == nullptr) return {};
    const Verdict verdict = survey.judge(destination.address, link);
    if (const Progress progress = progressOf(verdict); !progress.isSettled()) return {progress};
    return {{}, flagsOfVerdict(survey, destination.address, verdict)};
}

FlagsEvaluation evaluateFlags(const Survey& survey, std::span<const Destination> addresses) {
    for (const Destination& address : addresses) {
        if (address.address.isUnspecified()) continue; // how hosts files block a name
        const auto evaluation = evaluateFlags(survey, address);
        if (!evaluation.progress.isSettled() || contains(evaluation.flags, Flags::reachable))
            return evaluation;
    }
    return {};
}

} // namespace vorlan::network
