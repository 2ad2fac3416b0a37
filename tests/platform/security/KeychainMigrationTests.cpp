// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/UserCase.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;
using namespace vorlan::tests;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

class KeychainMigration : public UserCase {
protected:
    /// Items of all sorts, in that store.
    void fill(Store store) {
        startAnew({.store = store});
        EXPECT_EQ(add("a"), errSecSuccess);
        auto full = item("b");
        full.insert({{kSecAttrAccessGroup, "group"},
                     {kSecAttrSynchronizable, true},
                     {kSecAttrAccessible, kSecAttrAccessibleAfterFirstUnlock},
                     {kSecAttrGeneric, Data{std::byte{0}, std::byte{0xFF}}},
                     {kSecAttrLabel, "label"},
                     {kSecValueData, Data{std::byte{0}}}});
        EXPECT_EQ(add(full), errSecSuccess);
        EXPECT_EQ(add(item("without a secret")), errSecSuccess);
        auto bytes = item("");
        bytes[kSecAttrAccount] = dataFromText("\xFF");
        bytes[kSecValueData] = Data();
        EXPECT_EQ(add(bytes), errSecSuccess);
        startAnew();
    }

    /// What is in a store now, as far as it is not the store's own affair: a keyring says itself when it was written to.
    Value::Array content() {
        auto content = items();
        for (auto& found : content) {
            found.dictionary()->erase(kSecAttrModificationDate);
            if (found[kSecAttrLabel] != Value("label")) found.dictionary()->erase(kSecAttrLabel);
        }
        return content;
    }

    std::string secretAt(const Data& reference) {
        fault_.advance(5s);
        Value result;
        EXPECT_EQ(SecItemCopyMatching({{kSecValuePersistentRef, reference}, {kSecReturnData, true}}, &result),
                  errSecSuccess);
        return textFromData(result.as<Data>().value_or(Data()));
    }

    static OSStatus migrate(Store from, Store to) { return KeychainStore::migrate(from, to); }
};

constexpr auto serviceUnknown = "org.freedesktop.DBus.Error.ServiceUnknown";

} // namespace

TEST_F(KeychainMigration, MovesEverythingIntoTheKeyring) {
    const auto& keyring = startKeyring();
    fill(Store::embedded);
    const auto before = content();
    const auto known = reference("a");
    EXPECT_EQ(migrate(Store::embedded, Store::secretService), errSecSuccess);
    EXPECT_EQ(KeychainStore::current(), Store::secretService);
    EXPECT_EQ(keyring.itemCount(), before.size());
    EXPECT_EQ(content(), before);
    EXPECT_EQ(secretAt(known), "secret of a");
    const auto now = reference("a");
    EXPECT_EQ(now.at(1), std::byte{'S'});
    EXPECT_EQ(secretAt(now), "secret of a");
    startAnew();
    EXPECT_EQ(content(), before);
    EXPECT_EQ(secretAt(known), "secret of a") << "in the next process too";
    EXPECT_EQ(problems_.count(), 0u);
}

TEST_F(KeychainMigration, MovesEverythingOutOfTheKeyring) {
    const auto& keyring = startKeyring();
    fill(Store::secretService);
    const auto before = content();
    const auto known = reference("a");
    EXPECT_EQ(migrate(Store::secretService, Store::embedded), errSecSuccess);
    EXPECT_EQ(KeychainStore::current(), Store::embedded);
    EXPECT_EQ(keyring.itemCount(), 0u);
    keyring_.reset();
    startAnew();
    EXPECT_EQ(content(), before);
    EXPECT_EQ(secretAt(known), "secret of a");
    EXPECT_EQ(reference("a").at(1), std::byte{'E'});
}

TEST_F(KeychainMigration, GoesThereAndBack) {
    const auto& keyring = startKeyring();
    fill(Store::embedded);
    const auto before = content();
    const auto known = reference("a");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(migrate(Store::embedded, Store::secretService), errSecSuccess);
        const auto meanwhile = reference("a");
        EXPECT_EQ(migrate(Store::secretService, Store::embedded), errSecSuccess);
        EXPECT_EQ(secretAt(meanwhile), "secret of a");
    }
    EXPECT_EQ(content(), before);
    EXPECT_EQ(secretAt(known), "secret of a");
    EXPECT_EQ(keyring.itemCount(), 0u);
}

TEST_F(KeychainMigration, MovedItemCanBeChangedAndDeletedByItsReference) {
    startKeyring();
    fill(Store::embedded);
    const auto known = reference("a");
    EXPECT_EQ(migrate(Store::embedded, Store::secretService), errSecSuccess);
    EXPECT_EQ(SecItemUpdate({{kSecValuePersistentRef, known}}, {{kSecValueData, dataFromText("new")}}),
              errSecSuccess);
    EXPECT_EQ(secretAt(known), "new");
    EXPECT_EQ(add("a"), errSecDuplicateItem);
    EXPECT_EQ(SecItemDelete({{kSecValuePersistentRef, known}}), errSecSuccess);
    EXPECT_EQ(find("a"), errSecItemNotFound);
    EXPECT_EQ(SecItemCopyMatching({{kSecValuePersistentRef, known}}), errSecItemNotFound);
}

