// SPDX-License-Identifier: Apache-2.0
#pragma once

// What becomes of packets to one destination.
//
// That the kernel has a route is not enough: it goes on using routes over a cable that was pulled out, and it
// borrows a container bridge's address, or a link-local one, where the link has none of its own.

#include "platform/network/Kernel.h"

#include <string>

namespace vorlan::network {

/// What was found out about one destination.
struct Verdict {
    /// The three answers, and none.
    enum class Kind {
        reachable,   ///< Packets leave the machine by `route`, with a source that answers come back to.
        local,       ///< The destination is this machine.
        unreachable, ///< Packets are dropped here, or leave with no hope of an answer.
        stale,       ///< The route leaves by a link that the snapshot does not know: take another snapshot.
        failed,      ///< The kernel could not be asked; `error` says why.
    };

    Kind kind = Kind::failed;
    Route route;
    int error = 0;
    std::string reason; ///< A clause of English, for people.
};

/// Asks the kernel for the way to `destination`, through `outLink` if it is not 0, and judges its answer by the state of
/// the links.
Verdict judge(Kernel& kernel, const Snapshot& snapshot, const IPAddress& destination, LinkIndex outLink = 0);

/// Whether answers to `source`, sent out by `link` to `destination`, find their way back.
bool isUsableSource(const Snapshot& snapshot, const Link& link, const IPAddress& source,
                    const IPAddress& destination);

/// Whether the address is one that the whole network could answer to: not unspecified, loopback or
/// link-local.
bool isRoutableSource(const IPAddress& source);

/// The text of an address, with the link's name where it means nothing without.
std::string scopedText(const IPAddress& address, const Link& link);

} // namespace vorlan::network
