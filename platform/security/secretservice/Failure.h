// SPDX-License-Identifier: Apache-2.0
#pragma once

// Why a keyring could not do what it was asked.

#include <VorlanFoundation/Platform/Security.h>

#include <gio/gio.h>

#include <exception>

namespace vorlan::security::secretservice {

/// Ends an operation on its way through the keyring's calls; the store makes a status of it.
///
/// Threads: safe from any thread (a plain value).
class Failure final : public std::exception {
public:
    enum class Kind {
        locked, ///< What was asked for is locked.
        gone,   ///< The object that was asked is not there: an item that somebody else deleted.
        lost,   ///< The service or the bus is no more; a new connection may find another.
        other,
    };

    Failure(Kind kind, OSStatus status) noexcept : kind_(kind), status_(status) {}

    /// What an error of a call over the bus means.
    explicit Failure(const GError& error);

    Kind kind() const noexcept { return kind_; }
    OSStatus status() const noexcept { return status_; }
    const char* what() const noexcept override { return "the keyring failed"; }

private:
    Kind kind_ = Kind::other;
    OSStatus status_ = errSecNotAvailable;
};

} // namespace vorlan::security::secretservice
