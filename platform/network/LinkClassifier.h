// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tells what a network device is: a radio, a modem, a cable, a tunnel, or a construction over others.

#include "platform/network/Snapshot.h"
#include "platform/network/Sysfs.h"

#include <VorlanFoundation/Platform/NWPath.h>

#include <map>
#include <set>

namespace vorlan::network {

/// Types without repetition.
using InterfaceTypes = std::set<InterfaceType>;

/// Classifies the links of one snapshot.
///
/// A VLAN and the like is what its lower link is; a bridge, bond or team is what its running ports are. Links
/// that lead round in a circle, or deeper than eight steps, end the search. What is left without a type is
/// taken for a cable.
///
/// Threads: one thread at a time.
/// Owns:    nothing; snapshot and sysfs must outlive it.
class LinkClassifier {
public:
    /// Classifies by what the snapshot and sysfs tell.
    LinkClassifier(const Snapshot& snapshot, const Sysfs& sysfs) noexcept
        : snapshot_(snapshot), sysfs_(sysfs) {}

    /// What the link is; one type, or several for a bridge and the like.
    InterfaceTypes types(const Link& link) const;

    /// Whether packets that leave by the link are wrapped up and leave by another one.
    bool isTunnel(const Link& link) const;

    /// Whether the link is a connection that was set up and can end at any time: a tunnel, a modem, or over a modem.
    bool isTransient(const Link& link) const;

private:
    enum class Nature { direct, stacked, aggregated };
    // A link that was visited is not entered again: what it is has been found already.
    struct Search {
        std::set<LinkIndex> visited{};
        InterfaceTypes found{};
        unsigned depth = 0;
    };

    static Nature natureOf(const Link& link);
    const DeviceTraits& traitsOf(const Link& link) const;
    InterfaceType directType(const Link& link) const;
    void collect(const Link& link, Search& search) const;
    void collectPorts(const Link& master, Search& search) const;

    const Snapshot& snapshot_;
    const Sysfs& sysfs_;
    mutable std::map<LinkIndex, DeviceTraits> traits_; // reading sysfs costs more than all the rest
};

} // namespace vorlan::network
