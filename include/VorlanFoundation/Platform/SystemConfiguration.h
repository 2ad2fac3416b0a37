// SPDX-License-Identifier: Apache-2.0
#pragma once

// Whether an address or a host can be reached, as the system knows it: objects with flags that change.
//
// Reachability (VorlanFoundation/Reachability.h) is what most hosts want; this is what it is made of.
//
//     const auto target = SCNetworkReachabilityCreateWithName("example.org");
//     SCNetworkReachabilityFlags flags{};
//     if (SCNetworkReachabilityGetFlags(target, flags)) show(contains(flags, SCNetworkReachabilityFlags::reachable));
//     else log(SCErrorString(SCError()));

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/SCNetworkReachabilitySource.h>
#include <VorlanFoundation/Platform/SocketAddress.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vorlan {

/// An object that stands for a destination, and tells when the way to it changes.
class SCNetworkReachability;

/// A strong reference to one; null for none.
using SCNetworkReachabilityRef = std::shared_ptr<SCNetworkReachability>;

/// What is called, on the dispatch queue, with the new flags and the context's `info`.
///
/// It must not throw.
using SCNetworkReachabilityCallBack = void (*)(const SCNetworkReachabilityRef& target,
                                               SCNetworkReachabilityFlags flags, void* info);

/// What a callback is given, and how it is kept.
///
/// Threads: `retain` is called by whoever sets the callback, `copyDescription` by whoever describes the target;
///          `release` by whoever ends it, or on the dispatch queue. No lock is held while they are called.
/// Owns:    `info`: retained once when the callback is set; released once, when the callback was replaced, cleared or
///          its target destroyed, and the callouts that run are over.
struct SCNetworkReachabilityContext {
    /// Always 0.
    std::intptr_t version = 0;
    /// What the callback is given.
    void* info = nullptr;
    /// Takes a reference on `info` and returns what the callback is given and `release` gets; null for `info` as it is.
    const void* (*retain)(const void* info) = nullptr;
    /// Drops a reference on `info`; null for nothing to be done.
    void (*release)(const void* info) = nullptr;
    /// Describes `info`, for logs; null for nothing to be told.
    std::string (*copyDescription)(const void* info) = nullptr;
};

// All of these:
//
// Threads: safe from any thread.
// Errors:  a call that failed says so by its result, and why by SCError(), on the same thread.

/// An object for a host name.
///
/// A name that is an address ("192.168.1.1", "fe80::1%eth0") is that address. Any other is looked up as the system
/// does it (hosts file, multicast DNS, DNS), off the caller's thread; the destination is reachable when one of its
/// addresses is. While the flags are delivered, the name is looked up again when the way to the network (link, gateway
/// or source address), resolv.conf, hosts or nsswitch.conf changed, and as long as it cannot be reached at other news
/// of the network and after 1, 2, 4 and so on up to 60 seconds.
///
/// @param name 1 to 253 bytes of UTF-8, and perhaps a final dot; letters beyond ASCII are looked up in their IDNA form.
///
/// Null with kSCStatusInvalidArgument when the name is empty, too long, holds a NUL, is not well formed or has no IDNA
/// form.
VORLAN_EXPORT SCNetworkReachabilityRef SCNetworkReachabilityCreateWithName(std::string_view name);

/// An object for an address; the zero address of either family stands for the network in general.
///
/// Null with kSCStatusInvalidArgument when length and family do not fit each other. The port means nothing.
VORLAN_EXPORT SCNetworkReachabilityRef SCNetworkReachabilityCreateWithAddress(const SocketAddress& address);

/// An object whose flags come from elsewhere: from a test, or from a host that knows better.
///
/// Null with kSCStatusInvalidArgument when the source is null.
VORLAN_EXPORT SCNetworkReachabilityRef
SCNetworkReachabilityCreateWithSource(std::shared_ptr<SCNetworkReachabilitySource> source);

/// Finds the flags at this moment.
///
/// An address is answered at once. For a name that no dispatch queue is set for, the caller waits until it is looked
/// up, for 5 seconds at most, and then gets kSCStatusReachabilityUnknown. With a dispatch queue the caller waits
/// for a first answer for 300 ms at most; the flags are then empty, and a callout follows the answer. When the queue is
/// taken away meanwhile, that is kSCStatusReachabilityUnknown too. A name that does not exist has empty flags.
///
/// `flags` is only set when the call succeeds. kSCStatusInvalidArgument when the target is null, kSCStatusFailed when
/// the system could not be asked.
VORLAN_EXPORT bool SCNetworkReachabilityGetFlags(const SCNetworkReachabilityRef& target,
                                                 SCNetworkReachabilityFlags& flags);

/// Sets what is told of changes of the flags, in place of what was set before; null for nothing.
///
/// `context` is copied; null for an `info` of null. kSCStatusInvalidArgument when the target is null or the context is of
/// another version.
VORLAN_EXPORT bool SCNetworkReachabilitySetCallback(const SCNetworkReachabilityRef& target,
                                                    SCNetworkReachabilityCallBack callout,
                                                    const SCNetworkReachabilityContext* context);

/// Begins to deliver changes on `queue`, which should be serial, the present flags first; absent for an end.
///
/// After the end no callout begins; one that runs on another thread goes on. Callouts come in the order of the
/// changes, and never tell of an older state than SCNetworkReachabilityGetFlags has answered before.
/// kSCStatusInvalidArgument when the target is null, or a queue is set while there is one; kSCStatusFailed when its
/// source cannot watch.
VORLAN_EXPORT bool SCNetworkReachabilitySetDispatchQueue(const SCNetworkReachabilityRef& target,
                                                         const std::optional<Queue>& queue);

/// A line about a target and its context, for logs.
VORLAN_EXPORT std::string SCNetworkReachabilityCopyDescription(const SCNetworkReachabilityRef& target);

/// The status of the calling thread's last call of one of the functions above; kSCStatusOK when it succeeded.
VORLAN_EXPORT std::int32_t SCError() noexcept;

/// A sentence for logs about a status: "Invalid argument".
VORLAN_EXPORT std::string SCErrorString(std::int32_t status);

} // namespace vorlan
