// SPDX-License-Identifier: Apache-2.0
#pragma once

// Where a reachability object takes its flags from.

#include <VorlanFoundation/Platform/Export.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace vorlan {

/// What is known about the way to a destination: a set of bits, joined by `|`.
///
/// On Linux the system finds reachable, transientConnection, isLocalAddress and isDirect. The other four tell of
/// connections that something sets up on demand, which nothing reports here; only sources that a host or a test
/// writes have them.
enum class SCNetworkReachabilityFlags : std::uint32_t {
    transientConnection = 0x1,   ///< The way leads through a tunnel, a modem or a point-to-point connection.
    reachable = 0x2,             ///< Packets can be sent there now, or after a connection was set up.
    connectionRequired = 0x4,    ///< A connection must be set up first.
    connectionOnTraffic = 0x8,   ///< Traffic sets it up.
    interventionRequired = 0x10, ///< The user must do something for it.
    connectionOnDemand = 0x20,   ///< A connection by name sets it up.
    isLocalAddress = 0x10000,    ///< The destination is this machine.
    isDirect = 0x20000,          ///< It is on a network that this machine is attached to: no gateway between.
};

/// The bits of both.
constexpr SCNetworkReachabilityFlags operator|(SCNetworkReachabilityFlags a,
                                               SCNetworkReachabilityFlags b) noexcept {
    return SCNetworkReachabilityFlags{static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b)};
}

/// The bits that both have.
constexpr SCNetworkReachabilityFlags operator&(SCNetworkReachabilityFlags a,
                                               SCNetworkReachabilityFlags b) noexcept {
    return SCNetworkReachabilityFlags{static_cast<std::uint32_t>(a) & static_cast<std::uint32_t>(b)};
}

/// Adds bits.
constexpr SCNetworkReachabilityFlags& operator|=(SCNetworkReachabilityFlags& a,
                                                 SCNetworkReachabilityFlags b) noexcept {
    return a = a | b;
}

/// Whether `flags` has all of `bits`.
constexpr bool contains(SCNetworkReachabilityFlags flags, SCNetworkReachabilityFlags bits) noexcept {
    return (flags & bits) == bits;
}

/// The call did what it should.
inline constexpr std::int32_t kSCStatusOK = 0;
/// The system could not be asked, or gave no answer.
inline constexpr std::int32_t kSCStatusFailed = 1001;
/// An argument is not valid, or not now.
inline constexpr std::int32_t kSCStatusInvalidArgument = 1002;
/// The flags are not known yet: the name was not looked up within the time.
inline constexpr std::int32_t kSCStatusReachabilityUnknown = 4001;

/// A source of flags: the system's for one destination, or one that a host or a test writes.
///
/// Threads:     every operation is called from any thread.
/// Owns:        a subscriber, until its subscription is dropped.
/// Re-entrancy: a subscriber never calls back into the source, and returns at once.
/// Time:        subscribers are called one at a time and in order: first with the flags at the moment of
///              subscribing, once they are known, then with each later ones. What `currentFlags` returns was told
///              to the subscribers before it returns. Once a subscription is dropped, at most one call that runs
///              already goes on.
class VORLAN_EXPORT SCNetworkReachabilitySource {
public:
    /// Called with flags.
    using Subscriber = std::function<void(SCNetworkReachabilityFlags)>;

    /// The flags, or why there are none.
    struct Answer {
        std::int32_t status = kSCStatusOK;
        SCNetworkReachabilityFlags flags{};
    };

    SCNetworkReachabilitySource() = default;
    SCNetworkReachabilitySource(const SCNetworkReachabilitySource&) = delete;
    SCNetworkReachabilitySource& operator=(const SCNetworkReachabilitySource&) = delete;
    virtual ~SCNetworkReachabilitySource();

    /// The flags at this moment, or the status of a failure. The caller may be kept waiting for some seconds, on none
    /// of the source's own threads.
    virtual Answer currentFlags() = 0;

    /// Calls `subscriber` with the present flags soon, and then with each new ones, until the result is dropped; null
    /// for a source that cannot watch.
    virtual std::shared_ptr<void> subscribe(Subscriber subscriber) = 0;

    /// What the flags are of, for logs.
    virtual std::string description() const = 0;
};

} // namespace vorlan
