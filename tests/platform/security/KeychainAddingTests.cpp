// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/KeychainCase.h"

#include <VorlanFoundation/Platform/Date.h>

#include <chrono>
#include <map>
#include <string>

using namespace vorlan;
using namespace vorlan::tests;
using namespace std::chrono_literals;

namespace {

class KeychainAdding : public KeychainCase {};

const Data secret = dataFromText("secret");

} // namespace

INSTANTIATE_TEST_SUITE_P(Stores, KeychainAdding, everyKeeper, nameOfKeeper);

TEST_P(KeychainAdding, NeedsAClass) {
    EXPECT_EQ(add({}), errSecParam);
    EXPECT_EQ(add({{kSecAttrService, "service"}, {kSecAttrAccount, "a"}, {kSecValueData, secret}}),
              errSecParam);
    EXPECT_EQ(accounts(), Texts{});
}

TEST_P(KeychainAdding, TakesGenericPasswordsOnly) {
    for (const auto* other :
         {kSecClassInternetPassword, kSecClassCertificate, kSecClassKey, kSecClassIdentity, "else", ""})
        EXPECT_EQ(add(item("a", {{kSecClass, other}})), errSecParam) << other;
    EXPECT_EQ(accounts(), Texts{});
}

TEST_P(KeychainAdding, WhatIsMissingHasItsDefault) {
    EXPECT_EQ(add({{kSecClass, kSecClassGenericPassword}}), errSecSuccess);
    const auto found = items();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0][kSecAttrService], Value(""));
    EXPECT_EQ(found[0][kSecAttrAccount], Value(Data()));
    EXPECT_EQ(found[0][kSecAttrAccessGroup], Value(""));
    EXPECT_EQ(found[0][kSecAttrSynchronizable], Value(false));
    EXPECT_EQ(found[0][kSecAttrAccessible], Value(kSecAttrAccessibleWhenUnlocked));
    EXPECT_EQ(found[0].dictionary()->count(kSecAttrGeneric), 0u);
    EXPECT_EQ(found[0].dictionary()->count(kSecValueData), 0u);
    EXPECT_EQ(
        add(item("", {{kSecAttrService, ""}, {kSecAttrAccessGroup, ""}, {kSecAttrSynchronizable, false}})),
        errSecDuplicateItem);
}

TEST_P(KeychainAdding, EveryAttributeIsKept) {
    const Dictionary attributes{{kSecClass, kSecClassGenericPassword},
                                {kSecAttrService, "com.example.mail"},
                                {kSecAttrAccount, "anna"},
                                {kSecAttrAccessGroup, "group"},
                                {kSecAttrSynchronizable, true},
                                {kSecAttrAccessible, kSecAttrAccessibleAfterFirstUnlock},
                                {kSecAttrGeneric, Data{std::byte{0}, std::byte{0xFF}}},
                                {kSecAttrLabel, "Anna's mail"},
                                {kSecValueData, secret}};
    EXPECT_EQ(add(attributes), errSecSuccess);
    const auto found = items();
    ASSERT_EQ(found.size(), 1u);
    for (const auto& [key, value] : attributes)
        EXPECT_EQ(found[0][key], key == kSecAttrAccount ? Value(dataFromText("anna")) : value) << key;
}

TEST_P(KeychainAdding, DatesAreThoseOfTheMoment) {
    const auto before = std::chrono::system_clock::now() - 1ms;
    EXPECT_EQ(add(item("a")), errSecSuccess);
    const auto after = std::chrono::system_clock::now() + 1ms;
    const auto found = items();
    ASSERT_EQ(found.size(), 1u);
    const auto created = found[0][kSecAttrCreationDate].as<Date>();
    ASSERT_TRUE(created.has_value());
    EXPECT_GE(*created, Date(before));
    EXPECT_LE(*created, Date(after));
    EXPECT_EQ(found[0][kSecAttrModificationDate], found[0][kSecAttrCreationDate]);
}

TEST_P(KeychainAdding, ItemThatIsThereIsADuplicateAndStaysAsItIs) {
    EXPECT_EQ(add(item("a", {{kSecValueData, secret}})), errSecSuccess);
    const auto before = items();
    EXPECT_EQ(add(item("a", {{kSecValueData, dataFromText("another")}})), errSecDuplicateItem);
    EXPECT_EQ(items(), before);
}

TEST_P(KeychainAdding, ServiceAccountGroupAndSynchronizableMakeTheIdentity) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    EXPECT_EQ(add(item("b")), errSecSuccess);
    EXPECT_EQ(add(item("a", {{kSecAttrService, "other"}})), errSecSuccess);
    EXPECT_EQ(add(item("a", {{kSecAttrAccessGroup, "group"}})), errSecSuccess);
    EXPECT_EQ(add(item("a", {{kSecAttrSynchronizable, true}})), errSecSuccess);
    EXPECT_EQ(accounts(), (Texts{"a", "b", "a", "a", "a"}));
}

