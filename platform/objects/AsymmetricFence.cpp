// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/AsymmetricFence.h>

#include <VorlanFoundation/Platform/FatalError.h>

#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vorlan {

namespace {

bool membarrier(int command) {
    return syscall(__NR_membarrier, command, 0, 0) == 0;
}

} // namespace

// Before this initialisation has run, and where the kernel refuses, the light side is a full fence: always
// safe.
std::atomic<bool> detail::heavyFenceIsComplete = membarrier(MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED);

void heavyFence() noexcept {
    std::atomic_thread_fence(std::memory_order_seq_cst);
    if (!detail::heavyFenceIsComplete.load(std::memory_order_relaxed)) return;
    if (!membarrier(MEMBARRIER_CMD_PRIVATE_EXPEDITED))
        fatalError("membarrier failed after it was registered", "VorlanFoundation/AsymmetricFence");
}

} // namespace vorlan
