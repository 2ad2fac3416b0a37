// SPDX-License-Identifier: Apache-2.0
#include "platform/security/secretservice/Deadline.h"

#include "platform/security/secretservice/Failure.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace vorlan::security::secretservice {

int Deadline::millisecondsLeft() const {
    const auto now = DispatchTime::now();
    if (now >= end_) throw Failure(Failure::Kind::other, errSecNotAvailable);
    constexpr std::uint64_t inMilliseconds = 1'000'000;
    constexpr std::uint64_t most = std::numeric_limits<int>::max();
    const auto left = (end_.uptimeNanoseconds() - now.uptimeNanoseconds()) / inMilliseconds + 1;
    return static_cast<int>(std::min(left, most));
}

} // namespace vorlan::security::secretservice
