// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/network/Kernel.h"
#include "platform/network/LinkClassifier.h"

namespace vorlan::network {

/// Finds the link that carries a tunnel's packets: "which radio pays?" stays answerable while a VPN is up.
///
/// The kernel does not tell, so the link is taken that packets would leave by if there were no tunnel: of all
/// running links that are none, the one whose table entry for the destination is the most exact and cheapest.
/// Where the tunnel took the default route away, it is a link that leads to some single host: the VPN's
/// server.
///
/// Threads: one thread at a time.
/// Owns:    nothing; kernel, snapshot and classifier must outlive it.
class CarrierFinder {
public:
    /// Finds links of that snapshot.
    CarrierFinder(Kernel& kernel, const Snapshot& snapshot, const LinkClassifier& classifier) noexcept
        : kernel_(kernel), snapshot_(snapshot), classifier_(classifier) {}

    /// The link that carries a tunnel on the way to `destination`, or null when none can be made out.
    const Link* find(const IPAddress& destination) const;

private:
    bool canCarry(const Link& link) const;
    const Link* byDefaultRoute(const IPAddress& destination) const;
    const Link* byHostRoute() const;

    Kernel& kernel_;
    const Snapshot& snapshot_;
    const LinkClassifier& classifier_;
};

} // namespace vorlan::network
