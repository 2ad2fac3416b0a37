// SPDX-License-Identifier: Apache-2.0
#include "platform/network/PathEvaluator.h"

#include "platform/network/CarrierFinder.h"

#include <algorithm>
#include <cstddef>
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
    explicit PathBuilder(const Survey& survey)
        : survey_(survey), carriers_(survey.kernel(), survey.snapshot(), survey.classifier()) {}

    void add(const IPAddress& destination, const Verdict& verdict) {
        if (!path_.reason.empty()) path_.reason += "; ";
        path_.reason += destination.text() + ": " + verdict.reason;
        const Link* link = survey_.snapshot().link(verdict.route.outLink);
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
        if (survey_.classifier().isTunnel(link)) useCarrier(destination);
    }

    void useCarrier(const IPAddress& destination) {
        const Link* carrier = carriers_.find(destination);
        if (carrier == nullptr) return;
        addTypes(*carrier);
        used_.push_back(carrier);
    }

    void addTypes(const Link& link) {
        const auto types = survey_.classifier().types(link);
        path_.interfaceTypes.insert(path_.interfaceTypes.end(), types.begin(), types.end());
    }

    const Survey& survey_;
    CarrierFinder carriers_;
    NWPath::Description path_;
    std::vector<const Link*> used_;
};

} // namespace

Evaluation evaluatePath(const Survey& survey) {
    PathBuilder builder(survey);
    for (std::size_t i = 0; i < probeDestinations().size(); ++i) {
        const Verdict& verdict = survey.probes()[i];
        if (const Progress progress = progressOf(verdict); !progress.isSettled()) return {progress};
        builder.add(probeDestinations()[i], verdict);
    }
    return {{}, std::move(builder).path()};
}

} // namespace vorlan::network
