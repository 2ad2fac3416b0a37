// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Observation/ObservationToken.h>

#include <utility>

namespace vorlan {

ObservationToken::ObservationToken() = default;
ObservationToken::~ObservationToken() = default;

void ObservationToken::cancel() {
    const std::lock_guard lock(mutex_);
    if (!std::exchange(isCancelled_, true)) cancellationClosure();
}

void ObservationToken::cancelAndWait() {
    cancel();
    waitForCallbacks();
}

} // namespace vorlan
