// SPDX-License-Identifier: Apache-2.0
#pragma once

// The network at one moment, for those who work something out from it.

#include "platform/network/Kernel.h"
#include "platform/network/LinkClassifier.h"
#include "platform/network/RouteJudge.h"
#include "platform/network/Sysfs.h"

#include <VorlanFoundation/Platform/FunctionRef.h>

#include <optional>
#include <span>
#include <vector>

namespace vorlan::network {

/// How far it was worked out.
enum class Outcome {
    settled,   ///< It is known.
    unsettled, ///< The kernel's tables keep changing: try again soon.
    failed,    ///< The kernel could not be asked.
};

/// What came of working something out.
struct Progress {
    Outcome outcome = Outcome::settled;
    int error = 0; ///< The errno number of what is not settled.

    /// The progress of whoever got that error from the kernel.
    static Progress ofError(int error) noexcept;

    bool isSettled() const noexcept { return outcome == Outcome::settled; }
};

/// One global address in each half of the IPv4 and of the global IPv6 space; nothing is ever sent to them.
///
/// Halves, because VPN software covers the default route with two routes that are half as long each. The
/// all-zero address would not do: the kernel takes it for this machine.
std::span<const IPAddress> probeDestinations();

/// The links and addresses at one moment, and the kernel to ask for routes.
///
/// Threads: one thread at a time.
/// Owns:    the snapshot; kernel and sysfs must outlive it.
class Survey {
public:
    Survey(Kernel& kernel, const Sysfs& sysfs, Snapshot snapshot);
    Survey(const Survey&) = delete;
    Survey& operator=(const Survey&) = delete;

    Kernel& kernel() const noexcept { return kernel_; }
    const Snapshot& snapshot() const noexcept { return snapshot_; }
    const LinkClassifier& classifier() const noexcept { return classifier_; }

    /// What becomes of packets to a destination, through `outLink` if it is not 0.
    Verdict judge(const IPAddress& destination, LinkIndex outLink = 0) const;

    /// The verdicts on the probes, in their order; found out when first asked for.
    const std::vector<Verdict>& probes() const;

private:
    Kernel& kernel_;
    const Snapshot snapshot_;
    const LinkClassifier classifier_;
    mutable std::vector<Verdict> probes_;
};

/// How far a verdict was found out.
Progress progressOf(const Verdict& verdict) noexcept;

/// Works with `survey`, which is taken first if there is none; once more with a newer one if it turns out to be too
/// old. Leaves no survey behind that is not good any more.
Progress examine(Kernel& kernel, const Sysfs& sysfs, std::optional<Survey>& survey,
                 FunctionRef<Progress(const Survey&)> work);

} // namespace vorlan::network
