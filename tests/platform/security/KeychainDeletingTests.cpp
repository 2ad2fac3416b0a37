// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/KeychainCase.h"

using namespace vorlan;
using namespace vorlan::tests;

namespace {

class KeychainDeleting : public KeychainCase {};

const Dictionary genericPasswords{{kSecClass, kSecClassGenericPassword}};

} // namespace

INSTANTIATE_TEST_SUITE_P(Stores, KeychainDeleting, everyKeeper, nameOfKeeper);

TEST_P(KeychainDeleting, DeletedItemIsGoneAndTheOthersStay) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    EXPECT_EQ(add(item("b")), errSecSuccess);
    EXPECT_EQ(remove(item("a")), errSecSuccess);
    EXPECT_EQ(remove(item("a")), errSecItemNotFound);
    EXPECT_EQ(accounts(), Texts{"b"});
    EXPECT_EQ(add(item("a")), errSecSuccess);
}

TEST_P(KeychainDeleting, AllThatAgreeAreDeleted) {
    for (const auto* account : {"a", "b", "c"}) EXPECT_EQ(add(item(account)), errSecSuccess);
    EXPECT_EQ(add(item("d", {{kSecAttrService, "other"}})), errSecSuccess);
    EXPECT_EQ(remove(genericPasswords + Dictionary{{kSecAttrService, "service"}}), errSecSuccess);
    EXPECT_EQ(accounts(), Texts{"d"});
    EXPECT_EQ(remove(genericPasswords), errSecSuccess);
    EXPECT_EQ(accounts(), Texts{});
    EXPECT_EQ(remove(genericPasswords), errSecItemNotFound);
}

TEST_P(KeychainDeleting, SynchronizableItemsStayUnlessMeant) {
    const Dictionary carried{{kSecAttrSynchronizable, true}};
    const auto fill = [&] {
        EXPECT_EQ(add(item("plain")), errSecSuccess);
        EXPECT_EQ(add(item("carried", carried)), errSecSuccess);
    };
    fill();
    EXPECT_EQ(remove(genericPasswords), errSecSuccess);
    EXPECT_EQ(accounts(), Texts{"carried"});
    EXPECT_EQ(remove(genericPasswords), errSecItemNotFound);
    EXPECT_EQ(remove(genericPasswords + carried), errSecSuccess);
    fill();
    EXPECT_EQ(remove(genericPasswords + Dictionary{{kSecAttrSynchronizable, kSecAttrSynchronizableAny}}),
              errSecSuccess);
    EXPECT_EQ(accounts(), Texts{});
}

TEST_P(KeychainDeleting, NeedsAClassOrAReference) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    EXPECT_EQ(remove({}), errSecParam);
    EXPECT_EQ(remove({{kSecAttrService, "service"}, {kSecAttrAccount, "a"}}), errSecParam);
    EXPECT_EQ(accounts(), Texts{"a"});
    EXPECT_EQ(remove({{kSecValuePersistentRef, reference(item("a"))}}), errSecSuccess);
    EXPECT_EQ(accounts(), Texts{});
}

TEST_P(KeychainDeleting, EveryAttributeThatIsGivenHasToAgree) {
    const Dictionary attributes{{kSecAttrAccessGroup, "group"},
                                {kSecAttrAccessible, kSecAttrAccessibleAlways},
                                {kSecAttrGeneric, dataFromText("generic")}};
    EXPECT_EQ(add(item("a", attributes)), errSecSuccess);
    for (const auto& [key, value] : Dictionary{{kSecAttrService, ""},
                                               {kSecAttrAccount, "A"},
                                               {kSecAttrAccessGroup, ""},
                                               {kSecAttrAccessible, kSecAttrAccessibleWhenUnlocked},
                                               {kSecAttrGeneric, Data()}})
        EXPECT_EQ(remove(item("a", attributes + Dictionary{{key, value}})), errSecItemNotFound) << key;
    EXPECT_EQ(remove(item("a", attributes)), errSecSuccess);
    EXPECT_EQ(accounts(), Texts{});
}
