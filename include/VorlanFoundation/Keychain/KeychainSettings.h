// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a KeychainManager is made from.

#include <VorlanFoundation/Keychain/Accessibility.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/FunctionRef.h>

#include <memory>
#include <optional>
#include <string>

namespace vorlan {

/// The settings of a KeychainManager: all absent at first, then filled in place.
///
/// Threads: one thread at a time.
/// Owns:    its texts.
class VORLAN_EXPORT KeychainSettings {
public:
    KeychainSettings() = default;
    KeychainSettings(const KeychainSettings&) = delete;
    KeychainSettings& operator=(const KeychainSettings&) = delete;
    ~KeychainSettings() = default;

    /// New settings that `configure` has filled; it is called once, on the caller's thread.
    static std::shared_ptr<KeychainSettings> with(FunctionRef<void(KeychainSettings&)> configure);

    /// What the items are for, best the application's identifier. Required.
    std::optional<std::string> service;
    /// Which applications share them; absent for none in particular.
    std::optional<std::string> accessGroup;
    /// Whether they may be carried to the user's other machines. Required.
    std::optional<bool> synchronizable;
    /// When they may be read. Required.
    std::optional<Accessibility> accessibility;
};

} // namespace vorlan
