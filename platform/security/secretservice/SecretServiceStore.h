// SPDX-License-Identifier: Apache-2.0
#pragma once

// Keychain items in the desktop's keyring: any freedesktop Secret Service on the session's bus.

#include "platform/security/ItemStore.h"

#include <VorlanFoundation/Platform/DispatchTimeInterval.h>
#include <VorlanFoundation/Platform/FunctionRef.h>

#include <chrono>
#include <memory>

namespace vorlan::security {

namespace secretservice {
class CommonConnection;
class Keyring;
} // namespace secretservice

/// How a store deals with the keyring.
struct SecretServiceOptions {
    bool allowsPrompts = false;                          ///< Whether it may ask the user.
    bool hidesLabels = false;                            ///< Whether items go without a label of their names.
    DispatchTimeInterval wait = std::chrono::seconds(0); ///< For a service that is not there yet.
    DispatchTimeInterval callLimit = std::chrono::seconds(5); ///< For a service that does not answer.
};

/// The store in the desktop's keyring.
///
/// Threads: safe from any thread; no call waits for another, but for the first of them, which connects.
/// Time:    a service that does not answer is given up after `callLimit` altogether; that begins again with
///          each item which a call goes through.
class SecretServiceStore final : public ItemStore {
public:
    explicit SecretServiceStore(SecretServiceOptions options);
    ~SecretServiceStore() override;

    OSStatus add(const KeychainItem& item) override;
    OSStatus find(const ItemRequest& request, std::vector<KeychainItem>& found) override;
    OSStatus update(const ItemMatch& match, const ItemChange& change) override;
    OSStatus remove(const ItemMatch& match) override;
    bool needsLoneWriter() const override { return true; }
    bool isReady() override;
    OSStatus lock() override;
    OSStatus unlock(std::string_view passphrase) override;
    std::string description() const override { return "the desktop's keyring (org.freedesktop.secrets)"; }

private:
    using Work = FunctionRef<OSStatus(secretservice::Keyring&)>;

    OSStatus perform(const SecretServiceOptions& options, Work work);

    SecretServiceOptions options_;
    std::unique_ptr<secretservice::CommonConnection> connection_;
};

} // namespace vorlan::security
