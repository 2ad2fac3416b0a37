// SPDX-License-Identifier: Apache-2.0
#pragma once

// Failures on their way to the function that answers with their status.

#include <VorlanFoundation/Platform/Security.h>

#include <exception>

namespace vorlan::security {

/// A failure with the status that it comes to. Never leaves a store.
///
/// Threads: safe from any thread (a value that never changes).
class StatusError final : public std::exception {
public:
    explicit StatusError(OSStatus status) noexcept : status_(status) {}

    OSStatus status() const noexcept { return status_; }
    const char* what() const noexcept override { return "an operation of the keychain failed"; }

private:
    OSStatus status_;
};

} // namespace vorlan::security
