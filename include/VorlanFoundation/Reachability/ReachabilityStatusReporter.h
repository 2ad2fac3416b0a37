// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace vorlan {

/// Something that can say whether the network is reachable.
///
/// Threads: safe from any thread.
class ReachabilityStatusReporter {
public:
    virtual ~ReachabilityStatusReporter() = default;

    /// Whether the network is reachable at this moment.
    virtual bool isReachable() const = 0;
};

} // namespace vorlan