TEST_P(KeychainAdding, NeitherAccessibleNorGenericNorLabelMakeTheIdentity) {
    EXPECT_EQ(add(item("a", {{kSecAttrGeneric, secret}})), errSecSuccess);
    EXPECT_EQ(add(item("a", {{kSecAttrAccessible, kSecAttrAccessibleAlways}})), errSecDuplicateItem);
    EXPECT_EQ(add(item("a", {{kSecAttrGeneric, dataFromText("other")}})), errSecDuplicateItem);
    EXPECT_EQ(add(item("a", {{kSecAttrLabel, "other"}})), errSecDuplicateItem);
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_P(KeychainAdding, NothingComesBackUnlessAskedFor) {
    Value result = "before";
    EXPECT_EQ(add(item("a", {{kSecValueData, secret}}), &result), errSecSuccess);
    EXPECT_TRUE(result.isNull());
    result = "before";
    EXPECT_EQ(add(item("b", {{kSecReturnData, false}, {kSecReturnPersistentRef, false}}), &result),
              errSecSuccess);
    EXPECT_TRUE(result.isNull());
    EXPECT_EQ(add(item("c", {{kSecReturnPersistentRef, true}})), errSecSuccess) << "for nobody";
}

TEST_P(KeychainAdding, OneKindComesBackAsItselfSeveralAsADictionary) {
    Value result;
    EXPECT_EQ(add(item("a", {{kSecValueData, secret}, {kSecReturnData, true}}), &result), errSecSuccess);
    EXPECT_EQ(result, Value(secret));
    EXPECT_EQ(add(item("b", {{kSecReturnPersistentRef, true}}), &result), errSecSuccess);
    EXPECT_EQ(result, Value(reference(item("b"))));
    EXPECT_EQ(add(item("c", {{kSecReturnAttributes, true}, {kSecValueData, secret}}), &result),
              errSecSuccess);
    EXPECT_EQ(result[kSecAttrAccount], Value(dataFromText("c")));
    EXPECT_TRUE(result[kSecValueData].isNull());
    EXPECT_EQ(
        add(item("d", {{kSecReturnPersistentRef, true}, {kSecReturnData, true}, {kSecValueData, secret}}),
            &result),
        errSecSuccess);
    EXPECT_EQ(result,
              Value(Dictionary{{kSecValueData, secret}, {kSecValuePersistentRef, reference(item("d"))}}));
}

TEST_P(KeychainAdding, ResultOfAFailureIsUntouched) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    Value result = "before";
    EXPECT_EQ(add(item("a", {{kSecReturnPersistentRef, true}}), &result), errSecDuplicateItem);
    EXPECT_EQ(add({}, &result), errSecParam);
    EXPECT_EQ(result, Value("before"));
}

TEST_P(KeychainAdding, WhatIsUnknownOrOutOfPlaceIsRefused) {
    const Data anything(18);
    for (const auto& [key, value] : Dictionary{{"unknown", "x"},
                                               {"", "x"},
                                               {"SVCE", "x"},
                                               {kSecMatchLimit, kSecMatchLimitOne},
                                               {kSecValuePersistentRef, anything},
                                               {kSecAttrCreationDate, Date()},
                                               {kSecAttrModificationDate, Date()},
                                               {kSecAttrSynchronizable, kSecAttrSynchronizableAny}})
        EXPECT_EQ(add(item("a", {{key, value}})), errSecParam) << key;
    EXPECT_EQ(accounts(), Texts{});
}

TEST_P(KeychainAdding, AttributeOfTheWrongTypeIsRefused) {
    const auto text = Value("text");
    const std::multimap<std::string, Value> wrong{{kSecClass, 1},
                                                  {kSecClass, dataFromText(kSecClassGenericPassword)},
                                                  {kSecAttrService, 1},
                                                  {kSecAttrService, secret},
                                                  {kSecAttrService, Value()},
                                                  {kSecAttrAccount, 1},
                                                  {kSecAttrAccount, Value::Array{"a"}},
                                                  {kSecAttrAccessGroup, secret},
                                                  {kSecAttrGeneric, text},
                                                  {kSecAttrLabel, secret},
                                                  {kSecAttrAccessible, text},
                                                  {kSecAttrAccessible, 1},
                                                  {kSecAttrSynchronizable, text},
                                                  {kSecAttrSynchronizable, 2},
                                                  {kSecValueData, text},
                                                  {kSecValueData, Value()},
                                                  {kSecReturnData, text},
                                                  {kSecReturnAttributes, 2},
                                                  {kSecReturnPersistentRef, secret}};
    for (const auto& [key, value] : wrong)
        EXPECT_EQ(add(item("a", {{key, value}})), errSecParam) << key << ": " << value.description();
    EXPECT_EQ(accounts(), Texts{});
}

TEST_P(KeychainAdding, SynchronizableItemForThisDeviceOnlyIsRefused) {
    for (const auto* accessible :
         {kSecAttrAccessibleAlwaysThisDeviceOnly, kSecAttrAccessibleWhenUnlockedThisDeviceOnly,
          kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly}) {
        const Dictionary entry{{kSecAttrAccessible, accessible}};
        EXPECT_EQ(add(item(accessible, entry + Dictionary{{kSecAttrSynchronizable, true}})), errSecParam);
        EXPECT_EQ(add(item(accessible, entry)), errSecSuccess);
    }
    EXPECT_EQ(accounts({{kSecAttrSynchronizable, true}}), Texts{});
}

TEST_P(KeychainAdding, AccessGroupHasToBeOneOfTheHosts) {
    configure({.accessGroups = {"one", "two"}});
    EXPECT_EQ(add(item("a", {{kSecAttrAccessGroup, "one"}})), errSecSuccess);
    EXPECT_EQ(add(item("b", {{kSecAttrAccessGroup, "two"}})), errSecSuccess);
    EXPECT_EQ(add(item("c", {{kSecAttrAccessGroup, "three"}})), errSecMissingEntitlement);
    EXPECT_EQ(add(item("d", {{kSecAttrAccessGroup, "On"}})), errSecMissingEntitlement);
    EXPECT_EQ(accounts(), (Texts{"a", "b"}));
}
