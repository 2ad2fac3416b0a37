// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the rows of the keychain have in common: accounts, a secret, and our store filled with a number of them.

#include <VorlanFoundation/Platform/KeychainStore.h>
#include <VorlanFoundation/Platform/Security.h>

#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace vorlan::benchmarks {

/// What is kept: as long as a token may be.
inline const std::string& sampleSecret() {
    static const std::string secret(48, 's');
    return secret;
}

inline std::string sampleAccount(std::size_t number) {
    return "person-" + std::to_string(number) + "@example.org";
}

inline Data sampleData() {
    const auto* bytes = reinterpret_cast<const std::byte*>(sampleSecret().data());
    return {bytes, bytes + sampleSecret().size()};
}

inline Value::Dictionary sampleQuery(const std::string& account) {
    return {{kSecClass, kSecClassGenericPassword},
            {kSecAttrService, "org.example.vault"},
            {kSecAttrAccessible, kSecAttrAccessibleWhenUnlocked},
            {kSecAttrSynchronizable, false},
            {kSecAttrAccount, account}};
}

inline OSStatus addSample(const std::string& account) {
    auto item = sampleQuery(account);
    item[kSecValueData] = sampleData();
    return SecItemAdd(item);
}

/// Has the keychain be the embedded one in a folder, with `count` items: added now where it is new.
inline void openSampleKeychain(const std::filesystem::path& folder, std::size_t count) {
    KeychainStore::configure({.store = KeychainOptions::Store::embedded, .folder = folder});
    for (std::size_t i = 0; i < count; ++i) {
        const auto status = addSample(sampleAccount(i));
        if (status == errSecDuplicateItem) return;
        if (status != errSecSuccess) throw std::runtime_error(SecCopyErrorMessageString(status));
    }
}

} // namespace vorlan::benchmarks
