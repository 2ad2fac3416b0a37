// SPDX-License-Identifier: Apache-2.0
#include "platform/network/PathEvaluator.h"

#include "platform/network/CarrierFinder.h"
#include "platform/network/LinkClassifier.h"
#include "platform/network/RouteJudge.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace vorlan::network {

namespace {

void addOnce(std::vector<std::string>& list, std::string text) {
    if (std::ranges::find(list, text) == list.end()) list.push_back(std::move(text));
}

/// Puts a path together, probe by probe.
///
/// Threads: one thread at a time.
class PathBuilder {
public:
    PathBuilder(Kernel& kernel, const Snapshot& snapshot, const Sysfs& sysfs)
        : snapshot_(snapshot), classifier_(snapshot, sysfs), carriers_(kernel, snapshot, classifier_) {}

    void add(const IPAddress& destination, const Verdict& verdict) {
        if (!path_.reason.empty()) path_.reason += "; ";
        path_.reason += destination.text() + ": " + verdict.reason;
        const Link* link = snapshot_.link(verdict.route.outLink);
        if (verdict.kind == Verdict::Kind::reachable && link != nullptr)
            use(destination, verdict.route, *link);
    }

    NWPath path() && {
        for (const Link* carrier : used_) addOnce(path_.availableInterfaces, carrier->name);
        return NWPath(std::move(path_));
    }

private:
    void use(const IPAddress& destination, const Route& route, const Link& link) {
        path_.status = NWPath::Status::satisfied;
        (destination.family() == IPAddress::Family::v4 ? path_.supportsIPv4 : path_.supportsIPv6) = true;
        addOnce(path_.availableInterfaces, link.name);
        addTypes(link);
        if (route.source) addOnce(path_.localAddresses, route.source->text());
        if (route.gateway) addOnce(path_.gateways, scopedText(*route.gateway, link));
        if (classifier_.isTunnel(link)) useCarrier(destination);
    }

    void useCarrier(const IPAddress& destination) {
        const Link* carrier = carriers_.find(destination);
        if (carrier == nullptr) return;
        addTypes(*carrier);
        used_.push_back(carrier);
    }

    void addTypes(const Link& link) {
        const auto types = classifier_.types(link);
        path_.interfaceTypes.insert(path_.interfaceTypes.end(), types.begin(), types.end());
    }

    const Snapshot& snapshot_;
    LinkClassifier classifier_;
    CarrierFinder carriers_;
    NWPath::Description path_;
    std::vector<const Link*> used_;
};

Evaluation failed(int error) {
    const bool passing = error == EAGAIN;
    return {passing ? Evaluation::Outcome::unsettled : Evaluation::Outcome::failed, NWPath(), error};
}

Evaluation evaluateOnce(Kernel& kernel, const Sysfs& sysfs) {
    const auto snapshot = kernel.snapshot();
    if (!snapshot) return failed(snapshot.error());
    PathBuilder builder(kernel, *snapshot, sysfs);
    for (const IPAddress& destination : probeDestinations()) {
        const Verdict verdict = judge(kernel, *snapshot, destination);
        if (verdict.kind == Verdict::Kind::failed) return failed(verdict.error);
        if (verdict.kind == Verdict::Kind::stale) return failed(EAGAIN);
        builder.add(destination, verdict);
    }
    return {Evaluation::Outcome::settled, std::move(builder).path(), 0};
}

} // namespace

const std::vector<IPAddress>& probeDestinations() {
    static const std::vector<IPAddress> destinations{
        *IPAddress::fromText("8.8.8.8"),
        *IPAddress::fromText("198.41.0.4"),
        *IPAddress::fromText("2001:503:ba3e::2:30"),
        *IPAddress::fromText("3000::1"),
    };
    return destinations;
}

Evaluation evaluatePath(Kernel& kernel, const Sysfs& sysfs) {
    Evaluation evaluation = evaluateOnce(kernel, sysfs);
    // A link that came up between the snapshot and the look-up is in the next snapshot.
    if (evaluation.outcome == Evaluation::Outcome::unsettled) evaluation = evaluateOnce(kernel, sysfs);
    return evaluation;
}

} // namespace vorlan::network
