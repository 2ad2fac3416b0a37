// SPDX-License-Identifier: Apache-2.0
#pragma once

// How tests come between the keychain's functions and the store.

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Security.h>

#include <chrono>
#include <memory>
#include <optional>

namespace vorlan::detail {

/// The four functions of Security.h.
enum class KeychainOperation { add, copyMatching, update, remove };

/// Stands before the store, below the hold-off.
///
/// Threads: called on the threads that use the keychain, on several at once.
class KeychainFaults {
public:
    virtual ~KeychainFaults() = default;

    /// What an operation answers; absent when the store is to be asked.
    virtual std::optional<OSStatus> answer(KeychainOperation operation) = 0;

    /// The time of the hold-off's clock.
    virtual std::chrono::nanoseconds now() = 0;
};

/// Puts faults in place, or takes them away (null); a hold-off that is under way ends.
VORLAN_EXPORT void setKeychainFaults(std::shared_ptr<KeychainFaults> faults);

} // namespace vorlan::detail
