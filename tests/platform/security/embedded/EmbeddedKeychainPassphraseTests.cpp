// SPDX-License-Identifier: Apache-2.0

// The embedded store under a passphrase.

#include "tests/platform/security/embedded/EmbeddedKeychain.h"
#include "tests/platform/security/embedded/KeychainProcess.h"
#include "tests/platform/security/embedded/RawDatabase.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <vector>

using namespace vorlan;
using tests::EmbeddedKeychain;
using tests::KeychainProcess;
using tests::RawDatabase;
using tests::Secret;

namespace {

#ifdef VORLAN_SANITIZED
constexpr int rounds = 3;
#else
constexpr int rounds = 20;
#endif

const Secret locked{.status = errSecInteractionNotAllowed};

bool isInAFile(const std::filesystem::path& folder, const std::string& bytes) {
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (tests::contentOf(entry.path()).find(bytes) != std::string::npos) return true;
    return false;
}

// An item for each of the three times at which items may be read.
class EmbeddedKeychainPassphrase : public ::testing::Test {
protected:
    EmbeddedKeychainPassphrase() {
        EXPECT_EQ(keychain_.add("always", "a", {{kSecAttrAccessible, kSecAttrAccessibleAlways}}),
                  errSecSuccess);
        EXPECT_EQ(
            keychain_.add("afterwards", "b", {{kSecAttrAccessible, kSecAttrAccessibleAfterFirstUnlock}}),
            errSecSuccess);
        EXPECT_EQ(keychain_.add("unlocked", "c", {{kSecAttrAccessible, kSecAttrAccessibleWhenUnlocked}}),
                  errSecSuccess);
    }

    // Another process, or this one after a restart.
    void forgetKeys() { keychain_.reopen(); }

    OSStatus lock() {
        keychain_.endHoldOff();
        return KeychainStore::lock();
    }

    OSStatus unlock(std::string_view passphrase) {
        keychain_.endHoldOff();
        return KeychainStore::unlock(passphrase);
    }

    void expectOpen() {
        EXPECT_EQ(keychain_.read("always"), (Secret{errSecSuccess, "a"}));
        EXPECT_EQ(keychain_.read("afterwards"), (Secret{errSecSuccess, "b"}));
        EXPECT_EQ(keychain_.read("unlocked"), (Secret{errSecSuccess, "c"}));
    }

    // As after a restart.
    void expectLocked() {
        EXPECT_EQ(keychain_.read("always"), (Secret{errSecSuccess, "a"}));
        EXPECT_EQ(keychain_.read("afterwards"), locked);
        EXPECT_EQ(keychain_.read("unlocked"), locked);
    }

    EmbeddedKeychain keychain_;
};

} // namespace

TEST_F(EmbeddedKeychainPassphrase, WithoutOneThereIsNothingToLock) {
    EXPECT_EQ(lock(), errSecUnimplemented);
    expectOpen();
    EXPECT_EQ(unlock("anything"), errSecUnimplemented);
    expectOpen();
}

TEST_F(EmbeddedKeychainPassphrase, EmptyOneIsRefused) {
    EXPECT_EQ(KeychainStore::setPassphrase(""), errSecParam);
    EXPECT_EQ(lock(), errSecUnimplemented);
    forgetKeys();
    expectOpen();
}

TEST_F(EmbeddedKeychainPassphrase, ItemsStayOpenToWhoSetIt) {
    ASSERT_EQ(KeychainStore::setPassphrase("correct horse"), errSecSuccess);
    expectOpen();
}

TEST_F(EmbeddedKeychainPassphrase, LockLeavesWhatIsReadableAfterTheFirstUnlock) {
    ASSERT_EQ(KeychainStore::setPassphrase("correct horse"), errSecSuccess);
    ASSERT_EQ(lock(), errSecSuccess);
    EXPECT_EQ(keychain_.read("always"), (Secret{errSecSuccess, "a"}));
    EXPECT_EQ(keychain_.read("afterwards"), (Secret{errSecSuccess, "b"}));
    EXPECT_EQ(keychain_.read("unlocked"), locked);
    ASSERT_EQ(unlock("correct horse"), errSecSuccess);
    expectOpen();
}

