// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the network code asks the kernel, behind an interface that tests can answer.

#include "platform/network/IPAddress.h"
#include "platform/network/Snapshot.h"

#include <optional>
#include <utility>
#include <vector>

namespace vorlan::network {

/// A value, or the errno number that says why there is none.
///
/// Threads: one thread at a time (a plain value).
template <class Value>
class Answer {
public:
    /// An answer.
    Answer(Value value)
        : value_(std::move(value)) {} // NOLINT(*-explicit-*): a value is an answer as it stands
    /// The reason why there is none.
    static Answer failure(int error) { return Answer(Failure{error}); }

    /// Whether there is a value.
    explicit operator bool() const noexcept { return value_.has_value(); }
    /// The errno number; 0 when there is a value.
    int error() const noexcept { return error_; }
    /// The value, which must be there.
    Value& operator*() { return *value_; }
    /// The value, which must be there.
    const Value& operator*() const { return *value_; }
    /// The value, which must be there.
    const Value* operator->() const { return &*value_; }

private:
    struct Failure {
        int error;
    };
    explicit Answer(Failure failure) : error_(failure.error) {}

    std::optional<Value> value_;
    int error_ = 0;
};

/// The kernel's view of the network. Nothing that is asked here sends a packet.
///
/// Threads: one thread at a time.
/// Errors:  errno numbers. ENETUNREACH, EHOSTUNREACH, EINVAL and EACCES of `route` are the kernel's verdict
///          on the destination (no route, unreachable, blackhole, prohibit), and so is EOPNOTSUPP for an IPv6 one
///          (there is no IPv6); EAGAIN of `snapshot` says that the tables kept changing under the dump; all
///          others mean that the kernel could not be asked.
class Kernel {
public:
    Kernel() = default;
    Kernel(const Kernel&) = delete;
    Kernel& operator=(const Kernel&) = delete;
    virtual ~Kernel() = default;

    /// All links and addresses.
    virtual Answer<Snapshot> snapshot() = 0;

    /// Where packets to `destination` would go now, by all rules and tables; through `outLink` if it is not
    /// 0.
    virtual Answer<Route> route(const IPAddress& destination, LinkIndex outLink = 0) = 0;

    /// The table entry that would carry packets to `destination` if they had to leave through `outLink`.
    virtual Answer<Route> tableEntry(const IPAddress& destination, LinkIndex outLink) = 0;

    /// The links that lead, through a gateway, to single hosts: VPN software routes its own server that way.
    virtual Answer<std::vector<LinkIndex>> hostRouteLinks() = 0;
};

} // namespace vorlan::network
