// SPDX-License-Identifier: Apache-2.0
#pragma once

// When a secret may be read.

#include <VorlanFoundation/Platform/Security.h>

#include <string>

namespace vorlan {

/// When an item of the keychain may be read, and whether it stays on this machine.
///
///     Accessibility::unlocked({.thisDeviceOnly = true})
///
/// What each means in which store, KeychainStore tells.
///
/// Threads: safe from any thread (a value that never changes).
class Accessibility {
public:
    /// What each case carries.
    struct Payload {
        bool thisDeviceOnly; ///< Never carried to another machine.
    };

    /// At any time.
    static constexpr Accessibility always(Payload payload) noexcept { return {Case::always, payload}; }
    /// While the keychain is unlocked.
    static constexpr Accessibility unlocked(Payload payload) noexcept { return {Case::unlocked, payload}; }
    /// Once the keychain was unlocked, also when it is locked again.
    static constexpr Accessibility afterFirstUnlock(Payload payload) noexcept {
        return {Case::afterFirstUnlock, payload};
    }

    /// The constant of the keychain that says the same, the value of kSecAttrAccessible.
    std::string securityConstant() const {
        switch (case_) {
        case Case::always:
            return thisDeviceOnly_ ? kSecAttrAccessibleAlwaysThisDeviceOnly : kSecAttrAccessibleAlways;
        case Case::unlocked:
            return thisDeviceOnly_ ? kSecAttrAccessibleWhenUnlockedThisDeviceOnly
                                   : kSecAttrAccessibleWhenUnlocked;
        case Case::afterFirstUnlock: break;
        }
        return thisDeviceOnly_ ? kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly
                               : kSecAttrAccessibleAfterFirstUnlock;
    }

private:
    enum class Case { always, unlocked, afterFirstUnlock };

    constexpr Accessibility(Case which, Payload payload) noexcept
        : case_(which), thisDeviceOnly_(payload.thisDeviceOnly) {}

    Case case_;
    bool thisDeviceOnly_;
};

} // namespace vorlan
