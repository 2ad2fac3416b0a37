// SPDX-License-Identifier: Apache-2.0
#include "tests/keychain/ManagerKit.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

using namespace vorlan;
using namespace vorlan::tests;
using namespace std::chrono_literals;

using Texts = std::vector<std::string>;

TEST(KeychainManager, ReferenceOfAnInsertedTextReadsIt) {
    const Kit kit;
    auto manager = makeManager();
    const auto reference = manager.insertReference({.containing = "s\u00EBcret", .called = "backup key"});
    ASSERT_TRUE(reference.has_value());
    EXPECT_EQ(manager.string(*reference), "s\u00EBcret");
    EXPECT_TRUE(manager.verifyReference(*reference));
    const auto items = itemsOf();
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0][kSecAttrAccount], Value(dataFromText("backup key")));
    EXPECT_EQ(items[0][kSecAttrService], Value("com.example.mail"));
    EXPECT_TRUE(items[0][kSecAttrGeneric].isNull()) << "a name is no key";
}

TEST(KeychainManager, NameOfAReferenceIsNoKeyToRead) {
    const Kit kit;
    auto manager = makeManager();
    EXPECT_TRUE(manager.insertReference({.containing = "secret", .called = "name"}));
    EXPECT_EQ(manager.data("name"), std::nullopt);
    EXPECT_TRUE(manager.remove("name"));
    EXPECT_EQ(itemsOf().size(), 0u);
}

TEST(KeychainManager, ReferenceIsReadWhateverTheManagersSettings) {
    const Kit kit;
    const auto reference =
        makeManager({.accessGroup = "group", .synchronizable = true, .accessibility = always})
            .insertReference({.containing = "secret", .called = "name"});
    ASSERT_TRUE(reference.has_value());
    auto other = makeManager({.service = "com.example.chat"});
    EXPECT_EQ(other.string(*reference), "secret");
    EXPECT_TRUE(other.verifyReference(*reference));
    EXPECT_EQ(printedBy([&] { other.removeReference(*reference); }), "");
    EXPECT_EQ(itemsOf().size(), 0u);
}

TEST(KeychainManager, EmptyTextAndNameCanBeReferredTo) {
    const Kit kit;
    auto manager = makeManager();
    const auto reference = manager.insertReference({.containing = "", .called = ""});
    ASSERT_TRUE(reference.has_value());
    EXPECT_EQ(manager.string(*reference), "");
}

TEST(KeychainManager, NameThatIsTakenIsReportedAndNothingIsChanged) {
    Kit kit;
    auto manager = makeManager();
    const auto first = manager.insertReference({.containing = "first", .called = "name"});
    std::optional<Data> second;
    EXPECT_EQ(printedBy([&] {
                  second = manager.insertReference(
                      {.containing = "second", .called = "name", .previouslyReferencedBy = first});
              }),
              "\"Unable to add data to keychain: -25299\"\n");
    EXPECT_EQ(second, std::nullopt);
    EXPECT_EQ(manager.string(*first), "first")
        << "the previous one is deleted only after the new one is there";
    EXPECT_EQ(kit.fault.operations(), (Operations{Operation::add, Operation::add, Operation::copyMatching}));
}

TEST(KeychainManager, PreviousReferenceIsDeletedAfterTheNewOneIsThere) {
    Kit kit;
    auto manager = makeManager();
    const auto first = manager.insertReference({.containing = "first", .called = "one"});
    const auto second =
        manager.insertReference({.containing = "second", .called = "two", .previouslyReferencedBy = first});
    EXPECT_EQ(kit.fault.operations(), (Operations{Operation::add, Operation::add, Operation::remove}));
    ASSERT_TRUE(first && second);
    EXPECT_FALSE(manager.verifyReference(*first));
    EXPECT_EQ(manager.string(*second), "second");
    EXPECT_EQ(accountsOf(), Texts{"two"});
}

TEST(KeychainManager, PreviousReferenceThatIsGoneIsReportedAndTheNewOneReturned) {
    const Kit kit;
    auto manager = makeManager();
    const auto first = manager.insertReference({.containing = "first", .called = "one"});
    ASSERT_TRUE(first.has_value());
    manager.removeReference(*first);
    std::optional<Data> second;
    EXPECT_EQ(printedBy([&] {
                  second = manager.insertReference(
                      {.containing = "second", .called = "two", .previouslyReferencedBy = first});
              }),
              "\"Unable to remove reference from keychain: -25300\"\n");
    ASSERT_TRUE(second.has_value());
    EXPECT_EQ(manager.string(*second), "second");
}

