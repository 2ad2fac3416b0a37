// SPDX-License-Identifier: Apache-2.0
#pragma once

// A user who never had a keychain, in a session without a keyring.

#include "tests/platform/defaults/ReportedProblems.h"
#include "tests/platform/files/Environment.h"
#include "tests/platform/security/secretservice/FakeSecretService.h"
#include "tests/support/PrivateBus.h"

#include <VorlanFoundation/Platform/KeychainStore.h>
#include <VorlanFoundation/Platform/Security.h>
#include <VorlanFoundation/Platform/Value.h>
#include <VorlanFoundation/Testing/KeychainFault.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vorlan::tests {

/// What tests of the choice of the store begin with. Calls come when a hold-off after the one before is over.
class UserCase : public ::testing::Test {
protected:
    using Store = KeychainOptions::Store;
    using Dictionary = Value::Dictionary;
    using Texts = std::vector<std::string>;

    // The store of the test's end is not to outlive the bus that it is on.
    void TearDown() override { startAnew(); }

    /// A bus of the user's own, with a keyring on it.
    FakeSecretService& startKeyring() {
        bus_.emplace();
        return keyring_.emplace(*bus_);
    }

    /// A process that knows nothing of what was before.
    static void startAnew(KeychainOptions options = {}) { KeychainStore::configure(std::move(options)); }

    static Dictionary item(const std::string& account) {
        return {
            {kSecClass, kSecClassGenericPassword}, {kSecAttrService, "service"}, {kSecAttrAccount, account}};
    }

    OSStatus add(const std::string& account) {
        auto attributes = item(account);
        attributes[kSecValueData] = dataFromText("secret of " + account);
        return add(attributes);
    }

    OSStatus add(const Dictionary& attributes) {
        fault_.advance(std::chrono::seconds(5));
        return SecItemAdd(attributes);
    }

    OSStatus find(const std::string& account) {
        fault_.advance(std::chrono::seconds(5));
        return SecItemCopyMatching(item(account));
    }

    OSStatus update(const std::string& account, const Dictionary& change) {
        fault_.advance(std::chrono::seconds(5));
        return SecItemUpdate(item(account), change);
    }

    OSStatus remove(const std::string& account) {
        fault_.advance(std::chrono::seconds(5));
        return SecItemDelete(item(account));
    }

    /// Attributes and secrets of all items, oldest first.
    Value::Array items() {
        fault_.advance(std::chrono::seconds(5));
        Value result;
        const auto status = SecItemCopyMatching({{kSecClass, kSecClassGenericPassword},
                                                 {kSecAttrSynchronizable, kSecAttrSynchronizableAny},
                                                 {kSecReturnAttributes, true},
                                                 {kSecReturnData, true},
                                                 {kSecMatchLimit, kSecMatchLimitAll}},
                                                &result);
        EXPECT_TRUE(status == errSecSuccess || status == errSecItemNotFound) << status;
        return result.as<Value::Array>().value_or(Value::Array());
    }

    Texts accounts() {
        Texts accounts;
        for (const auto& found : items())
            accounts.push_back(textFromData(found[kSecAttrAccount].as<Data>().value_or(Data())));
        return accounts;
    }

    Data reference(const std::string& account) {
        fault_.advance(std::chrono::seconds(5));
        auto query = item(account);
        query[kSecReturnPersistentRef] = true;
        Value result;
        EXPECT_EQ(SecItemCopyMatching(query, &result), errSecSuccess);
        return result.as<Data>().value_or(Data());
    }

    static std::filesystem::path folder() {
        return std::filesystem::path(std::getenv("XDG_DATA_HOME")) / "vorlan/keychain";
    }
    static std::filesystem::path record() { return folder() / "store"; }
    static std::filesystem::path database() { return folder() / "keychain.db"; }

    static std::string contentOf(const std::filesystem::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

private:
    // A user's own keyring is not for tests.
    Environment surroundings_{{{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus"},
                               {"VORLAN_KEYCHAIN_STORE", std::nullopt},
                               {"VORLAN_KEY_FILE", std::nullopt}}};
    testing::TemporaryHome home_;

protected:
    testing::KeychainFault fault_;
    ReportedProblems problems_;
    std::optional<support::PrivateBus> bus_;
    std::optional<FakeSecretService> keyring_;
};

} // namespace vorlan::tests
