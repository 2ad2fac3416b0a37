// SPDX-License-Identifier: Apache-2.0
// A keyring that is locked.
#include "tests/platform/security/secretservice/KeyringItems.h"

namespace vorlan::tests {

namespace {

using Prompts = FakeSecretService::Prompts;

class SecretServiceLockTest : public FakeKeyringTest {
protected:
    SecretServiceLockTest() { EXPECT_EQ(add("anna", "secret"), errSecSuccess); }

    void expectAllToBe(OSStatus status) {
        EXPECT_EQ(read("anna"), status);
        EXPECT_EQ(update("anna", "new"), status);
        EXPECT_EQ(remove("anna"), status);
        EXPECT_EQ(add("anna", "new"), status);
        EXPECT_EQ(add("bert", "new"), status);
        EXPECT_EQ(read("carl"), status);
        EXPECT_EQ(remove("carl"), status);
    }

    void expectAllAfterUnlocking() {
        fake_.setLocked(false);
        EXPECT_EQ(secretOf("anna"), "secret");
        EXPECT_EQ(fake_.itemCount(), 1U);
    }
};

} // namespace

TEST_F(SecretServiceLockTest, KeyringWithoutAPasswordIsUnlockedWithoutAQuestion) {
    const auto lock = [&] { fake_.setLocked(true, false); };
    lock();
    EXPECT_EQ(secretOf("anna"), "secret");
    lock();
    EXPECT_EQ(update("anna", "new"), errSecSuccess);
    lock();
    EXPECT_EQ(add("bert", "other"), errSecSuccess);
    lock();
    EXPECT_EQ(read("carl"), errSecItemNotFound);
    lock();
    EXPECT_EQ(remove("anna"), errSecSuccess);
    EXPECT_EQ(fake_.itemCount(), 1U);
    EXPECT_EQ(fake_.callCount("Prompt"), 0U);
}

TEST_F(SecretServiceLockTest, UserIsNotAskedWithoutLeave) {
    fake_.setLocked(true);
    fake_.setPrompts(Prompts::granted);
    expectAllToBe(errSecInteractionNotAllowed);
    EXPECT_EQ(fake_.callCount("Prompt"), 0U);
    EXPECT_GE(fake_.callCount("Dismiss"), 1U);
    expectAllAfterUnlocking();
}

TEST_F(SecretServiceLockTest, UserWhoAgreesUnlocksTheKeyring) {
    fake_.setLocked(true);
    fake_.setPrompts(Prompts::granted);
    use({.allowsPrompts = true});
    EXPECT_EQ(secretOf("anna"), "secret");
    EXPECT_EQ(fake_.callCount("Prompt"), 1U);
}

TEST_F(SecretServiceLockTest, UserWhoAgreesUnlocksTheKeyringForEveryFunction) {
    const auto lock = [&] {
        fake_.setLocked(true);
        fake_.setPrompts(Prompts::granted);
    };
    use({.allowsPrompts = true});
    lock();
    EXPECT_EQ(update("anna", "new"), errSecSuccess);
    lock();
    EXPECT_EQ(add("bert", "other"), errSecSuccess);
    lock();
    EXPECT_EQ(remove("anna"), errSecSuccess);
    lock();
    EXPECT_EQ(read("anna"), errSecItemNotFound);
    EXPECT_EQ(fake_.callCount("Prompt"), 4U);
}

TEST_F(SecretServiceLockTest, UserWhoRefusesCancels) {
    fake_.setLocked(true);
    fake_.setPrompts(Prompts::dismissed);
    use({.allowsPrompts = true});
    expectAllToBe(errSecUserCanceled);
    expectAllAfterUnlocking();
}

TEST_F(SecretServiceLockTest, ItemsThatAreHiddenWhileLockedAreNotMissing) {
    fake_.setHidesLocked(true);
    fake_.setLocked(true);
    expectAllToBe(errSecInteractionNotAllowed);
    expectAllAfterUnlocking();
}

TEST_F(SecretServiceLockTest, HiddenItemsAreFoundOnceUnlockedWithoutAQuestion) {
    fake_.setHidesLocked(true);
    const auto lock = [&] { fake_.setLocked(true, false); };
    lock();
    EXPECT_EQ(secretOf("anna"), "secret");
    lock();
    EXPECT_EQ(add("anna", "new"), errSecDuplicateItem);
    lock();
    EXPECT_EQ(update("anna", "new"), errSecSuccess);
    lock();
    EXPECT_EQ(remove("anna"), errSecSuccess);
    EXPECT_EQ(fake_.itemCount(), 0U);
}

TEST_F(SecretServiceLockTest, HostLocksAndUnlocks) {
    EXPECT_EQ(KeychainStore::lock(), errSecSuccess);
    EXPECT_EQ(read("anna"), errSecInteractionNotAllowed);
    EXPECT_EQ(KeychainStore::unlock(), errSecInteractionNotAllowed);
    EXPECT_EQ(KeychainStore::unlock("passphrase"), errSecParam);
    use({.allowsPrompts = true});
    fake_.setPrompts(Prompts::dismissed);
    EXPECT_EQ(KeychainStore::unlock(), errSecUserCanceled);
    fake_.setPrompts(Prompts::granted);
    EXPECT_EQ(KeychainStore::unlock(), errSecSuccess);
    EXPECT_EQ(secretOf("anna"), "secret");
}

TEST_F(SecretServiceLockTest, FailureIsAnsweredAgainForAWhile) {
    fake_.setLocked(true);
    EXPECT_EQ(read("anna"), errSecInteractionNotAllowed);
    const auto calls = fake_.callCount("SearchItems");
    EXPECT_EQ(SecItemCopyMatching(itemOf("anna")), errSecInteractionNotAllowed);
    EXPECT_EQ(fake_.callCount("SearchItems"), calls);
}

} // namespace vorlan::tests
