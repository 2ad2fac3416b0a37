// SPDX-License-Identifier: Apache-2.0
#include "platform/dispatch/DispatchQueue.h"
#include "platform/runloop/MainQueueSource.h"

#include <VorlanFoundation/Platform/Queue.h>

namespace vorlan {

const Queue& Queue::main() {
    // Never destroyed: other threads may still submit while the process ends.
    static const auto& queue = *[] {
        attachMainQueueToDefaultContext();
        return new Queue(std::make_shared<DispatchQueue>(dispatch_get_main_queue(), QueueState::Kind::serial,
                                                         QualityOfService::unspecified));
    }();
    return queue;
}

} // namespace vorlan
