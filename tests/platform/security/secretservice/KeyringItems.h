// SPDX-License-Identifier: Apache-2.0
#pragma once

// Items of one service in the desktop's keyring, as a host adds, reads, changes and deletes them.

#include "tests/platform/security/secretservice/FakeSecretService.h"
#include "tests/platform/security/secretservice/GnomeKeyring.h"
#include "tests/support/PrivateBus.h"

#include <VorlanFoundation/Platform/Data.h>
#include <VorlanFoundation/Platform/KeychainFaults.h>
#include <VorlanFoundation/Platform/KeychainStore.h>
#include <VorlanFoundation/Platform/Security.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <string>

namespace vorlan::tests {

inline constexpr char serviceName[] = "com.example.mail";

inline Value::Dictionary itemOf(const std::string& account) {
    return {
        {kSecClass, kSecClassGenericPassword}, {kSecAttrService, serviceName}, {kSecAttrAccount, account}};
}

/// What a call of the keychain came to.
///
/// A failure before it is forgotten, so that each call asks the store.
inline OSStatus add(const std::string& account, const std::string& secret) {
    detail::setKeychainFaults(nullptr);
    auto item = itemOf(account);
    item[kSecValueData] = dataFromText(secret);
    return SecItemAdd(item);
}

inline OSStatus update(const std::string& account, const std::string& secret) {
    detail::setKeychainFaults(nullptr);
    return SecItemUpdate(itemOf(account), {{kSecValueData, dataFromText(secret)}});
}

inline OSStatus remove(const std::string& account) {
    detail::setKeychainFaults(nullptr);
    return SecItemDelete(itemOf(account));
}

inline OSStatus read(const std::string& account) {
    detail::setKeychainFaults(nullptr);
    auto query = itemOf(account);
    query[kSecReturnData] = kCFBooleanTrue;
    Value result;
    return SecItemCopyMatching(query, &result);
}

/// The secret, or the status in parentheses.
inline std::string secretOf(const std::string& account) {
    detail::setKeychainFaults(nullptr);
    auto query = itemOf(account);
    query[kSecReturnData] = kCFBooleanTrue;
    Value result;
    const auto status = SecItemCopyMatching(query, &result);
    if (status != errSecSuccess) return "(" + std::to_string(status) + ")";
    const auto data = result.as<Data>();
    return data ? textFromData(*data) : "(no data)";
}

/// How many items of the service there are for a host.
inline std::size_t countOfItems() {
    detail::setKeychainFaults(nullptr);
    Value result;
    SecItemCopyMatching({{kSecClass, kSecClassGenericPassword},
                         {kSecAttrService, serviceName},
                         {kSecMatchLimit, kSecMatchLimitAll},
                         {kSecReturnAttributes, kCFBooleanTrue}},
                        &result);
    const auto items = result.as<Value::Array>();
    return items ? items->size() : 0;
}

/// How long something took.
template <class Function>
std::chrono::steady_clock::duration durationOf(Function function) {
    const auto begin = std::chrono::steady_clock::now();
    function();
    return std::chrono::steady_clock::now() - begin;
}

/// A home of its own, a bus of its own, and the desktop's keyring as the store.
class KeyringTest : public ::testing::Test {
protected:
    KeyringTest() { use({}); }

    /// Drops the connection to the keyring while its bus is there.
    ~KeyringTest() override { KeychainStore::configure({.store = KeychainOptions::Store::memory}); }

    /// A process that has just been started, as far as the keychain knows.
    static void use(KeychainOptions options) {
        options.store = KeychainOptions::Store::secretService;
        KeychainStore::configure(std::move(options));
    }

    vorlan::testing::TemporaryHome home_;
    support::PrivateBus bus_;
};

/// With a keyring that does what the test says.
class FakeKeyringTest : public KeyringTest {
protected:
    FakeSecretService fake_{bus_};
};

} // namespace vorlan::tests
