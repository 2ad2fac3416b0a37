// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/KeychainCase.h"

#include <VorlanFoundation/Platform/Date.h>

#include <map>
#include <string>

using namespace vorlan;
using namespace vorlan::tests;

namespace {

class KeychainUpdating : public KeychainCase {};

const Data secret = dataFromText("secret");
const Data another = dataFromText("another");
const Dictionary genericPasswords{{kSecClass, kSecClassGenericPassword}};

// What of an item an update leaves alone.
Dictionary without(const Value& item, const std::string& changed) {
    auto rest = *item.dictionary();
    rest.erase(changed);
    rest.erase(kSecAttrModificationDate);
    return rest;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Stores, KeychainUpdating, everyKeeper, nameOfKeeper);

TEST_P(KeychainUpdating, OnlyWhatIsGivenChangesAndTheTimeOfModification) {
    EXPECT_EQ(add(item("a", {{kSecValueData, secret}, {kSecAttrGeneric, secret}, {kSecAttrLabel, "label"}})),
              errSecSuccess);
    EXPECT_EQ(add(item("b", {{kSecValueData, secret}})), errSecSuccess);
    const auto known = reference(item("a"));
    for (const auto& [key, value] : Dictionary{{kSecValueData, another},
                                               {kSecAttrGeneric, another},
                                               {kSecAttrLabel, "another"},
                                               {kSecAttrAccessible, kSecAttrAccessibleAlways}}) {
        const auto before = items();
        EXPECT_EQ(update(item("a"), {{key, value}}), errSecSuccess) << key;
        const auto after = items();
        ASSERT_EQ(after.size(), 2u);
        EXPECT_EQ(after[0][key], value) << key;
        EXPECT_EQ(without(after[0], key), without(before[0], key)) << key;
        const auto later = after[0][kSecAttrModificationDate].as<Date>();
        const auto earlier = before[0][kSecAttrModificationDate].as<Date>();
        EXPECT_TRUE(isOnTheBus() ? later >= earlier : later > earlier) << "a keyring counts whole seconds";
        EXPECT_EQ(after[1], before[1]) << key;
    }
    EXPECT_EQ(reference(item("a")), known);
}

TEST_P(KeychainUpdating, ItemThatHeldNothingGetsASecretAndOneThatHadAnyMayBecomeEmpty) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    EXPECT_EQ(update(item("a"), {{kSecValueData, secret}}), errSecSuccess);
    EXPECT_EQ(items().at(0)[kSecValueData], Value(secret));
    EXPECT_EQ(update(item("a"), {{kSecValueData, Data()}}), errSecSuccess);
    EXPECT_EQ(items().at(0)[kSecValueData], Value(Data()));
}

TEST_P(KeychainUpdating, EmptyChangeOnlyAsksWhetherThereAreAny) {
    EXPECT_EQ(update(item("a"), {}), errSecItemNotFound);
    EXPECT_EQ(add(item("a", {{kSecValueData, secret}})), errSecSuccess);
    const auto before = items();
    EXPECT_EQ(update(item("a"), {}), errSecSuccess);
    EXPECT_EQ(items(), before);
}

TEST_P(KeychainUpdating, AllThatAgreeAreChanged) {
    for (const auto* account : {"a", "b", "c"}) EXPECT_EQ(add(item(account)), errSecSuccess);
    EXPECT_EQ(add(item("d", {{kSecAttrService, "other"}})), errSecSuccess);
    EXPECT_EQ(add(item("e", {{kSecAttrSynchronizable, true}})), errSecSuccess);
    const Dictionary query = genericPasswords + Dictionary{{kSecAttrService, "service"}};
    EXPECT_EQ(update(query, {{kSecValueData, secret}}), errSecSuccess);
    Texts changed;
    for (const auto& found : items())
        if (found[kSecValueData] == Value(secret))
            changed.push_back(textFromData(*found[kSecAttrAccount].data()));
    EXPECT_EQ(changed, (Texts{"a", "b", "c"}));
}

TEST_P(KeychainUpdating, ItemMayMoveToAnotherIdentity) {
    EXPECT_EQ(add(item("a", {{kSecValueData, secret}})), errSecSuccess);
    const auto known = reference(item("a"));
    EXPECT_EQ(update(item("a"), {{kSecAttrAccount, "b"}}), errSecSuccess);
    EXPECT_EQ(find(item("a")), errSecItemNotFound);
    EXPECT_EQ(update(item("b"), {{kSecAttrService, "other"}, {kSecAttrAccessGroup, "group"}}), errSecSuccess);
    EXPECT_EQ(find(item("b")), errSecItemNotFound);
    const auto moved = item("b", {{kSecAttrService, "other"}, {kSecAttrAccessGroup, "group"}});
    EXPECT_EQ(update(moved, {{kSecAttrSynchronizable, true}}), errSecSuccess);
    EXPECT_EQ(find(moved), errSecItemNotFound);
    EXPECT_EQ(reference(moved + Dictionary{{kSecAttrSynchronizable, true}}), known);
    const auto found = items();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0][kSecValueData], Value(secret));
    EXPECT_EQ(add(item("a")), errSecSuccess) << "its place is free";
}

