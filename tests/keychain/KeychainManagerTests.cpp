// SPDX-License-Identifier: Apache-2.0
#include "tests/keychain/ManagerKit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;
using namespace vorlan::tests;

using Texts = std::vector<std::string>;

TEST(KeychainManager, ConfiguringIsCalledOnceWithAllAbsent) {
    int calls = 0;
    const auto manager = KeychainManager::with([&](KeychainSettings& settings) {
        ++calls;
        EXPECT_FALSE(settings.service || settings.accessGroup || settings.synchronizable ||
                     settings.accessibility);
        settings.service = "service";
        settings.synchronizable = false;
        settings.accessibility = whenUnlocked;
    });
    EXPECT_EQ(calls, 1);
}

TEST(KeychainManager, SettingsAreNotKept) {
    const Kit kit;
    const auto settings = KeychainSettings::with([](KeychainSettings& fresh) {
        fresh.service = "before";
        fresh.synchronizable = false;
        fresh.accessibility = whenUnlocked;
    });
    KeychainManager manager(*settings);
    settings->service = "after";
    settings->synchronizable = std::nullopt;
    EXPECT_TRUE(manager.insert("key", dataFromText("value")));
    EXPECT_EQ(accountsOf({{kSecAttrService, "before"}}), Texts{"key"});
    EXPECT_EQ(accountsOf({{kSecAttrService, "after"}}), Texts{});
}

TEST(KeychainManager, CopyIsAsGoodAsTheOriginal) {
    const Kit kit;
    auto manager = makeManager();
    auto copy = manager;
    EXPECT_TRUE(manager.insert("key", dataFromText("value")));
    EXPECT_EQ(copy.data("key"), dataFromText("value"));
    EXPECT_TRUE(copy.remove("key"));
    EXPECT_EQ(manager.data("key"), std::nullopt);
}

TEST(KeychainManager, ItemCarriesTheSettingsAndTheKeyAsAccountAndGeneric) {
    const Kit kit;
    auto manager = makeManager({.accessGroup = "group", .synchronizable = true, .accessibility = always});
    EXPECT_TRUE(manager.insert("k\u00E9y", dataFromText("value")));
    const auto items = itemsOf();
    ASSERT_EQ(items.size(), 1u);
    const auto& item = items[0];
    EXPECT_EQ(item[kSecClass], Value(kSecClassGenericPassword));
    EXPECT_EQ(item[kSecAttrService], Value("com.example.mail"));
    EXPECT_EQ(item[kSecAttrAccessGroup], Value("group"));
    EXPECT_EQ(item[kSecAttrSynchronizable], Value(true));
    EXPECT_EQ(item[kSecAttrAccessible], Value(kSecAttrAccessibleAlways));
    EXPECT_EQ(item[kSecAttrAccount], Value(dataFromText("k\u00E9y")));
    EXPECT_EQ(item[kSecAttrGeneric], Value(dataFromText("k\u00E9y")));
    EXPECT_EQ(item[kSecValueData], Value(dataFromText("value")));
}

TEST(KeychainManager, InsertedBytesAreRead) {
    const Kit kit;
    auto manager = makeManager();
    const Data bytes{std::byte{0}, std::byte{0xFF}, std::byte{'\n'}, std::byte{0}};
    EXPECT_TRUE(manager.insert("key", bytes));
    EXPECT_EQ(manager.data("key"), bytes);
    EXPECT_EQ(manager.data("Key"), std::nullopt);
    EXPECT_EQ(manager.data(""), std::nullopt);
}

TEST(KeychainManager, EmptyKeyIsAKeyLikeAnyOther) {
    const Kit kit;
    auto manager = makeManager();
    EXPECT_TRUE(manager.insert("", dataFromText("value")));
    EXPECT_EQ(manager.data(""), dataFromText("value"));
    EXPECT_TRUE(manager.remove(""));
    EXPECT_EQ(manager.data(""), std::nullopt);
}

