// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <VorlanFoundation/Platform/Queue.h>

#include <latch>

namespace support {

/// Leaves worker threads behind, as nearly every process has when something goes wrong in it.
inline void useWorkerThreads() {
    std::latch done(4);
    for (int i = 0; i < 4; ++i) vorlan::Queue::global().async([&] { done.count_down(); });
    done.wait();
}

/// Keeps the calling thread until the process ends by another one.
inline void waitForEver() {
    std::latch(1).wait();
}

} // namespace support
