// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/DispatchTime.h>

#include <ctime>

namespace vorlan {

DispatchTime DispatchTime::now() noexcept {
    // The clock that the engine's own deadlines are on.
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return DispatchTime(static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000U +
                        static_cast<std::uint64_t>(time.tv_nsec));
}

} // namespace vorlan
