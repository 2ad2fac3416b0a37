// SPDX-License-Identifier: Apache-2.0
#pragma once

// Where a path monitor takes its paths from.

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/NWPath.h>

#include <functional>
#include <memory>

namespace vorlan {

/// A source of paths: the system's, or one that a host or a test writes.
///
/// Threads:     every operation is called from any thread.
/// Owns:        a subscriber, until its subscription is dropped.
/// Re-entrancy: a subscriber never calls back into the source, and returns at once.
/// Time:        subscribers are called one at a time and in order: first the path at the moment of
///              subscribing, then each later one. Once a subscription is dropped, at most one call that runs
///              already goes on.
/// Errors:      none: a source that does not know says so in a path's reason.
class VORLAN_EXPORT NWPathSource {
public:
    /// Called with a path.
    using Subscriber = std::function<void(const NWPath&)>;

    NWPathSource() = default;
    NWPathSource(const NWPathSource&) = delete;
    NWPathSource& operator=(const NWPathSource&) = delete;
    virtual ~NWPathSource();

    /// The path at this moment, also when no subscriber was told of it yet.
    virtual NWPath currentPath() = 0;

    /// Calls `subscriber` with the present path soon, and then with each new one, until the result is
    /// dropped.
    virtual std::shared_ptr<void> subscribe(Subscriber subscriber) = 0;

    /// The source that watches this machine's network, shared by the whole process.
    ///
    /// It holds no descriptor until it is first asked, watches only while it has a subscriber, and is gone
    /// with the last reference. No packet is sent. Where the kernel's routing interface (netlink) is not
    /// available, it asks by connecting UDP sockets, which sends nothing either, and asks again every few
    /// seconds; the reason of the path tells. Where that is forbidden too the path is satisfied over an
    /// interface of type `other`: a missing permission never makes a path unsatisfied.
    static std::shared_ptr<NWPathSource> system();
};

} // namespace vorlan
