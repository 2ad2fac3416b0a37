// SPDX-License-Identifier: Apache-2.0
#include "platform/network/AddressReachability.h"

#include "platform/network/FlagsEvaluator.h"

namespace vorlan::network {

SCNetworkReachabilitySource::Answer AddressReachability::currentFlags() {
    return center().queue().sync([this]() -> Answer {
        refresh();
        if (progress_.outcome == Outcome::failed) return {kSCStatusFailed};
        // While the tables keep changing, flags that are a moment old are better than none.
        if (value()) return {kSCStatusOK, *value()};
        return isWatched() ? Answer() : Answer{kSCStatusReachabilityUnknown}; // those who watch will be told
    });
}

Progress AddressReachability::evaluate(const Survey& survey) {
    const auto evaluation = evaluateFlags(survey, destination_);
    progress_ = evaluation.progress;
    if (progress_.isSettled()) publish(evaluation.flags);
    return progress_;
}

} // namespace vorlan::network