TEST_P(KeychainUpdating, IdentityOfAnotherItemIsADuplicateAndNothingChanges) {
    EXPECT_EQ(add(item("a", {{kSecValueData, secret}})), errSecSuccess);
    EXPECT_EQ(add(item("b")), errSecSuccess);
    EXPECT_EQ(add(item("a", {{kSecAttrSynchronizable, true}})), errSecSuccess);
    const auto before = items();
    EXPECT_EQ(update(item("a"), {{kSecAttrAccount, "b"}}), errSecDuplicateItem);
    EXPECT_EQ(update(item("a"), {{kSecAttrSynchronizable, true}, {kSecValueData, another}}),
              errSecDuplicateItem);
    EXPECT_EQ(items(), before);
}

TEST_P(KeychainUpdating, TwoItemsDoNotBecomeOne) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    EXPECT_EQ(add(item("b")), errSecSuccess);
    const auto before = items();
    EXPECT_EQ(update(genericPasswords, {{kSecAttrAccount, "c"}}), errSecDuplicateItem);
    EXPECT_EQ(items(), before);
}

TEST_P(KeychainUpdating, ItemMayBeGivenTheIdentityItHas) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    EXPECT_EQ(
        update(item("a"), {{kSecAttrAccount, "a"}, {kSecAttrService, "service"}, {kSecValueData, secret}}),
        errSecSuccess);
    EXPECT_EQ(items().at(0)[kSecValueData], Value(secret));
}

TEST_P(KeychainUpdating, ChangeOfWhatIsUnknownOrOutOfPlaceOrOfTheWrongTypeIsRefused) {
    EXPECT_EQ(add(item("a", {{kSecValueData, secret}})), errSecSuccess);
    const auto before = items();
    const std::multimap<std::string, Value> wrong{{"unknown", "x"},
                                                  {kSecClass, kSecClassGenericPassword},
                                                  {kSecMatchLimit, kSecMatchLimitAll},
                                                  {kSecReturnData, true},
                                                  {kSecValuePersistentRef, reference(item("a"))},
                                                  {kSecAttrCreationDate, Date()},
                                                  {kSecAttrSynchronizable, kSecAttrSynchronizableAny},
                                                  {kSecAttrAccessible, "else"},
                                                  {kSecAttrGeneric, "text"},
                                                  {kSecValueData, "text"},
                                                  {kSecValueData, Value()},
                                                  {kSecAttrService, secret}};
    for (const auto& [key, value] : wrong)
        EXPECT_EQ(update(item("a"), {{key, value}, {kSecAttrLabel, "new"}}), errSecParam)
            << key << ": " << value.description();
    EXPECT_EQ(items(), before);
}

TEST_P(KeychainUpdating, AccessGroupHasToBeOneOfTheHosts) {
    configure({.accessGroups = {"one"}});
    EXPECT_EQ(add(item("a")), errSecSuccess);
    EXPECT_EQ(update(item("a"), {{kSecAttrAccessGroup, "two"}}), errSecMissingEntitlement);
    EXPECT_EQ(items().at(0)[kSecAttrAccessGroup], Value(""));
    EXPECT_EQ(update(item("a"), {{kSecAttrAccessGroup, "one"}}), errSecSuccess);
    EXPECT_EQ(accounts({{kSecAttrAccessGroup, "one"}}), Texts{"a"});
}

TEST_P(KeychainUpdating, SynchronizableItemForThisDeviceOnlyDoesNotComeAbout) {
    const auto a = item("a", {{kSecAttrAccessible, kSecAttrAccessibleAlwaysThisDeviceOnly}});
    EXPECT_EQ(add(a), errSecSuccess);
    EXPECT_EQ(add(item("b", {{kSecAttrSynchronizable, true}})), errSecSuccess);
    const auto before = items();
    EXPECT_EQ(update(a, {{kSecAttrSynchronizable, true}}), errSecParam);
    EXPECT_EQ(update(genericPasswords, {{kSecAttrSynchronizable, true},
                                        {kSecAttrAccessible, kSecAttrAccessibleAlwaysThisDeviceOnly}}),
              errSecParam);
    EXPECT_EQ(update(item("b", {{kSecAttrSynchronizable, true}}),
                     {{kSecAttrAccessible, kSecAttrAccessibleAlwaysThisDeviceOnly}}),
              errSecParam);
    EXPECT_EQ(items(), before);
}
