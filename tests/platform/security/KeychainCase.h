// SPDX-License-Identifier: Apache-2.0
#pragma once

// The same test on every store of keychain items.

#include "tests/platform/security/secretservice/FakeSecretService.h"
#include "tests/platform/security/secretservice/GnomeKeyring.h"
#include "tests/support/PrivateBus.h"

#include <VorlanFoundation/Platform/KeychainStore.h>
#include <VorlanFoundation/Platform/Security.h>
#include <VorlanFoundation/Platform/Value.h>
#include <VorlanFoundation/Testing/KeychainFault.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace vorlan::tests {

/// Who keeps the items.
enum class Keeper { memory, embedded, gnomeKeyring, fakeService };

inline const auto everyKeeper =
    ::testing::Values(Keeper::memory, Keeper::embedded, Keeper::gnomeKeyring, Keeper::fakeService);

/// What a case is called after a slash.
std::string nameOfKeeper(const ::testing::TestParamInfo<Keeper>& info);

using Dictionary = Value::Dictionary;
using Texts = std::vector<std::string>;

/// Entries of two dictionaries; those of the second win.
Dictionary operator+(const Dictionary& base, const Dictionary& more);

/// A keychain of the test's own in each of the stores, empty at first.
class KeychainCase : public ::testing::TestWithParam<Keeper> {
protected:
    void SetUp() override;
    void TearDown() override;

    // The four functions. Each call comes when a hold-off after the one before is over: it has tests of its own.
    OSStatus add(const Dictionary& attributes, Value* result = nullptr);
    OSStatus find(const Dictionary& query, Value* result = nullptr);
    OSStatus update(const Dictionary& query, const Dictionary& change);
    OSStatus remove(const Dictionary& query);

    /// What identifies an item of a service named "service".
    static Dictionary item(const std::string& account, const Dictionary& more = {});

    /// The attributes and secrets of all items that agree, oldest first; synchronizable or not, where the query does
    /// not say.
    Value::Array items(Dictionary query = {});

    /// Their accounts.
    Texts accounts(Dictionary query = {});

    /// The reference of the one item that agrees.
    Data reference(const Dictionary& query);

    /// How the process uses the keychain, with options beside the store.
    void configure(KeychainOptions options = {});

    /// Whether it is the desktop's keyring, where each call takes its time.
    bool isOnTheBus() const;

private:
    testing::TemporaryHome home_;
    std::optional<support::PrivateBus> bus_;
    std::optional<GnomeKeyring> keyring_;
    std::optional<FakeSecretService> fake_;
    testing::KeychainFault fault_;
};

} // namespace vorlan::tests