TEST_F(EmbeddedKeychainPassphrase, AnotherProcessNeedsIt) {
    ASSERT_EQ(KeychainStore::setPassphrase("correct horse"), errSecSuccess);
    forgetKeys();
    expectLocked();
    ASSERT_EQ(unlock("correct horse"), errSecSuccess);
    expectOpen();
    ASSERT_EQ(lock(), errSecSuccess);
    EXPECT_EQ(keychain_.read("afterwards"), (Secret{errSecSuccess, "b"}));
    EXPECT_EQ(keychain_.read("unlocked"), locked);
    forgetKeys();
    expectLocked();
}

TEST_F(EmbeddedKeychainPassphrase, WrongOneOpensNothing) {
    ASSERT_EQ(KeychainStore::setPassphrase("correct horse"), errSecSuccess);
    forgetKeys();
    for (const auto* wrong : {"correct hors", "correct horse ", "Correct horse", ""}) {
        EXPECT_EQ(unlock(wrong), errSecAuthFailed) << wrong;
        expectLocked();
    }
    EXPECT_EQ(unlock("correct horse"), errSecSuccess);
    expectOpen();
}

TEST_F(EmbeddedKeychainPassphrase, UnlockingEndsTheTimeInWhichCallsAreRefused) {
    ASSERT_EQ(KeychainStore::setPassphrase("correct horse"), errSecSuccess);
    forgetKeys();
    const Value::Dictionary query{{kSecClass, kSecClassGenericPassword},
                                  {kSecAttrService, EmbeddedKeychain::service},
                                  {kSecAttrAccount, "unlocked"},
                                  {kSecReturnData, true}};
    Value found;
    ASSERT_EQ(SecItemCopyMatching(query, &found), errSecInteractionNotAllowed);
    ASSERT_EQ(KeychainStore::unlock("correct horse"), errSecSuccess);
    EXPECT_EQ(SecItemCopyMatching(query, &found), errSecSuccess) << "who has unlocked it need not wait";
}

TEST_F(EmbeddedKeychainPassphrase, LockedStoreAddsAndChangesNothingThatNeedsIt) {
    ASSERT_EQ(KeychainStore::setPassphrase("correct horse"), errSecSuccess);
    forgetKeys();
    EXPECT_EQ(keychain_.add("new", "secret"), errSecInteractionNotAllowed);
    EXPECT_EQ(keychain_.update("unlocked", "newer"), errSecInteractionNotAllowed);
    EXPECT_EQ(keychain_.add("new always", "d", {{kSecAttrAccessible, kSecAttrAccessibleAlways}}),
              errSecSuccess);
    EXPECT_EQ(keychain_.update("new always", "e"), errSecSuccess);
    EXPECT_EQ(keychain_.read("new always"), (Secret{errSecSuccess, "e"}));
    ASSERT_EQ(unlock("correct horse"), errSecSuccess);
    expectOpen();
    EXPECT_EQ(keychain_.read("new"), (Secret{errSecItemNotFound}));
}

TEST_F(EmbeddedKeychainPassphrase, LockedStoreCanBeListed) {
    ASSERT_EQ(KeychainStore::setPassphrase("correct horse"), errSecSuccess);
    forgetKeys();
    std::vector<std::string> keys;
    EXPECT_EQ(KeychainStore::keys(EmbeddedKeychain::service, keys), errSecSuccess);
    EXPECT_EQ(keys, (std::vector<std::string>{"always", "afterwards", "unlocked"}));
    EXPECT_EQ(keychain_.read("never stored"), (Secret{errSecItemNotFound})) << "names are no secrets here";
}

