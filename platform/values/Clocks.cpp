// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Clocks.h>

#include <ctime>

namespace vorlan::clocks {

namespace {

std::uint64_t read(clockid_t clock) noexcept {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(time.tv_nsec);
}

} // namespace

std::uint64_t monotonic() noexcept {
    return read(CLOCK_MONOTONIC);
}

std::uint64_t monotonicCoarse() noexcept {
    return read(CLOCK_MONOTONIC_COARSE);
}

std::uint64_t boottime() noexcept {
    return read(CLOCK_BOOTTIME);
}

} // namespace vorlan::clocks
