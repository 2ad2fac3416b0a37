// SPDX-License-Identifier: Apache-2.0
#pragma once

// Changes a private network by the kernel's own messages, and hears its messages about it.

#include <chrono>
#include <cstddef>
#include <memory>
#include <span>
#include <vector>

struct mnl_socket;
struct nlmsghdr;

namespace vorlan::benchmarks {

using Clock = std::chrono::steady_clock; // CLOCK_MONOTONIC

/// A netlink socket of the routing tables.
///
/// Threads: one thread at a time.
/// Errors:  throws std::system_error.
class RoutingSocket {
public:
    /// A socket that only asks.
    RoutingSocket();

    /// Hears of links, addresses, routes and rules from now on.
    void listen();

    /// Sends a request and waits until it is done; returns the time just before it was sent.
    Clock::time_point request(nlmsghdr& message);

    /// Waits for a datagram, which is valid until the next call; empty when none comes in time.
    std::span<const std::byte> receive(Clock::time_point deadline);

    /// Waits until nothing has been heard for that long; what is heard is dropped.
    void waitForQuiet(std::chrono::milliseconds pause);

private:
    struct Closer {
        void operator()(mnl_socket* socket) const;
    };

    std::unique_ptr<mnl_socket, Closer> socket_;
    std::vector<std::byte> buffer_;
};

/// A cable whose ends are both in this network, with an address and a default route at one of them: the network is there
/// when the cable's other end is up and the route exists.
///
/// Nothing but what is asked for here happens: there are no addresses that the kernel makes by itself.
///
/// Threads: one thread at a time.
/// Errors:  throws where the network cannot be changed.
class Cable {
public:
    Cable();

    /// Each returns the time just before.
    Clock::time_point addRoute();
    Clock::time_point deleteRoute();
    Clock::time_point plugIn();
    Clock::time_point pullOut();

    /// The link that has the address.
    unsigned link() const noexcept { return link_; }

private:
    Clock::time_point changeRoute(unsigned short type, unsigned short flags);
    Clock::time_point setOtherEnd(bool isUp);

    RoutingSocket socket_;
    unsigned link_ = 0;
    unsigned otherEnd_ = 0;
};

/// The least that knows whether the network of a `Cable` is there: reads the messages, and asks nothing.
///
/// Threads: one thread at a time.
class BareListener {
public:
    explicit BareListener(const Cable& cable);

    /// Waits until the network is there, or not; returns whether that came in time.
    bool waitFor(bool isOnline, Clock::time_point deadline);

    /// Hears what comes until then.
    void gather(Clock::time_point end);

private:
    void hear(std::span<const std::byte> datagram);

    RoutingSocket socket_;
    unsigned link_;
    bool hasRoute_ = true;
    bool isRunning_ = true;
};

} // namespace vorlan::benchmarks