TEST(KeychainManager, InsertedWithoutAValueTheKeyHasAnItemThatHoldsNothing) {
    const Kit kit;
    auto manager = makeManager();
    EXPECT_TRUE(manager.insert("key", std::nullopt));
    EXPECT_EQ(manager.data("key"), std::nullopt);
    EXPECT_EQ(manager.string("key"), std::nullopt);
    EXPECT_EQ(manager.bool_("key"), std::nullopt);
    EXPECT_TRUE(manager.dataRef("key").has_value());
    EXPECT_EQ(accountsOf(), Texts{"key"});
    EXPECT_TRUE(itemsOf()[0][kSecValueData].isNull());
}

TEST(KeychainManager, EmptyBytesAreNotTheSameAsNone) {
    const Kit kit;
    auto manager = makeManager();
    EXPECT_TRUE(manager.insert("key", Data()));
    EXPECT_EQ(manager.data("key"), Data());
    EXPECT_EQ(manager.string("key"), "");
    EXPECT_EQ(manager.bool_("key"), std::nullopt);
}

TEST(KeychainManager, InsertingAnExistingKeyUpdatesIt) {
    Kit kit;
    auto manager = makeManager();
    EXPECT_TRUE(manager.insert("key", dataFromText("old")));
    const auto reference = manager.dataRef("key");
    EXPECT_TRUE(manager.insert("key", dataFromText("new")));
    EXPECT_EQ(kit.fault.operations(),
              (Operations{Operation::add, Operation::copyMatching, Operation::add, Operation::update}));
    EXPECT_EQ(manager.data("key"), dataFromText("new"));
    EXPECT_EQ(manager.dataRef("key"), reference);
    EXPECT_EQ(itemsOf().size(), 1u);
}

TEST(KeychainManager, InsertThatFailsOtherwiseIsFalseAndPrintsNothing) {
    Kit kit;
    auto manager = makeManager();
    for (const OSStatus status :
         {errSecParam, errSecMissingEntitlement, errSecItemNotFound, errSecNotAvailable}) {
        kit.fault.answer(Operation::add, status);
        EXPECT_EQ(printedBy([&] { EXPECT_FALSE(manager.insert("key", dataFromText("value"))); }), "")
            << status;
    }
    EXPECT_EQ(kit.fault.operations(), Operations(4, Operation::add));
}

TEST(KeychainManager, TextIsReadWhereItIsUtf8) {
    const Kit kit;
    auto manager = makeManager();
    manager.insert("text", dataFromText("gr\u00FC\u00DFe"));
    manager.insert("null", dataFromText({"a\0b", 3}));
    manager.insert("broken", dataFromText("\xC3\x28"));
    manager.insert("cut", dataFromText("abc\xE2\x82"));
    EXPECT_EQ(manager.string("text"), "gr\u00FC\u00DFe");
    EXPECT_EQ(manager.string("null"), std::string("a\0b", 3));
    EXPECT_EQ(manager.string("broken"), std::nullopt);
    EXPECT_EQ(manager.string("cut"), std::nullopt);
    EXPECT_EQ(manager.string("missing"), std::nullopt);
}

TEST(KeychainManager, BooleanIsWhetherTheFirstByteIsOne) {
    const Kit kit;
    auto manager = makeManager();
    const auto read = [&](Data bytes) {
        manager.insert("key", std::move(bytes));
        return manager.bool_("key");
    };
    EXPECT_EQ(read({std::byte{1}}), true);
    EXPECT_EQ(read({std::byte{0}}), false);
    EXPECT_EQ(read({std::byte{2}}), false);
    EXPECT_EQ(read(dataFromText("1")), false);
    EXPECT_EQ(read({std::byte{1}, std::byte{0}}), true);
    EXPECT_EQ(read({std::byte{0}, std::byte{1}}), false);
    EXPECT_EQ(read({}), std::nullopt);
    EXPECT_EQ(manager.bool_("missing"), std::nullopt);
}