TEST_F(KeychainMigration, EmptyKeychainMovesToo) {
    startKeyring();
    startAnew({.store = Store::embedded});
    EXPECT_EQ(add("a"), errSecSuccess);
    EXPECT_EQ(remove("a"), errSecSuccess);
    startAnew();
    EXPECT_EQ(migrate(Store::embedded, Store::secretService), errSecSuccess);
    EXPECT_EQ(KeychainStore::current(), Store::secretService);
    EXPECT_EQ(find("a"), errSecItemNotFound);
    EXPECT_EQ(add("a"), errSecSuccess);
}

TEST_F(KeychainMigration, IsRefusedWhereItMakesNoSense) {
    startKeyring();
    EXPECT_EQ(migrate(Store::embedded, Store::secretService), errSecParam) << "nothing is recorded";
    EXPECT_FALSE(fs::exists(record()));
    fill(Store::embedded);
    const auto before = content();
    EXPECT_EQ(migrate(Store::secretService, Store::embedded), errSecParam);
    EXPECT_EQ(migrate(Store::embedded, Store::embedded), errSecParam);
    EXPECT_EQ(migrate(Store::embedded, Store::memory), errSecParam);
    EXPECT_EQ(migrate(Store::memory, Store::embedded), errSecParam);
    EXPECT_EQ(migrate(Store::automatic, Store::secretService), errSecParam);
    EXPECT_EQ(migrate(Store::embedded, Store::automatic), errSecParam);
    EXPECT_EQ(KeychainStore::current(), Store::embedded);
    EXPECT_EQ(content(), before);
}

TEST_F(KeychainMigration, KeyringThatIsGoneOrLockedLeavesEverythingWhereItIs) {
    auto& keyring = startKeyring();
    fill(Store::embedded);
    const auto before = content();
    keyring.setLocked(true);
    EXPECT_EQ(migrate(Store::embedded, Store::secretService), errSecInteractionNotAllowed);
    EXPECT_EQ(content(), before);
    keyring.setLocked(false);
    keyring.disconnect();
    EXPECT_EQ(migrate(Store::embedded, Store::secretService), errSecNotAvailable);
    EXPECT_EQ(content(), before);
    EXPECT_EQ(KeychainStore::current(), Store::embedded);
    keyring.connect();
    EXPECT_EQ(migrate(Store::embedded, Store::secretService), errSecSuccess);
    EXPECT_EQ(content(), before);
}

TEST_F(KeychainMigration, KeyringThatIsGoneKeepsWhatIsInIt) {
    auto& keyring = startKeyring();
    fill(Store::secretService);
    const auto before = content();
    keyring.disconnect();
    EXPECT_EQ(migrate(Store::secretService, Store::embedded), errSecNotAvailable);
    keyring.connect();
    keyring.setLocked(true);
    EXPECT_EQ(migrate(Store::secretService, Store::embedded), errSecInteractionNotAllowed);
    keyring.setLocked(false);
    EXPECT_EQ(KeychainStore::current(), Store::secretService);
    EXPECT_EQ(content(), before);
}

TEST_F(KeychainMigration, BrokenOffItLeavesEverythingWhereItIsAndCanBeTriedAgain) {
    auto& keyring = startKeyring();
    fill(Store::embedded);
    const auto before = content();
    keyring.dieAt("CreateItem", true);
    EXPECT_NE(migrate(Store::embedded, Store::secretService), errSecSuccess);
    EXPECT_EQ(KeychainStore::current(), Store::embedded);
    EXPECT_EQ(content(), before);
    keyring.connect();
    EXPECT_EQ(migrate(Store::embedded, Store::secretService), errSecSuccess);
    EXPECT_EQ(keyring.itemCount(), before.size());
    EXPECT_EQ(content(), before);
}

TEST_F(KeychainMigration, WhatChangedAfterItWasBrokenOffIsMovedAsItIsThen) {
    auto& keyring = startKeyring();
    startAnew({.store = Store::embedded});
    EXPECT_EQ(add("a"), errSecSuccess);
    startAnew();
    keyring.dieAt("CreateItem", true);
    EXPECT_NE(migrate(Store::embedded, Store::secretService), errSecSuccess);
    EXPECT_EQ(update("a", {{kSecAttrAccount, "renamed"}, {kSecValueData, dataFromText("new")}}),
              errSecSuccess);
    const auto known = reference("renamed");
    keyring.connect();
    EXPECT_EQ(migrate(Store::embedded, Store::secretService), errSecSuccess);
    EXPECT_EQ(accounts(), Texts{"renamed"});
    EXPECT_EQ(secretAt(known), "new");
}