TEST_F(EmbeddedKeychainPassphrase, SettingAnotherOneNeedsTheFormer) {
    ASSERT_EQ(KeychainStore::setPassphrase("first"), errSecSuccess);
    forgetKeys();
    EXPECT_EQ(KeychainStore::setPassphrase("second"), errSecInteractionNotAllowed);
    EXPECT_EQ(KeychainStore::setPassphrase(std::nullopt), errSecInteractionNotAllowed);
    ASSERT_EQ(unlock("first"), errSecSuccess);
    ASSERT_EQ(KeychainStore::setPassphrase("second"), errSecSuccess);
    forgetKeys();
    EXPECT_EQ(unlock("first"), errSecAuthFailed);
    EXPECT_EQ(unlock("second"), errSecSuccess);
    expectOpen();
}

TEST_F(EmbeddedKeychainPassphrase, CanBeTakenAwayAgain) {
    ASSERT_EQ(KeychainStore::setPassphrase("correct horse"), errSecSuccess);
    ASSERT_EQ(KeychainStore::setPassphrase(std::nullopt), errSecSuccess);
    EXPECT_EQ(lock(), errSecUnimplemented);
    forgetKeys();
    expectOpen();
}

TEST_F(EmbeddedKeychainPassphrase, IsFoundInNoFile) {
    ASSERT_EQ(KeychainStore::setPassphrase("correct horse"), errSecSuccess);
    EXPECT_FALSE(isInAFile(keychain_.folder(), "correct horse"));
}

// Else a copy of the folder, with its key file, would do without the passphrase.
TEST_F(EmbeddedKeychainPassphrase, FormerKeysAreGoneFromTheFiles) {
    const auto former = RawDatabase(keychain_.database()).bytes("SELECT v FROM meta WHERE k = 'class keys'");
    ASSERT_GT(former.size(), 64U);
    EXPECT_TRUE(isInAFile(keychain_.folder(), former));
    ASSERT_EQ(KeychainStore::setPassphrase("correct horse"), errSecSuccess);
    EXPECT_FALSE(isInAFile(keychain_.folder(), former));
    expectOpen();
}

// In two processes: what one sets, the other has to know at its next unlock.
TEST_F(EmbeddedKeychainPassphrase, AnotherProcessSeesThatItWasSet) {
    KeychainProcess other;
    EXPECT_EQ(other.ask("get unlocked"), "0 c");
    ASSERT_EQ(KeychainStore::setPassphrase("correct"), errSecSuccess);
    EXPECT_EQ(other.ask("lock"), "0") << "it has a passphrase now";
    EXPECT_EQ(other.ask("get unlocked"), std::to_string(errSecInteractionNotAllowed));
    EXPECT_EQ(other.ask("unlock wrong"), std::to_string(errSecAuthFailed));
    EXPECT_EQ(other.ask("unlock correct"), "0");
    EXPECT_EQ(other.ask("configure"), "ok");
    EXPECT_EQ(other.ask("unlock correct"), "0");
    EXPECT_EQ(other.ask("get unlocked"), "0 c");
}

// Whatever instant it is: either the former passphrase opens it or the new one, and never neither.
TEST_F(EmbeddedKeychainPassphrase, ProcessThatIsKilledWhileSettingItLeavesOneThatOpens) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::size_t> counts(0, 3);
    std::uniform_int_distribution<int> milliseconds(0, 250);
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        KeychainProcess host;
        host.tell("change-passphrases");
        auto count = host.readAcknowledgements(counts(random));
        host.awaitAcknowledgement(milliseconds(random));
        count += host.kill();
        // The host sets these in turn, and none is where it begins.
        const std::vector<std::optional<std::string>> inTurn{std::nullopt, "first", "second"};
        const auto now = inTurn[count % 3];
        const auto next = inTurn[(count + 1) % 3];
        forgetKeys();
        const bool isOpen = keychain_.read("unlocked").status == errSecSuccess;
        const bool isOpened =
            isOpen || (now && unlock(*now) == errSecSuccess) || (next && unlock(*next) == errSecSuccess);
        EXPECT_TRUE(isOpened) << count << " were acknowledged";
        EXPECT_TRUE(!isOpen || !now || !next);
        expectOpen();
        ASSERT_EQ(KeychainStore::setPassphrase(std::nullopt), errSecSuccess);
    }
}
