// SPDX-License-Identifier: Apache-2.0
#include "tests/keychain/ManagerKit.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

using namespace vorlan;
using namespace vorlan::tests;

using Texts = std::vector<std::string>;

namespace {

const auto value = dataFromText("value");
const std::string listingFailed =
    "\"Failed to remove keys. Reason: The operation couldn\u2019t be completed. "
    "(VorlanFoundation.KeychainError error 1.)\"\n";

} // namespace

TEST(KeychainManager, RemovedKeyIsGone) {
    const Kit kit;
    auto manager = makeManager();
    manager.insert("key", value);
    manager.insert("other", value);
    EXPECT_TRUE(manager.remove("key"));
    EXPECT_EQ(accountsOf(), Texts{"other"});
}

TEST(KeychainManager, RemovingAMissingKeyIsTrue) {
    const Kit kit;
    EXPECT_TRUE(makeManager().remove("key"));
}

TEST(KeychainManager, RemovingIsFalseWhenItFails) {
    Kit kit;
    auto manager = makeManager();
    manager.insert("key", value);
    kit.fault.answer(Operation::remove, errSecParam);
    EXPECT_FALSE(manager.remove("key"));
    kit.fault.answer(Operation::remove, errSecNotAvailable);
    EXPECT_FALSE(manager.remove("key"));
    kit.fault.advance(std::chrono::seconds(5));
    EXPECT_TRUE(manager.remove("key"));
}

TEST(KeychainManager, RemovingFindsTheKeyWhateverItsAccessibilityFlagAndGeneric) {
    const Kit kit;
    makeManager({.accessibility = always}).insert("a", value);
    makeManager({.synchronizable = true, .accessibility = always}).insert("a", value);
    makeManager({.synchronizable = true}).insert("b", value);
    const Value::Dictionary foreign{{kSecClass, kSecClassGenericPassword},
                                    {kSecAttrService, "com.example.mail"},
                                    {kSecAttrAccount, "c"},
                                    {kSecAttrGeneric, dataFromText("of another program")}};
    EXPECT_EQ(SecItemAdd(foreign), errSecSuccess);
    auto manager = makeManager();
    EXPECT_TRUE(manager.remove("a"));
    EXPECT_EQ(accountsOf(), (Texts{"b", "c"}));
    EXPECT_TRUE(manager.remove("b"));
    EXPECT_TRUE(manager.remove("c"));
    EXPECT_EQ(accountsOf(), Texts{});
}

TEST(KeychainManager, RemovingKeepsToTheServiceAndTheAccessGroup) {
    const Kit kit;
    makeManager({.service = "com.example.chat"}).insert("key", value);
    makeManager({.accessGroup = "other"}).insert("key", value);
    auto manager = makeManager({.accessGroup = "group"});
    EXPECT_TRUE(manager.remove("key"));
    EXPECT_EQ(itemsOf().size(), 2u);
    manager.insert("key", value);
    EXPECT_TRUE(manager.remove("key"));
    EXPECT_EQ(itemsOf().size(), 2u);
}

TEST(KeychainManager, RemovingAllKeysLeavesSynchronizableItems) {
    const Kit kit;
    makeManager().insert("one", value);
    makeManager({.accessibility = always}).insert("two", value);
    makeManager({.synchronizable = true}).insert("three", value);
    EXPECT_TRUE(makeManager().removeAllKeys());
    EXPECT_EQ(accountsOf(), Texts{"three"});
    EXPECT_TRUE(makeManager({.synchronizable = true}).removeAllKeys());
    EXPECT_EQ(accountsOf(), Texts{"three"}) << "whoever asks";
}

TEST(KeychainManager, RemovingAllKeysIsTrueWithoutAnyAndFalseWhenItFails) {
    Kit kit;
    auto manager = makeManager();
    EXPECT_TRUE(manager.removeAllKeys());
    kit.fault.answer(Operation::remove, errSecMissingEntitlement);
    EXPECT_FALSE(manager.removeAllKeys());
}

