// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/KeychainCase.h"

#include <cstddef>
#include <set>

using namespace vorlan;
using namespace vorlan::tests;

namespace {

class KeychainReference : public KeychainCase {
protected:
    // What each of the three functions that take a query says to a reference.
    void expectFromAll(const Value& reference, OSStatus status) {
        const Dictionary query{{kSecValuePersistentRef, reference}};
        EXPECT_EQ(find(query), status);
        EXPECT_EQ(update(query, {{kSecValueData, Data()}}), status);
        EXPECT_EQ(remove(query), status);
        const Dictionary withClass = query + Dictionary{{kSecClass, kSecClassGenericPassword}};
        EXPECT_EQ(find(withClass), status);
        EXPECT_EQ(remove(withClass), status);
    }

    std::byte letter() const {
        if (isOnTheBus()) return std::byte{'S'};
        return GetParam() == Keeper::embedded ? std::byte{'E'} : std::byte{'M'};
    }
};

Dictionary by(const Data& reference) {
    return {{kSecValuePersistentRef, reference}};
}

const Data secret = dataFromText("secret");

} // namespace

INSTANTIATE_TEST_SUITE_P(Stores, KeychainReference, everyKeeper, nameOfKeeper);

TEST_P(KeychainReference, IsAVersionTheStoresLetterAndSixteenBytes) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    const auto known = reference(item("a"));
    ASSERT_EQ(known.size(), 18u);
    EXPECT_EQ(known[0], std::byte{1});
    EXPECT_EQ(known[1], letter());
}

TEST_P(KeychainReference, EachItemHasItsOwn) {
    std::set<Data> references;
    for (int i = 0; i < 10; ++i) {
        Value known;
        EXPECT_EQ(add(item(std::to_string(i), {{kSecReturnPersistentRef, true}}), &known), errSecSuccess);
        references.insert(known.as<Data>().value());
    }
    EXPECT_EQ(references.size(), 10u);
}

TEST_P(KeychainReference, FindsTheItemWithAndWithoutItsClass) {
    EXPECT_EQ(add(item("a", {{kSecValueData, secret}})), errSecSuccess);
    EXPECT_EQ(add(item("b")), errSecSuccess);
    const auto known = reference(item("a"));
    const Dictionary asking{{kSecReturnData, true}};
    Value result;
    EXPECT_EQ(find(by(known) + asking, &result), errSecSuccess);
    EXPECT_EQ(result, Value(secret));
    result = {};
    EXPECT_EQ(find(by(known) + asking + Dictionary{{kSecClass, kSecClassGenericPassword}}, &result),
              errSecSuccess);
    EXPECT_EQ(result, Value(secret));
    EXPECT_EQ(find(by(known) + Dictionary{{kSecClass, kSecClassKey}}), errSecItemNotFound);
    EXPECT_EQ(remove(by(known) + Dictionary{{kSecClass, kSecClassKey}}), errSecItemNotFound);
    EXPECT_EQ(find(by(known)), errSecSuccess);
}

TEST_P(KeychainReference, UpdatesAndDeletesTheItem) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    EXPECT_EQ(add(item("b")), errSecSuccess);
    const auto known = reference(item("a"));
    EXPECT_EQ(update(by(known), {{kSecValueData, secret}}), errSecSuccess);
    EXPECT_EQ(items(item("a")).at(0)[kSecValueData], Value(secret));
    EXPECT_TRUE(items(item("b")).at(0)[kSecValueData].isNull());
    EXPECT_EQ(remove(by(known)), errSecSuccess);
    EXPECT_EQ(accounts(), Texts{"b"});
}

TEST_P(KeychainReference, WhetherTheItemIsSynchronizableDoesNotMatter) {
    EXPECT_EQ(add(item("a", {{kSecAttrSynchronizable, true}})), errSecSuccess);
    const auto known = reference(item("a", {{kSecAttrSynchronizable, true}}));
    EXPECT_EQ(find(by(known)), errSecSuccess);
    EXPECT_EQ(find(by(known) + Dictionary{{kSecAttrSynchronizable, false}}), errSecSuccess);
    EXPECT_EQ(remove(by(known)), errSecSuccess);
    EXPECT_EQ(accounts(), Texts{});
}

TEST_P(KeychainReference, StaysWhateverChangesAndIsNotUsedAgain) {
    EXPECT_EQ(add(item("a", {{kSecValueData, secret}})), errSecSuccess);
    const auto known = reference(item("a"));
    EXPECT_EQ(update(item("a"), {{kSecValueData, Data()}, {kSecAttrAccount, "b"}, {kSecAttrLabel, "x"}}),
              errSecSuccess);
    EXPECT_EQ(reference(item("b")), known);
    EXPECT_EQ(remove(item("b")), errSecSuccess);
    EXPECT_EQ(add(item("b")), errSecSuccess);
    EXPECT_NE(reference(item("b")), known);
    expectFromAll(known, errSecItemNotFound);
}

TEST_P(KeychainReference, OfAnItemThatNeverWasIsNotFound) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    auto unknown = reference(item("a"));
    unknown.back() ^= std::byte{1};
    expectFromAll(unknown, errSecItemNotFound);
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_P(KeychainReference, OfAnotherVersionOrLengthOrTypeIsRefused) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    const auto known = reference(item("a"));
    auto newer = known;
    newer[0] = std::byte{2};
    auto longer = known;
    longer.push_back(std::byte{0});
    const Data shorter(known.begin(), known.end() - 1);
    for (const auto& wrong : {newer, longer, shorter, Data(), Data(1), Data(18)})
        expectFromAll(wrong, errSecParam);
    expectFromAll("reference", errSecParam);
    expectFromAll(1, errSecParam);
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_P(KeychainReference, IntoAnotherStoreIsNotAnsweredHere) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    auto elsewhere = reference(item("a"));
    elsewhere[1] = letter() == std::byte{'S'} ? std::byte{'E'} : std::byte{'S'};
    expectFromAll(elsewhere, errSecNotAvailable);
    EXPECT_EQ(accounts(), Texts{"a"});
}
