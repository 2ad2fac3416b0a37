// SPDX-License-Identifier: Apache-2.0
#pragma once

// Managers for tests, and a look past them at what they keep.

#include <VorlanFoundation/Keychain.h>
#include <VorlanFoundation/Platform/Security.h>
#include <VorlanFoundation/Platform/Value.h>
#include <VorlanFoundation/Testing/InMemoryKeychain.h>
#include <VorlanFoundation/Testing/KeychainFault.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vorlan::tests {

inline constexpr auto whenUnlocked = Accessibility::unlocked({.thisDeviceOnly = false});
inline constexpr auto always = Accessibility::always({.thisDeviceOnly = false});

/// What a manager of a test is made of.
struct Setup {
    std::string service = "com.example.mail";
    std::optional<std::string> accessGroup = std::nullopt;
    bool synchronizable = false;
    Accessibility accessibility = whenUnlocked;
};

inline KeychainManager makeManager(const Setup& setup = {}) {
    return KeychainManager::with([&](KeychainSettings& settings) {
        settings.service = setup.service;
        settings.accessGroup = setup.accessGroup;
        settings.synchronizable = setup.synchronizable;
        settings.accessibility = setup.accessibility;
    });
}

/// A keychain of the test's own, with a place for faults and a clock that stands still.
struct Kit {
    testing::InMemoryKeychain keychain{};
    testing::KeychainFault fault{};
};

using Operation = testing::KeychainFault::Operation;
using Operations = std::vector<Operation>;

/// The attributes and values of all generic passwords that agree with `query`, synchronizable or not.
inline Value::Array itemsOf(Value::Dictionary query = {}) {
    query.insert({{kSecClass, kSecClassGenericPassword},
                  {kSecAttrSynchronizable, kSecAttrSynchronizableAny},
                  {kSecReturnAttributes, kCFBooleanTrue},
                  {kSecReturnData, kCFBooleanTrue},
                  {kSecMatchLimit, kSecMatchLimitAll}});
    Value result;
    const auto status = SecItemCopyMatching(query, &result);
    if (status == errSecItemNotFound) return {};
    EXPECT_EQ(status, errSecSuccess);
    return result.as<Value::Array>().value_or(Value::Array{});
}

/// Their accounts, as far as they are texts, in the order of their creation.
inline std::vector<std::string> accountsOf(Value::Dictionary query = {}) {
    std::vector<std::string> accounts;
    for (const auto& item : itemsOf(std::move(query)))
        accounts.push_back(textFromData(item[kSecAttrAccount].as<Data>().value_or(Data())));
    return accounts;
}

/// What a callable writes to standard output.
template <class Work>
std::string printedBy(Work&& work) {
    ::testing::internal::CaptureStdout();
    work();
    return ::testing::internal::GetCapturedStdout();
}

} // namespace vorlan::tests
