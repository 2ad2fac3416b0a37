// SPDX-License-Identifier: Apache-2.0
// A keyring that changes while it is asked.
#include "tests/platform/security/secretservice/KeyringItems.h"

#include <thread>
#include <utility>
#include <vector>

namespace vorlan::tests {

namespace {

constexpr char lockedError[] = "org.freedesktop.Secret.Error.IsLocked";
constexpr char sessionError[] = "org.freedesktop.Secret.Error.NoSession";

class SecretServiceChangeTest : public FakeKeyringTest {
protected:
    SecretServiceChangeTest() { EXPECT_EQ(add("anna", "secret"), errSecSuccess); }

    /// Reads an item that is always there, from a keyring that is locked and unlocked between any two calls to it. What
    /// lasts for less than three of them cannot be noticed by who is to ask for the default collection first.
    void expectFoundOrLockedWhileTheKeyringTurns() {
        for (std::size_t calls = 3; calls < 10; ++calls) {
            for (std::size_t first = 0; first < calls; ++first) {
                fake_.turnLockEvery(calls, first);
                const auto status = read("anna");
                EXPECT_TRUE(status == errSecSuccess || status == errSecInteractionNotAllowed)
                    << status << ", turned after " << first << " and then every " << calls << " calls";
            }
        }
        fake_.turnLockEvery(0);
        EXPECT_EQ(secretOf("anna"), "secret");
    }
};

} // namespace

TEST_F(SecretServiceChangeTest, KeyringThatIsLockedMeanwhileIsLocked) {
    const std::vector<std::pair<const char*, OSStatus (*)()>> steps{
        {"SetSecret", [] { return update("anna", "new"); }},
        {"Delete", [] { return remove("anna"); }},
        {"CreateItem", [] { return add("bert", "other"); }},
        {"SearchItems", [] { return read("anna"); }},
    };
    for (const auto& [method, function] : steps) {
        fake_.fail(method, lockedError);
        EXPECT_EQ(function(), errSecInteractionNotAllowed) << method;
        EXPECT_EQ(secretOf("anna"), "secret") << method;
    }
    EXPECT_EQ(fake_.itemCount(), 1U);
}

TEST_F(SecretServiceChangeTest, ReadingIsDoneAgainInAFreshSession) {
    fake_.fail("GetSecrets", sessionError);
    EXPECT_EQ(secretOf("anna"), "secret");
    EXPECT_EQ(fake_.callCount("GetSecrets"), 2U);
}

TEST_F(SecretServiceChangeTest, KeyringThatIsLockedAndUnlockedHasItsItemsAllTheTime) {
    expectFoundOrLockedWhileTheKeyringTurns();
}

TEST_F(SecretServiceChangeTest, KeyringThatHidesItsItemsWhileLockedHasThemAllTheTime) {
    fake_.setHidesLocked(true);
    expectFoundOrLockedWhileTheKeyringTurns();
}

TEST_F(SecretServiceChangeTest, ItemsThatOthersSpoiltAreNotMissingAndCanBeRemoved) {
    fake_.duplicateItems({{"uuid", "nonsense"}});
    const auto status = read("anna");
    EXPECT_TRUE(status == errSecSuccess || status == errSecDecode) << status;
    EXPECT_EQ(add("anna", "new"), errSecDuplicateItem);
    EXPECT_EQ(remove("anna"), errSecSuccess);
    EXPECT_EQ(fake_.itemCount(), 0U);
}

TEST_F(SecretServiceChangeTest, HungKeyringThatIsKilledIsNotWaitedFor) {
    fake_.ignore("SearchItems", FakeSecretService::always);
    const auto before = fake_.callCount("SearchItems");
    std::thread killer([&] {
        fake_.waitForCalls("SearchItems", before + 1);
        fake_.disconnect();
    });
    const auto duration = durationOf([] { EXPECT_EQ(read("anna"), errSecNotAvailable); });
    killer.join();
    EXPECT_LT(duration, std::chrono::seconds(4));
    fake_.behave();
    fake_.connect();
    EXPECT_EQ(secretOf("anna"), "secret");
}

} // namespace vorlan::tests