TEST_F(KeychainMigration, WhatWasDeletedAfterItWasBrokenOffDoesNotComeBack) {
    auto& keyring = startKeyring();
    startAnew({.store = Store::embedded});
    EXPECT_EQ(add("a"), errSecSuccess);
    startAnew();
    keyring.dieAt("CreateItem", true);
    EXPECT_NE(migrate(Store::embedded, Store::secretService), errSecSuccess);
    EXPECT_EQ(remove("a"), errSecSuccess);
    EXPECT_EQ(add("b"), errSecSuccess);
    keyring.connect();
    EXPECT_EQ(migrate(Store::embedded, Store::secretService), errSecSuccess);
    EXPECT_EQ(accounts(), Texts{"b"});
}

TEST_F(KeychainMigration, CopiesThatReadBackOtherwiseAreNotRelied) {
    auto& keyring = startKeyring();
    fill(Store::embedded);
    const auto before = content();
    keyring.setWrongSecrets(true);
    EXPECT_NE(migrate(Store::embedded, Store::secretService), errSecSuccess);
    keyring.setWrongSecrets(false);
    EXPECT_EQ(KeychainStore::current(), Store::embedded);
    EXPECT_EQ(content(), before);
}

TEST_F(KeychainMigration, FormerItemsThatCannotBeDeletedAreReportedAndDoNotComeBack) {
    auto& keyring = startKeyring();
    fill(Store::secretService);
    const auto before = content();
    keyring.fail("Delete", "org.freedesktop.DBus.Error.Failed", 100);
    EXPECT_EQ(migrate(Store::secretService, Store::embedded), errSecSuccess);
    EXPECT_EQ(KeychainStore::current(), Store::embedded);
    EXPECT_EQ(problems_.count(), 1u);
    EXPECT_EQ(
        problems_.take().find("VorlanFoundation/Keychain: the keychain was moved, but its former items could "
                              "not all be deleted from "),
        0u);
    EXPECT_EQ(content(), before);
    EXPECT_EQ(keyring.itemCount(), before.size());
    keyring.behave();
    EXPECT_EQ(update("a", {{kSecValueData, dataFromText("newer")}}), errSecSuccess);
    EXPECT_EQ(remove("without a secret"), errSecSuccess);
    const auto newer = content();
    EXPECT_EQ(migrate(Store::embedded, Store::secretService), errSecSuccess);
    EXPECT_EQ(content(), newer);
    EXPECT_EQ(keyring.itemCount(), newer.size());
}

TEST_F(KeychainMigration, ServiceThatVanishesBetweenTwoCallsIsAFailureLikeAnyOther) {
    auto& keyring = startKeyring();
    fill(Store::embedded);
    const auto before = content();
    for (const auto* method : {"OpenSession", "SearchItems", "CreateItem", "GetSecrets"}) {
        keyring.fail(method, serviceUnknown, 1);
        const auto status = migrate(Store::embedded, Store::secretService);
        keyring.behave();
        // A question that is only read may be asked again, and is answered then.
        if (status == errSecSuccess) {
            EXPECT_EQ(migrate(Store::secretService, Store::embedded), errSecSuccess);
        }
        EXPECT_EQ(KeychainStore::current(), Store::embedded) << method;
        EXPECT_EQ(content(), before) << method;
    }
}

TEST_F(KeychainMigration, LosesNothingThatOthersWriteMeanwhile) {
    startKeyring();
    startAnew({.store = Store::embedded});
    EXPECT_EQ(add("first"), errSecSuccess);
    startAnew();
    constexpr int threadCount = 3;
    constexpr int itemCount = 12;
    std::atomic<int> wrong{0};
    std::atomic<int> finished{0};
    const auto deadline = std::chrono::steady_clock::now() + 60s;
    // A store that is being moved may be busy for longer than a call waits.
    const auto untilAvailable = [&](auto call) {
        auto status = call();
        while (status == errSecNotAvailable && std::chrono::steady_clock::now() < deadline) {
            fault_.advance(5s);
            status = call();
        }
        return status;
    };
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < threadCount; ++thread)
            threads.emplace_back([&, thread] {
                for (int i = 0; i < itemCount; ++i) {
                    const auto account = std::to_string(thread) + "." + std::to_string(i);
                    if (untilAvailable([&] { return add(account); }) != errSecSuccess) ++wrong;
                    if (untilAvailable([&] { return find(account); }) != errSecSuccess) ++wrong;
                    if (untilAvailable([&] { return find("first"); }) != errSecSuccess) ++wrong;
                }
                ++finished;
            });
        auto here = Store::embedded;
        auto there = Store::secretService;
        int moves = 0;
        while ((finished < threadCount || moves < 2) && std::chrono::steady_clock::now() < deadline)
            if (migrate(here, there) == errSecSuccess) {
                std::swap(here, there);
                ++moves;
            }
        EXPECT_GE(moves, 2);
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(items().size(), 1u + threadCount * itemCount);
}
