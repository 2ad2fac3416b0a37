// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/KeychainCase.h"

#include <VorlanFoundation/Platform/Date.h>

#include <map>
#include <set>
#include <string>

using namespace vorlan;
using namespace vorlan::tests;

namespace {

class KeychainFinding : public KeychainCase {};

const Data secret = dataFromText("secret");
const Dictionary all{{kSecMatchLimit, kSecMatchLimitAll}};
const Dictionary genericPasswords{{kSecClass, kSecClassGenericPassword}};

Dictionary returning(const char* kind) {
    return {{kind, true}};
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Stores, KeychainFinding, everyKeeper, nameOfKeeper);

TEST_P(KeychainFinding, NothingIsFoundWhereNothingIs) {
    Value result = "before";
    EXPECT_EQ(find(item("a"), &result), errSecItemNotFound);
    EXPECT_EQ(find(genericPasswords + all + returning(kSecReturnData), &result), errSecItemNotFound);
    EXPECT_EQ(update(item("a"), {{kSecValueData, secret}}), errSecItemNotFound);
    EXPECT_EQ(remove(item("a")), errSecItemNotFound);
    EXPECT_EQ(result, Value("before"));
}

TEST_P(KeychainFinding, OtherClassesHaveNoItems) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    for (const auto* other :
         {kSecClassInternetPassword, kSecClassCertificate, kSecClassKey, kSecClassIdentity}) {
        const Dictionary query{{kSecClass, other}};
        EXPECT_EQ(find(query), errSecItemNotFound) << other;
        EXPECT_EQ(find(query + all), errSecItemNotFound) << other;
        EXPECT_EQ(update(query, {{kSecValueData, secret}}), errSecItemNotFound) << other;
        EXPECT_EQ(remove(query), errSecItemNotFound) << other;
        EXPECT_EQ(remove(query + Dictionary{{kSecAttrService, "service"}}), errSecItemNotFound) << other;
    }
    EXPECT_EQ(find({{kSecClass, "else"}}), errSecParam);
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_P(KeychainFinding, EveryAttributeThatIsGivenHasToAgree) {
    const Dictionary attributes{{kSecAttrAccessGroup, "group"},
                                {kSecAttrAccessible, kSecAttrAccessibleAlways},
                                {kSecAttrGeneric, dataFromText("generic")}};
    EXPECT_EQ(add(item("a", attributes)), errSecSuccess);
    EXPECT_EQ(find(item("a", attributes)), errSecSuccess);
    EXPECT_EQ(find(genericPasswords), errSecSuccess);
    for (const auto& [key, value] : item("a", attributes))
        EXPECT_EQ(find({{key, value}}), errSecSuccess) << key;
    for (const auto& [key, value] : Dictionary{{kSecAttrService, "Service"},
                                               {kSecAttrAccount, "b"},
                                               {kSecAttrAccessGroup, "grou"},
                                               {kSecAttrAccessible, kSecAttrAccessibleWhenUnlocked},
                                               {kSecAttrGeneric, dataFromText("generic ")},
                                               {kSecAttrSynchronizable, true}})
        EXPECT_EQ(find(item("a", attributes + Dictionary{{key, value}})), errSecItemNotFound) << key;
}

TEST_P(KeychainFinding, EmptyTextIsNotTheSameAsNoneInAQuery) {
    EXPECT_EQ(add(item("a", {{kSecAttrAccessGroup, "group"}})), errSecSuccess);
    EXPECT_EQ(find(item("a")), errSecSuccess);
    EXPECT_EQ(find(item("a", {{kSecAttrAccessGroup, ""}})), errSecItemNotFound);
    EXPECT_EQ(find(item("a", {{kSecAttrGeneric, Data()}})), errSecItemNotFound);
    EXPECT_EQ(add(item("b", {{kSecAttrGeneric, Data()}})), errSecSuccess);
    EXPECT_EQ(find(item("b", {{kSecAttrGeneric, Data()}})), errSecSuccess);
}

TEST_P(KeychainFinding, AccountIsAskedForAsTextOrBytesAndComesBackAsBytes) {
    EXPECT_EQ(add(item("anna")), errSecSuccess);
    EXPECT_EQ(add(item("", {{kSecAttrAccount, dataFromText("berta")}})), errSecSuccess);
    for (const auto* account : {"anna", "berta"}) {
        EXPECT_EQ(find(item(account)), errSecSuccess);
        Value result;
        EXPECT_EQ(
            find(item("", {{kSecAttrAccount, dataFromText(account)}, {kSecReturnAttributes, true}}), &result),
            errSecSuccess);
        EXPECT_EQ(result[kSecAttrAccount], Value(dataFromText(account)));
    }
    EXPECT_EQ(add(item("berta")), errSecDuplicateItem);
    EXPECT_EQ(add(item("", {{kSecAttrAccount, dataFromText("anna")}})), errSecDuplicateItem);
}

TEST_P(KeychainFinding, SynchronizableItemsAreFoundOnlyWhenAskedFor) {
    EXPECT_EQ(add(item("plain")), errSecSuccess);
    EXPECT_EQ(add(item("carried", {{kSecAttrSynchronizable, true}})), errSecSuccess);
    Value result;
    EXPECT_EQ(find(genericPasswords + all + returning(kSecReturnAttributes), &result), errSecSuccess);
    ASSERT_EQ(result.array()->size(), 1u);
    EXPECT_EQ(result[0][kSecAttrAccount], Value(dataFromText("plain")));
    EXPECT_EQ(accounts({{kSecAttrSynchronizable, false}}), Texts{"plain"});
    EXPECT_EQ(accounts({{kSecAttrSynchronizable, true}}), Texts{"carried"});
    EXPECT_EQ(accounts({{kSecAttrSynchronizable, kSecAttrSynchronizableAny}}), (Texts{"plain", "carried"}));
    EXPECT_EQ(find(item("carried")), errSecItemNotFound);
}

TEST_P(KeychainFinding, OneIsTheOldestAndAllAreInTheOrderOfTheirCreation) {
    const Texts order{"m", "c", "x", "a", "t"};
    for (const auto& account : order)
        EXPECT_EQ(add(item(account, {{kSecValueData, dataFromText(account)}})), errSecSuccess);
    EXPECT_EQ(update(item("m"), {{kSecAttrGeneric, secret}}), errSecSuccess) << "a change makes none younger";
    EXPECT_EQ(accounts(), order);
    for (const auto& limit : {Dictionary(), Dictionary{{kSecMatchLimit, kSecMatchLimitOne}}}) {
        Value result;
        EXPECT_EQ(find(genericPasswords + limit + returning(kSecReturnData), &result), errSecSuccess);
        EXPECT_EQ(result, Value(dataFromText("m")));
    }
    EXPECT_EQ(remove(item("m")), errSecSuccess);
    EXPECT_EQ(add(item("m")), errSecSuccess);
    EXPECT_EQ(accounts(), (Texts{"c", "x", "a", "t", "m"}));
}

TEST_P(KeychainFinding, OneKindComesBackAsItself) {
    EXPECT_EQ(add(item("a", {{kSecValueData, secret}})), errSecSuccess);
    Value result = "before";
    EXPECT_EQ(find(item("a"), &result), errSecSuccess);
    EXPECT_TRUE(result.isNull()) << "nothing was asked for";
    EXPECT_EQ(find(item("a") + all, &result), errSecSuccess);
    EXPECT_TRUE(result.isNull());
    EXPECT_EQ(find(item("a") + returning(kSecReturnData), &result), errSecSuccess);
    EXPECT_EQ(result, Value(secret));
    EXPECT_EQ(find(item("a") + returning(kSecReturnPersistentRef), &result), errSecSuccess);
    EXPECT_EQ(result.kind(), Value::Kind::data);
    EXPECT_EQ(find(item("a") + returning(kSecReturnAttributes), &result), errSecSuccess);
    EXPECT_EQ(result.kind(), Value::Kind::dictionary);
}

TEST_P(KeychainFinding, AttributesComeWithoutTheSecretAndTheReference) {
    EXPECT_EQ(add(item("a", {{kSecValueData, secret}, {kSecAttrGeneric, secret}})), errSecSuccess);
    Value result;
    EXPECT_EQ(find(item("a") + returning(kSecReturnAttributes), &result), errSecSuccess);
    std::set<std::string> keys;
    for (const auto& [key, value] : *result.dictionary()) keys.insert(key);
    keys.erase(kSecAttrLabel); // whether there is one is the store's affair
    EXPECT_EQ(keys, (std::set<std::string>{kSecClass, kSecAttrService, kSecAttrAccount, kSecAttrAccessGroup,
                                           kSecAttrSynchronizable, kSecAttrAccessible, kSecAttrGeneric,
                                           kSecAttrCreationDate, kSecAttrModificationDate}));
}

TEST_P(KeychainFinding, SeveralKindsComeBackAsADictionary) {
    EXPECT_EQ(add(item("a", {{kSecValueData, secret}})), errSecSuccess);
    const auto known = reference(item("a"));
    Value result;
    EXPECT_EQ(find(item("a") + returning(kSecReturnData) + returning(kSecReturnPersistentRef), &result),
              errSecSuccess);
    EXPECT_EQ(result, Value(Dictionary{{kSecValueData, secret}, {kSecValuePersistentRef, known}}));
    EXPECT_EQ(find(item("a") + returning(kSecReturnData) + returning(kSecReturnPersistentRef) +
                       returning(kSecReturnAttributes),
                   &result),
              errSecSuccess);
    EXPECT_EQ(result[kSecValueData], Value(secret));
    EXPECT_EQ(result[kSecValuePersistentRef], Value(known));
    EXPECT_EQ(result[kSecAttrService], Value("service"));
}

TEST_P(KeychainFinding, AllComeBackAsAnArrayAlsoWhenItIsOne) {
    EXPECT_EQ(add(item("a", {{kSecValueData, secret}})), errSecSuccess);
    Value result;
    EXPECT_EQ(find(item("a") + all + returning(kSecReturnData), &result), errSecSuccess);
    EXPECT_EQ(result, Value(Value::Array{secret}));
    EXPECT_EQ(add(item("b")), errSecSuccess);
    EXPECT_EQ(find(genericPasswords + all + returning(kSecReturnData), &result), errSecSuccess);
    EXPECT_EQ(result, Value(Value::Array{secret, Value()})) << "an item without a secret has its place";
    EXPECT_EQ(find(genericPasswords + all + returning(kSecReturnPersistentRef), &result), errSecSuccess);
    EXPECT_EQ(result, Value(Value::Array{reference(item("a")), reference(item("b"))}));
}

TEST_P(KeychainFinding, WhatIsUnknownOrOutOfPlaceOrOfTheWrongTypeIsRefused) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    const std::multimap<std::string, Value> wrong{{"unknown", "x"},
                                                  {kSecValueData, secret},
                                                  {kSecAttrCreationDate, Date()},
                                                  {kSecClass, 1},
                                                  {kSecAttrService, secret},
                                                  {kSecAttrAccount, 1},
                                                  {kSecAttrAccessGroup, 1},
                                                  {kSecAttrGeneric, "generic"},
                                                  {kSecAttrAccessible, "else"},
                                                  {kSecAttrSynchronizable, "else"},
                                                  {kSecMatchLimit, "else"},
                                                  {kSecMatchLimit, 1},
                                                  {kSecReturnData, "yes"},
                                                  {kSecValuePersistentRef, "reference"}};
    for (const auto& [key, value] : wrong) {
        const auto query = item("a", {{key, value}});
        EXPECT_EQ(find(query), errSecParam) << key << ": " << value.description();
        EXPECT_EQ(update(query, {}), errSecParam) << key;
        EXPECT_EQ(remove(query), errSecParam) << key;
    }
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_P(KeychainFinding, ServicesAndGroupsAreSideBySide) {
    std::size_t count = 0;
    for (const auto* service : {"one", "two"})
        for (const auto* group : {"red", "blue"})
            for (const bool isSynchronizable : {false, true})
                for (const auto* account : {"a", "b"}) {
                    const Dictionary place{{kSecAttrService, service},
                                           {kSecAttrAccessGroup, group},
                                           {kSecAttrSynchronizable, isSynchronizable}};
                    EXPECT_EQ(add(item(account, place)), errSecSuccess);
                    EXPECT_EQ(items(item(account, place)).size(), 1u);
                    EXPECT_EQ(items().size(), ++count);
                }
    EXPECT_EQ(accounts({{kSecAttrService, "one"}, {kSecAttrAccessGroup, "blue"}}),
              (Texts{"a", "b", "a", "b"}));
    EXPECT_EQ(remove(genericPasswords + Dictionary{{kSecAttrService, "one"}}), errSecSuccess);
    EXPECT_EQ(items({{kSecAttrService, "one"}}).size(), 4u) << "the synchronizable ones";
    EXPECT_EQ(items({{kSecAttrService, "two"}}).size(), 8u);
}
