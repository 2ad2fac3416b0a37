// SPDX-License-Identifier: Apache-2.0
#include "platform/network/PathCenter.h"

#include "platform/network/PathEvaluator.h"

namespace vorlan::network {

NWPath PathCenter::currentPath() {
    return center().queue().sync([this] {
        refresh();
        return *value();
    });
}

Progress PathCenter::evaluate(const Survey& survey) {
    const Evaluation evaluation = evaluatePath(survey);
    if (evaluation.progress.isSettled()) publish(evaluation.path);
    return evaluation.progress;
}

void PathCenter::giveUp(const Progress& progress) {
    // Better a path that is a moment old than a guess.
    if (progress.outcome == Outcome::unsettled && value()) return;
    publish(pathByConnecting(center().providers().connectProbe, progress.error));
}

} // namespace vorlan::network
