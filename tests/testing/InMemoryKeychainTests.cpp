// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/InMemoryKeychain.h>

#include <VorlanFoundation/Keychain.h>
#include <VorlanFoundation/Platform/KeychainStore.h>
#include <VorlanFoundation/Testing/KeychainFault.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

using namespace vorlan;
using vorlan::testing::InMemoryKeychain;
using vorlan::testing::TemporaryHome;
namespace fs = std::filesystem;

namespace {

const Value::Dictionary item{
    {kSecClass, kSecClassGenericPassword}, {kSecAttrService, "service"}, {kSecAttrAccount, "a"}};

} // namespace

TEST(InMemoryKeychain, KeepsSecretsInMemoryAndNowhereElse) {
    const TemporaryHome home;
    const InMemoryKeychain keychain;
    EXPECT_EQ(KeychainStore::current(), KeychainOptions::Store::memory);
    EXPECT_EQ(SecItemAdd(item), errSecSuccess);
    EXPECT_EQ(SecItemCopyMatching(item), errSecSuccess);
    EXPECT_FALSE(fs::exists(fs::path(std::getenv("XDG_DATA_HOME")) / "vorlan"));
}

TEST(InMemoryKeychain, StartsEmptyAndGoesWithItsItems) {
    const TemporaryHome home;
    {
        const InMemoryKeychain keychain;
        EXPECT_EQ(SecItemAdd(item), errSecSuccess);
    }
    {
        const InMemoryKeychain keychain;
        EXPECT_EQ(SecItemCopyMatching(item), errSecItemNotFound);
        EXPECT_EQ(SecItemAdd(item), errSecSuccess);
    }
    EXPECT_EQ(SecItemCopyMatching(item), errSecItemNotFound) << "in the user's keychain, which is empty";
}

TEST(InMemoryKeychain, StoreOfBeforeIsUsedAgainWhenItIsGone) {
    const TemporaryHome home;
    KeychainStore::configure({.store = KeychainOptions::Store::embedded});
    EXPECT_EQ(SecItemAdd(item), errSecSuccess);
    {
        const InMemoryKeychain keychain;
        EXPECT_EQ(SecItemCopyMatching(item), errSecItemNotFound);
        EXPECT_EQ(SecItemAdd(item), errSecSuccess);
    }
    EXPECT_EQ(KeychainStore::current(), KeychainOptions::Store::embedded);
    EXPECT_EQ(SecItemDelete(item), errSecSuccess);
    EXPECT_EQ(SecItemCopyMatching(item), errSecItemNotFound);
}

TEST(InMemoryKeychain, EveryThreadUsesIt) {
    const InMemoryKeychain keychain;
    std::jthread([] { EXPECT_EQ(SecItemAdd(item), errSecSuccess); }).join();
    EXPECT_EQ(SecItemCopyMatching(item), errSecSuccess);
}

TEST(InMemoryKeychain, HasNothingToLockAndNoPassphrase) {
    const InMemoryKeychain keychain;
    EXPECT_EQ(KeychainStore::lock(), errSecUnimplemented);
    EXPECT_EQ(KeychainStore::unlock("words"), errSecUnimplemented);
    EXPECT_EQ(KeychainStore::setPassphrase("words"), errSecUnimplemented);
}
