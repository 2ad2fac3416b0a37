// SPDX-License-Identifier: Apache-2.0
#pragma once

// What is known about the way to the network at one moment.
//
//     const NWPath path = monitor.currentPath();
//     const bool free = !path.usesInterfaceType(InterfaceType::cellular);
//     if (path.status() == NWPath::Status::satisfied && free) synchronise();

#include <VorlanFoundation/Platform/Export.h>

#include <memory>
#include <string>
#include <vector>

namespace vorlan {

/// What a network interface is, as far as it matters to those who pay for it or wait for it.
enum class InterfaceType {
    other,         ///< A tunnel, a point-to-point link, or one of a nature that is not known.
    wifi,          ///< An 802.11 radio.
    cellular,      ///< A mobile-phone modem.
    wiredEthernet, ///< Ethernet, or something that behaves like it.
    loopback,      ///< The machine itself; never a way to the network.
};

/// The way to the network at one moment: whether there is one, and over which interfaces.
///
/// It is a hint, drawn from what this machine knows by itself: routes, links and addresses. A firewall, a
/// captive portal, or a failure further away is not seen. Hosts should try all the same, and use it to time
/// their tries.
///
/// Threads: safe from any thread (an immutable value; copies share it).
class VORLAN_EXPORT NWPath {
public:
    /// Whether connections can be made.
    enum class Status {
        satisfied,   ///< There is a way to the network.
        unsatisfied, ///< There is none.
        /// There could be one, once something is connected first. Linux does not tell that by itself; only a source
        /// that a host or a test writes reports it.
        requiresConnection,
    };

    /// What a path is made from; for sources of paths, and for tests.
    struct Description {
        /// Whether connections can be made.
        Status status = Status::unsatisfied;
        /// The types of the interfaces in use, in any order. A tunnel counts with what carries it.
        std::vector<InterfaceType> interfaceTypes{};
        /// The names of the interfaces in use, those that connections leave by first.
        std::vector<std::string> availableInterfaces{};
        /// The next hops, as text.
        std::vector<std::string> gateways{};
        /// The addresses that new connections would come from, as text.
        std::vector<std::string> localAddresses{};
        /// Whether the IPv4 network can be reached.
        bool supportsIPv4 = false;
        /// Whether the IPv6 network can be reached.
        bool supportsIPv6 = false;
        /// Why the path is what it is, in one line.
        std::string reason{};
    };

    /// An unsatisfied path without a reason.
    NWPath();

    /// The path of that description.
    explicit NWPath(Description description);

    /// Whether connections can be made.
    Status status() const noexcept { return description_->status; }

    /// Whether an interface of that type is in use.
    bool usesInterfaceType(InterfaceType type) const noexcept;

    /// The names of the interfaces in use: first those that connections leave by, then what carries a tunnel.
    const std::vector<std::string>& availableInterfaces() const noexcept {
        return description_->availableInterfaces;
    }

    /// The next hops, as text; a link-local one with its interface ("fe80::1%eth0").
    const std::vector<std::string>& gateways() const noexcept { return description_->gateways; }

    /// The addresses that new connections would come from, as text.
    const std::vector<std::string>& localAddresses() const noexcept { return description_->localAddresses; }

    /// Whether the IPv4 network can be reached.
    bool supportsIPv4() const noexcept { return description_->supportsIPv4; }

    /// Whether the IPv6 network can be reached.
    bool supportsIPv6() const noexcept { return description_->supportsIPv6; }

    /// Why the path is what it is, in one line of English, for a log or a bug report: what was asked, by
    /// which interface and from which address it would leave, and what speaks against it. Not meant to be
    /// parsed.
    const std::string& reason() const noexcept { return description_->reason; }

    /// Equal when everything but the reason is.
    VORLAN_EXPORT friend bool operator==(const NWPath& a, const NWPath& b) noexcept;

private:
    std::shared_ptr<const Description> description_;
};

} // namespace vorlan
