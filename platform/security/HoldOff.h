// SPDX-License-Identifier: Apache-2.0
#pragma once

// Keeps a failure that is about to pass from looking like several different answers.

#include <VorlanFoundation/Platform/KeychainFaults.h>
#include <VorlanFoundation/Platform/Security.h>

#include <chrono>
#include <mutex>
#include <optional>

namespace vorlan::security {

/// Has the keychain answer the same for a while after a failure.
///
/// A host that clears up after a failed update (deletes, adds anew, and if that fails too deletes all) would erase
/// every item if a store failed in its first step and were back in a later one. So the whole chain fails.
///
/// Threads: safe from any thread.
class HoldOff {
public:
    /// What is to be answered now instead of asking the store; absent when it may be asked.
    std::optional<OSStatus> answer(std::chrono::nanoseconds now) const;

    /// Takes note of what an operation came to.
    void note(detail::KeychainOperation operation, OSStatus status, std::chrono::nanoseconds now);

    /// Ends it.
    void end();

private:
    mutable std::mutex mutex_;
    OSStatus status_ = errSecSuccess;
    std::chrono::nanoseconds until_{};
};

} // namespace vorlan::security
