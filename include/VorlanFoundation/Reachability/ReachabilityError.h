// SPDX-License-Identifier: Apache-2.0
#pragma once

// What keeps a reachability monitor from being made or started.
//
//     try {
//         host->startNotifier();
//     } catch (const ReachabilityError& error) {
//         Logger::log(error.what());
//     }

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/SocketAddress.h>

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>

namespace vorlan {

/// A failure of the system below `Reachability`: which step failed, and what the system said right after it.
///
/// Threads: safe from any thread (an immutable value; copies share it).
class VORLAN_EXPORT ReachabilityError : public std::exception {
public:
    /// Which step failed.
    enum class Case {
        failedToCreateWithAddress,  ///< Making the object of the zero address.
        failedToCreateWithHostname, ///< Making the object of a host name.
        unableToSetCallback,        ///< Starting: setting the callback.
        unableToSetDispatchQueue,   ///< Starting: setting the queue.
        unableToGetFlags,           ///< Finding the flags.
    };

    static ReachabilityError failedToCreateWithAddress(const SocketAddress& address, std::int32_t status);
    static ReachabilityError failedToCreateWithHostname(std::string hostname, std::int32_t status);
    static ReachabilityError unableToSetCallback(std::int32_t status);
    static ReachabilityError unableToSetDispatchQueue(std::int32_t status);
    static ReachabilityError unableToGetFlags(std::int32_t status);

    /// Which step failed.
    Case kind() const noexcept;

    /// The system's status, as SCError() told it (see SCErrorString).
    std::int32_t status() const noexcept;

    /// The address that was tried; only of `failedToCreateWithAddress`.
    const std::optional<SocketAddress>& address() const noexcept;

    /// The host name that was tried; only of `failedToCreateWithHostname`.
    const std::optional<std::string>& hostname() const noexcept;

    /// The case and its payload in one line, for logs; always well formed. A name is cut after 253 bytes, and control
    /// characters and line separators of it are shown as question marks.
    const char* what() const noexcept override;

    /// Equal when case and payload are.
    VORLAN_EXPORT friend bool operator==(const ReachabilityError& a, const ReachabilityError& b) noexcept;

private:
    struct Payload;

    explicit ReachabilityError(Payload payload);

    std::shared_ptr<const Payload> payload_;
};

} // namespace vorlan
