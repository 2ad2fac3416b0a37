// SPDX-License-Identifier: Apache-2.0
#pragma once

// What stands between the keychain's functions and the store.

#include "platform/security/HoldOff.h"
#include "platform/security/KeychainSession.h"

#include <VorlanFoundation/Platform/KeychainFaults.h>
#include <VorlanFoundation/Platform/KeychainStore.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>

namespace vorlan::security {

/// The process's use of the keychain: its configuration, and the hold-off after failures.
///
/// Threads: safe from any thread. In a child that was forked without exec, where locks may be held by threads that
///          are not there, and connections are another's, everything is errSecNotAvailable.
class KeychainAccess {
public:
    static KeychainAccess& shared();

    /// Does an operation of Security.h, unless a failure has just been, or `check`, which was found out about the
    /// caller's dictionaries, already is the answer.
    OSStatus perform(detail::KeychainOperation operation, OSStatus check, KeychainSession::Body body);

    /// Does what is not for the hold-off.
    OSStatus manage(KeychainSession::Access access, KeychainSession::Body body);

    /// The session of the configuration and the home folder of the moment; null in a forked child.
    std::shared_ptr<KeychainSession> session();

    void configure(KeychainOptions options);
    void setFaults(std::shared_ptr<detail::KeychainFaults> faults);
    void endHoldOff() { holdOff_.end(); }

private:
    KeychainAccess();

    std::shared_ptr<detail::KeychainFaults> faults() const;

    mutable std::mutex mutex_;
    std::shared_ptr<KeychainSession> session_;
    std::uint64_t generation_ = 0; ///< Of the home folder that the session is for.
    std::shared_ptr<detail::KeychainFaults> faults_;
    HoldOff holdOff_;
};

} // namespace vorlan::security