TEST(KeychainManager, SubscriptsReadAndWriteTheKeychain) {
    const Kit kit;
    auto keychain = makeManager();
    keychain["text"] = "secret";
    keychain["flag"] = false;
    keychain["bytes"] = dataFromText("bytes");
    const std::optional<std::string> text = keychain["text"];
    EXPECT_EQ(text, "secret");
    EXPECT_EQ(keychain["flag"].as<bool>(), false);
    EXPECT_EQ(keychain.data("flag"), Data{std::byte{0}});
    EXPECT_EQ(keychain["bytes"].as<Data>(), dataFromText("bytes"));
    keychain["text"] = std::nullopt;
    keychain["flag"] = std::nullopt;
    keychain["bytes"] = std::optional<Data>();
    EXPECT_EQ(itemsOf().size(), 0u);
}

TEST(KeychainManager, DataRefIsTheReferenceOfTheKeysItem) {
    const Kit kit;
    auto manager = makeManager();
    manager.insert("one", dataFromText("first"));
    manager.insert("two", dataFromText("second"));
    const auto one = manager.dataRef("one");
    const auto two = manager.dataRef("two");
    ASSERT_TRUE(one && two);
    EXPECT_NE(one, two);
    EXPECT_EQ(manager.string(*one), "first");
    EXPECT_EQ(manager.string(*two), "second");
    EXPECT_EQ(manager.dataRef("three"), std::nullopt);
}

TEST(KeychainManager, ReadsThatFailAreAbsent) {
    Kit kit;
    auto manager = makeManager();
    manager.insert("key", Data{std::byte{1}});
    const auto reference = manager.dataRef("key");
    const auto whileFailing = [&](auto read) {
        kit.fault.answer(Operation::copyMatching, errSecNotAvailable);
        const auto found = read();
        kit.fault.advance(std::chrono::seconds(5));
        return found.has_value();
    };
    EXPECT_FALSE(whileFailing([&] { return manager.data("key"); }));
    EXPECT_FALSE(whileFailing([&] { return manager.string("key"); }));
    EXPECT_FALSE(whileFailing([&] { return manager.bool_("key"); }));
    EXPECT_FALSE(whileFailing([&] { return manager.dataRef("key"); }));
    EXPECT_FALSE(whileFailing([&] { return manager.string(*reference); }));
    EXPECT_EQ(manager.bool_("key"), true);
}

TEST(KeychainManager, ReadsSeeOnlyWhatWasWrittenWithTheSameSettings) {
    const Kit kit;
    auto manager = makeManager();
    EXPECT_TRUE(manager.insert("key", dataFromText("value")));
    EXPECT_EQ(makeManager({.accessibility = always}).data("key"), std::nullopt);
    EXPECT_EQ(makeManager({.synchronizable = true}).data("key"), std::nullopt);
    EXPECT_EQ(makeManager({.accessGroup = "group"}).data("key"), std::nullopt);
    EXPECT_EQ(makeManager({.service = "com.example.chat"}).data("key"), std::nullopt);
    EXPECT_EQ(makeManager({.accessibility = always}).dataRef("key"), std::nullopt);
    EXPECT_EQ(makeManager().data("key"), dataFromText("value"));
}

TEST(KeychainManager, WithoutAnAccessGroupItSeesTheItemsOfAll) {
    const Kit kit;
    auto grouped = makeManager({.accessGroup = "group"});
    EXPECT_TRUE(grouped.insert("key", dataFromText("value")));
    EXPECT_EQ(makeManager().data("key"), dataFromText("value"));
    EXPECT_TRUE(makeManager().remove("key"));
    EXPECT_EQ(grouped.data("key"), std::nullopt);
}

TEST(KeychainManager, ThreadsMayShareOne) {
    const Kit kit;
    auto manager = makeManager();
    std::atomic<int> wrong{0};
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < 4; ++thread)
            threads.emplace_back([&, thread] {
                for (int i = 0; i < 50; ++i) {
                    const auto key = std::to_string(thread) + "." + std::to_string(i);
                    if (!manager.insert(key, dataFromText(key)) || manager.string(key) != key) ++wrong;
                    if (i % 2 == 0 && !manager.remove(key)) ++wrong;
                }
            });
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(itemsOf().size(), 100u);
}