TEST(KeychainManager, AddingThatFailsOrBringsNothingBackIsReportedAndKeepsThePreviousOne) {
    Kit kit;
    auto manager = makeManager();
    const auto first = manager.insertReference({.containing = "first", .called = "one"});
    ASSERT_TRUE(first.has_value());
    for (const OSStatus status : {errSecMissingEntitlement, errSecNotAvailable, errSecSuccess}) {
        kit.fault.answer(Operation::add, status);
        EXPECT_EQ(printedBy([&] {
                      EXPECT_EQ(
                          manager.insertReference(
                              {.containing = "second", .called = "two", .previouslyReferencedBy = first}),
                          std::nullopt);
                  }),
                  "\"Unable to add data to keychain: " + std::to_string(status) + "\"\n");
        kit.fault.advance(5s);
        EXPECT_EQ(manager.string(*first), "first");
    }
}

TEST(KeychainManager, TextOfAReferenceIsAbsentWhereItIsNotUtf8OrNotThere) {
    const Kit kit;
    auto manager = makeManager();
    manager.insert("broken", dataFromText("\xFF"));
    manager.insert("nothing", std::nullopt);
    manager.insert("gone", dataFromText("text"));
    const auto gone = manager.dataRef("gone").value();
    manager.remove("gone");
    EXPECT_EQ(manager.string(manager.dataRef("broken").value()), std::nullopt);
    EXPECT_EQ(manager.string(manager.dataRef("nothing").value()), std::nullopt);
    EXPECT_EQ(manager.string(gone), std::nullopt);
    EXPECT_EQ(manager.string(Data()), std::nullopt);
    EXPECT_EQ(manager.string(dataFromText("no reference")), std::nullopt);
}

TEST(KeychainManager, ReferenceIsInvalidOnlyWhenTheKeychainIsCertainThatThereIsNone) {
    Kit kit;
    auto manager = makeManager();
    const auto reference = manager.insertReference({.containing = "secret", .called = "name"}).value();
    for (const OSStatus status : {errSecNotAvailable, errSecInteractionNotAllowed, errSecMissingEntitlement,
                                  errSecParam, errSecDecode, errSecDuplicateItem, errSecIO}) {
        kit.fault.answer(Operation::copyMatching, status);
        EXPECT_TRUE(manager.verifyReference(reference)) << status;
        kit.fault.advance(5s);
    }
    kit.fault.answer(Operation::copyMatching, errSecItemNotFound);
    EXPECT_FALSE(manager.verifyReference(reference));
    EXPECT_TRUE(manager.verifyReference(reference));
    manager.removeReference(reference);
    EXPECT_FALSE(manager.verifyReference(reference));
}

TEST(KeychainManager, MalformedReferenceCountsAsValid) {
    const Kit kit;
    auto manager = makeManager();
    manager.insert("key", Data());
    auto reference = manager.dataRef("key").value();
    reference.pop_back();
    EXPECT_TRUE(manager.verifyReference(reference));
    EXPECT_TRUE(manager.verifyReference(Data()));
    EXPECT_TRUE(manager.verifyReference(dataFromText("no reference at all")));
}

TEST(KeychainManager, ReferenceThatCannotBeRemovedIsReportedWithItsStatus) {
    Kit kit;
    auto manager = makeManager();
    const auto reference = manager.insertReference({.containing = "secret", .called = "name"}).value();
    for (const OSStatus status : {errSecMissingEntitlement, errSecItemNotFound, errSecNotAvailable}) {
        kit.fault.answer(Operation::remove, status);
        EXPECT_EQ(printedBy([&] { manager.removeReference(reference); }),
                  "\"Unable to remove reference from keychain: " + std::to_string(status) + "\"\n");
        kit.fault.advance(5s);
    }
    EXPECT_EQ(printedBy([&] { manager.removeReference(reference); }), "");
    EXPECT_EQ(printedBy([&] { manager.removeReference(reference); }),
              "\"Unable to remove reference from keychain: -25300\"\n");
    EXPECT_EQ(printedBy([&] { manager.removeReference(Data(3)); }),
              "\"Unable to remove reference from keychain: -50\"\n");
}

TEST(KeychainManager, ReferenceOutlivesChangesOfTheValue) {
    const Kit kit;
    auto manager = makeManager();
    manager.insert("key", dataFromText("old"));
    const auto reference = manager.dataRef("key").value();
    manager.insert("key", dataFromText("new"));
    EXPECT_EQ(manager.string(reference), "new");
}