TEST(KeychainManager, RemovingAllKeysOfAnotherClassLeavesGenericPasswords) {
    const Kit kit;
    auto manager = makeManager();
    manager.insert("key", value);
    for (const auto securityClass : {SecurityClass::internetPassword, SecurityClass::certificate,
                                     SecurityClass::key, SecurityClass::identity})
        EXPECT_TRUE(manager.removeAllKeys(securityClass));
    EXPECT_EQ(accountsOf(), Texts{"key"});
    EXPECT_TRUE(manager.removeAllKeys(SecurityClass::genericPassword));
    EXPECT_EQ(accountsOf(), Texts{});
}

TEST(KeychainManager, RemovingAllKeysExceptSomeLeavesThose) {
    const Kit kit;
    auto manager = makeManager();
    for (const auto* key : {"a", "b", "c", "ab"}) manager.insert(key, value);
    EXPECT_EQ(printedBy([&] { manager.removeAllKeys({.except = {"b", "ab", "missing"}}); }), "");
    EXPECT_EQ(accountsOf(), (Texts{"b", "ab"}));
}

TEST(KeychainManager, RemovingAllKeysExceptNoneRemovesEveryListedOneOldestFirst) {
    Kit kit;
    auto manager = makeManager();
    for (const auto* key : {"a", "b", "c"}) manager.insert(key, value);
    kit.fault.answer(Operation::remove, errSecMissingEntitlement);
    manager.removeAllKeys({.except = {}});
    EXPECT_EQ(accountsOf(), Texts{"a"}) << "the oldest was refused, the others were asked for all the same";
    EXPECT_EQ(kit.fault.operations().size(), 3 + 1 + 3 + 1u);
}

TEST(KeychainManager, RemovingAllKeysExceptSomeCoversBothSynchronizableFlagsOfItsAccessibility) {
    const Kit kit;
    makeManager().insert("plain", value);
    makeManager({.synchronizable = true}).insert("synchronizable", value);
    makeManager({.accessibility = always}).insert("always", value);
    makeManager({.service = "com.example.chat"}).insert("another service", value);
    makeManager().removeAllKeys({.except = {}});
    EXPECT_EQ(accountsOf(), (Texts{"always", "another service"}));
}

TEST(KeychainManager, ItemWhoseAccountIsNoTextIsNotListed) {
    const Kit kit;
    auto manager = makeManager();
    manager.insert("key", value);
    const Value::Dictionary foreign{{kSecClass, kSecClassGenericPassword},
                                    {kSecAttrService, "com.example.mail"},
                                    {kSecAttrAccount, Data{std::byte{0xFF}}}};
    EXPECT_EQ(SecItemAdd(foreign), errSecSuccess);
    EXPECT_EQ(printedBy([&] { manager.removeAllKeys({.except = {}}); }), "");
    EXPECT_EQ(accountsOf(), Texts{"\xFF"});
}

TEST(KeychainManager, KeysThatCannotBeListedAreReportedAndStay) {
    Kit kit;
    auto manager = makeManager();
    manager.insert("key", value);
    kit.fault.answer(Operation::copyMatching, errSecParam);
    EXPECT_EQ(printedBy([&] { manager.removeAllKeys({.except = {}}); }), listingFailed);
    EXPECT_EQ(accountsOf(), Texts{"key"});
}

TEST(KeychainManager, NoKeysAtAllCannotBeListedEither) {
    const Kit kit;
    auto manager = makeManager();
    EXPECT_EQ(printedBy([&] { manager.removeAllKeys({.except = {"key"}}); }), listingFailed);
}

// Success, but nothing came back.
TEST(KeychainManager, EmptyAnswerToTheListingIsReportedAsOne) {
    Kit kit;
    auto manager = makeManager();
    kit.fault.answer(Operation::copyMatching, errSecSuccess);
    EXPECT_EQ(printedBy([&] { manager.removeAllKeys({.except = {}}); }),
              "\"Failed to remove keys. Reason: The operation couldn\u2019t be completed. "
              "(VorlanFoundation.KeychainError error 2.)\"\n");
}
