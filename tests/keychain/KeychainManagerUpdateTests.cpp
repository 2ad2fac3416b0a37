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

namespace {

const auto oldValue = dataFromText("old");
const auto newValue = dataFromText("new");

/// What reached the keychain since `work` began.
template <class Work>
Operations operationsOf(const Kit& kit, Work&& work) {
    const auto before = kit.fault.operations().size();
    work();
    auto operations = kit.fault.operations();
    operations.erase(operations.begin(), operations.begin() + static_cast<std::ptrdiff_t>(before));
    return operations;
}

Operations removals(std::size_t count) {
    return Operations(count, Operation::remove);
}

Operations operator+(Operations a, const Operations& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

} // namespace

TEST(KeychainManager, UpdatedKeyHasTheNewValueAndItsReference) {
    const Kit kit;
    auto manager = makeManager();
    manager.insert("key", oldValue);
    const auto reference = manager.dataRef("key");
    const auto operations = operationsOf(kit, [&] { EXPECT_TRUE(manager.update("key", newValue)); });
    EXPECT_EQ(operations, Operations{Operation::update});
    EXPECT_EQ(manager.data("key"), newValue);
    EXPECT_EQ(manager.dataRef("key"), reference);
}

TEST(KeychainManager, UpdatedWithoutAValueTheKeyKeepsTheOneItHas) {
    const Kit kit;
    auto manager = makeManager();
    manager.insert("key", oldValue);
    EXPECT_TRUE(manager.update("key", std::nullopt));
    EXPECT_EQ(manager.data("key"), oldValue);
    EXPECT_TRUE(manager.insert("key", std::nullopt));
    EXPECT_EQ(manager.data("key"), oldValue);
}

TEST(KeychainManager, UpdatingAMissingKeyInsertsIt) {
    const Kit kit;
    auto manager = makeManager();
    const auto operations = operationsOf(kit, [&] { EXPECT_TRUE(manager.update("key", newValue)); });
    EXPECT_EQ(operations, (Operations{Operation::update, Operation::remove, Operation::add}));
    EXPECT_EQ(manager.data("key"), newValue);
}

TEST(KeychainManager, UpdatingAMissingKeyWithoutAValueInsertsAnItemThatHoldsNothing) {
    const Kit kit;
    auto manager = makeManager();
    EXPECT_TRUE(manager.update("key", std::nullopt));
    EXPECT_EQ(manager.data("key"), std::nullopt);
    EXPECT_EQ(accountsOf(), Texts{"key"});
}

TEST(KeychainManager, InsertingWithAnotherAccessibilityReplacesTheItem) {
    const Kit kit;
    makeManager().insert("key", oldValue);
    auto manager = makeManager({.accessibility = always});
    const auto operations = operationsOf(kit, [&] { EXPECT_TRUE(manager.insert("key", newValue)); });
    EXPECT_EQ(operations, (Operations{Operation::add, Operation::update, Operation::remove, Operation::add}));
    EXPECT_EQ(manager.data("key"), newValue);
    EXPECT_EQ(makeManager().data("key"), std::nullopt);
    EXPECT_EQ(itemsOf().size(), 1u);
}

TEST(KeychainManager, ReplacingAlsoRemovesTheKeysSynchronizableItem) {
    const Kit kit;
    auto synchronizable = makeManager({.synchronizable = true});
    synchronizable.insert("key", oldValue);
    EXPECT_TRUE(makeManager().update("key", newValue));
    EXPECT_EQ(synchronizable.data("key"), std::nullopt);
    EXPECT_EQ(makeManager().data("key"), newValue);
}

TEST(KeychainManager, UpdateWhoseRemovalFailsWipesTheServiceInTheOrderOfTheClasses) {
    Kit kit;
    auto manager = makeManager();
    manager.insert("key", oldValue);
    kit.fault.answer(Operation::update, errSecItemNotFound);
    kit.fault.answer(Operation::remove, errSecMissingEntitlement);
    const auto operations = operationsOf(kit, [&] { EXPECT_FALSE(manager.update("key", newValue)); });
    EXPECT_EQ(operations, Operations{Operation::update} + removals(1 + 5));
    EXPECT_EQ(itemsOf().size(), 0u);
}

TEST(KeychainManager, UpdateWhoseInsertionFailsWipesTheService) {
    Kit kit;
    auto manager = makeManager();
    manager.insert("one", oldValue);
    manager.insert("two", oldValue);
    kit.fault.answer(Operation::update, errSecItemNotFound);
    kit.fault.answer(Operation::add, errSecMissingEntitlement);
    const auto operations = operationsOf(kit, [&] { EXPECT_FALSE(manager.update("one", newValue)); });
    EXPECT_EQ(operations, (Operations{Operation::update, Operation::remove, Operation::add}) + removals(5));
    EXPECT_EQ(itemsOf().size(), 0u);
}

// Add says that there is one, update that there is none, and so again: it ends when the keychain changes its mind.
TEST(KeychainManager, InsertAndUpdateCallEachOtherForAsLongAsTheKeychainContradictsItself) {
    Kit kit;
    auto manager = makeManager();
    kit.fault.answer(Operation::add, errSecDuplicateItem, 3);
    kit.fault.answer(Operation::update, errSecItemNotFound, 3);
    const auto operations = operationsOf(kit, [&] { EXPECT_TRUE(manager.insert("key", newValue)); });
    Operations expected;
    for (int i = 0; i < 3; ++i)
        expected = expected + Operations{Operation::add, Operation::update, Operation::remove};
    EXPECT_EQ(operations, expected + Operations{Operation::add});
    EXPECT_EQ(manager.data("key"), newValue);
}

TEST(KeychainManager, EveryLevelOfAFailedUpdateWipes) {
    Kit kit;
    auto manager = makeManager();
    kit.fault.answer(Operation::update, errSecItemNotFound, 2);
    kit.fault.answer(Operation::add, errSecDuplicateItem);
    kit.fault.answer(Operation::add, errSecParam);
    const auto operations = operationsOf(kit, [&] { EXPECT_FALSE(manager.update("key", newValue)); });
    EXPECT_EQ(operations, (Operations{Operation::update, Operation::remove, Operation::add, Operation::update,
                                      Operation::remove, Operation::add}) +
                              removals(5 + 5));
}

TEST(KeychainManager, UpdateThatFailsLosesNothingWhileTheKeychainHoldsOff) {
    for (const OSStatus status :
         {errSecNotAvailable, errSecInteractionNotAllowed, errSecParam, errSecDiskFull, errSecIO,
          errSecInvalidKeychain, errSecDecode, errSecMissingEntitlement}) {
        SCOPED_TRACE(status);
        Kit kit;
        auto manager = makeManager();
        manager.insert("key", oldValue);
        manager.insert("other", oldValue);
        kit.fault.answer(Operation::update, status);
        const auto operations = operationsOf(kit, [&] { EXPECT_FALSE(manager.update("key", newValue)); });
        EXPECT_EQ(operations, Operations{Operation::update})
            << "nothing of the clearing up reaches the store";
        kit.fault.advance(5s);
        EXPECT_EQ(manager.data("key"), oldValue);
        EXPECT_EQ(manager.data("other"), oldValue);
        EXPECT_TRUE(manager.update("key", newValue));
    }
}

TEST(KeychainManager, UpdateWithAValueThatIsTooLargeLosesNothing) {
    Kit kit;
    auto manager = makeManager();
    manager.insert("key", oldValue);
    manager.insert("other", oldValue);
    EXPECT_FALSE(manager.update("key", Data((1 << 20) + 1)));
    EXPECT_FALSE(manager.update("key", newValue)) << "the keychain holds off";
    kit.fault.advance(5s);
    EXPECT_EQ(manager.data("key"), oldValue);
    EXPECT_EQ(manager.data("other"), oldValue);
}

TEST(KeychainManager, KeyThatIsNoTextIsRefusedAndLosesNothing) {
    Kit kit;
    auto manager = makeManager();
    manager.insert("other", oldValue);
    EXPECT_FALSE(manager.insert("\xFF", newValue));
    EXPECT_FALSE(manager.update("\xFF", newValue));
    kit.fault.advance(5s);
    EXPECT_EQ(manager.data("\xFF"), std::nullopt);
    EXPECT_FALSE(manager.remove("\xFF"));
    EXPECT_EQ(manager.data("other"), oldValue);
}

TEST(KeychainManager, WipingLeavesOtherServicesGroupsAndSynchronizableItems) {
    Kit kit;
    makeManager({.service = "com.example.chat"}).insert("another service", oldValue);
    makeManager({.synchronizable = true}).insert("synchronizable", oldValue);
    makeManager({.accessGroup = "group"}).insert("grouped", oldValue);
    makeManager({.accessGroup = "other"}).insert("of another group", oldValue);
    auto grouped = makeManager({.accessGroup = "group"});
    EXPECT_EQ(operationsOf(kit, [&] { grouped.wipe(); }), removals(5));
    EXPECT_EQ(accountsOf(), (Texts{"another service", "synchronizable", "of another group"}));
    makeManager().wipe();
    EXPECT_EQ(accountsOf(), (Texts{"another service", "synchronizable"}));
}

// The first of the five is the one for generic passwords: when it alone is refused, they all stay.
TEST(KeychainManager, WipingBeginsWithGenericPasswordsAndGoesOnAfterAFailure) {
    Kit kit;
    auto manager = makeManager();
    manager.insert("key", oldValue);
    kit.fault.answer(Operation::remove, errSecMissingEntitlement);
    EXPECT_EQ(operationsOf(kit, [&] { manager.wipe(); }), removals(5));
    EXPECT_EQ(accountsOf(), Texts{"key"});
    manager.wipe();
    EXPECT_EQ(accountsOf(), Texts{});
}
