// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/KeychainStore.h>
#include <VorlanFoundation/Platform/Security.h>
#include <VorlanFoundation/Testing/InMemoryKeychain.h>
#include <VorlanFoundation/Testing/KeychainFault.h>

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <string>
#include <thread>
#include <utility>

using namespace vorlan;
using namespace std::chrono_literals;
using vorlan::testing::InMemoryKeychain;
using vorlan::testing::KeychainFault;
using Operation = KeychainFault::Operation;

namespace {

constexpr std::array operations{Operation::add, Operation::copyMatching, Operation::update,
                                Operation::remove};

const Value::Dictionary item{
    {kSecClass, kSecClassGenericPassword}, {kSecAttrService, "service"}, {kSecAttrAccount, "a"}};

OSStatus perform(Operation operation) {
    switch (operation) {
    case Operation::add: return SecItemAdd(item);
    case Operation::copyMatching: return SecItemCopyMatching(item);
    case Operation::update: return SecItemUpdate(item, {{kSecValueData, Data()}});
    case Operation::remove: break;
    }
    return SecItemDelete(item);
}

/// A keychain in memory with a fault before it, and one failed operation.
class HoldOff : public ::testing::Test {
protected:
    void fail(Operation operation, OSStatus status) {
        SCOPED_TRACE(std::to_string(static_cast<int>(operation)) + ": " + std::to_string(status));
        fault_.answer(operation, status);
        EXPECT_EQ(perform(operation), status);
    }

    // Every call is refused so, and none gets to the store.
    void expectAllRefused(OSStatus status) {
        const auto before = fault_.operations().size();
        for (const auto operation : operations) EXPECT_EQ(perform(operation), status);
        EXPECT_EQ(fault_.operations().size(), before);
    }

    void expectOver() {
        const auto before = fault_.operations().size();
        EXPECT_EQ(perform(Operation::copyMatching), errSecItemNotFound);
        EXPECT_EQ(fault_.operations().size(), before + 1);
    }

    const InMemoryKeychain keychain_{};
    KeychainFault fault_{};
};

} // namespace

TEST_F(HoldOff, AnswersThatSayWhatIsThereOrWhatTheHostDidWrongDoNotBeginOne) {
    for (const auto operation : {Operation::add, Operation::copyMatching, Operation::remove})
        for (const OSStatus status : {errSecSuccess, errSecDuplicateItem, errSecItemNotFound, errSecParam,
                                      errSecMissingEntitlement}) {
            fail(operation, status);
            expectOver();
        }
}

TEST_F(HoldOff, UpdateThatNeitherSucceededNorFoundNothingBeginsOneWhateverItsStatus) {
    for (const OSStatus status : {errSecSuccess, errSecItemNotFound}) {
        fail(Operation::update, status);
        expectOver();
    }
    for (const OSStatus status : {errSecDuplicateItem, errSecParam, errSecMissingEntitlement}) {
        fail(Operation::update, status);
        expectAllRefused(status);
        fault_.advance(5s);
        expectOver();
    }
}

TEST_F(HoldOff, FailureOfAnyOperationHasAllRefusedForFiveSeconds) {
    for (const auto operation : operations)
        for (const OSStatus status :
             {errSecNotAvailable, errSecIO, errSecDiskFull, errSecAllocate, errSecDecode,
              errSecInvalidKeychain, errSecAuthFailed, errSecUnimplemented, -1, 1}) {
            fail(operation, status);
            expectAllRefused(status);
            fault_.advance(5s - 1ns);
            expectAllRefused(status);
            fault_.advance(1ns);
            expectOver();
        }
}

TEST_F(HoldOff, LastsOneSecondWhenTheStoreWasLockedOrTheUserDismissedTheQuestion) {
    for (const auto operation : operations)
        for (const OSStatus status : {errSecInteractionNotAllowed, errSecUserCanceled}) {
            fail(operation, status);
            expectAllRefused(status);
            fault_.advance(1s - 1ns);
            expectAllRefused(status);
            fault_.advance(1ns);
            expectOver();
        }
}

TEST_F(HoldOff, IsNotProlongedByWhatItRefuses) {
    fail(Operation::add, errSecNotAvailable);
    for (int i = 0; i < 4; ++i) {
        fault_.advance(1s);
        expectAllRefused(errSecNotAvailable);
    }
    fault_.advance(1s);
    expectOver();
}

TEST_F(HoldOff, BeginsAnewWhenTheStoreStillFails) {
    fail(Operation::add, errSecNotAvailable);
    fault_.advance(5s);
    fail(Operation::remove, errSecInteractionNotAllowed);
    expectAllRefused(errSecInteractionNotAllowed);
    fault_.advance(1s);
    expectOver();
}

TEST_F(HoldOff, HoldsForEveryThread) {
    fail(Operation::update, errSecNotAvailable);
    OSStatus elsewhere = errSecSuccess;
    std::jthread([&] { elsewhere = perform(Operation::remove); }).join();
    EXPECT_EQ(elsewhere, errSecNotAvailable);
}

TEST_F(HoldOff, ChangesOfTheHostsOwnMakingThatAreRefusedBeginOneToo) {
    EXPECT_EQ(SecItemAdd(item), errSecSuccess);
    EXPECT_EQ(SecItemUpdate(item, {{kSecValueData, Data((1 << 20) + 1)}}), errSecParam);
    expectAllRefused(errSecParam);
    fault_.advance(5s);
    EXPECT_EQ(SecItemUpdate(item, {{kSecValueData, "no bytes"}}), errSecParam);
    expectAllRefused(errSecParam);
    fault_.advance(5s);
    EXPECT_EQ(SecItemAdd({}), errSecParam);
    EXPECT_EQ(SecItemCopyMatching(item), errSecSuccess) << "only updates do";
}

TEST_F(HoldOff, ResultIsUntouchedByWhatIsRefused) {
    EXPECT_EQ(SecItemAdd(item), errSecSuccess);
    fail(Operation::update, errSecNotAvailable);
    auto query = item;
    query[kSecReturnPersistentRef] = true;
    Value result = "before";
    EXPECT_EQ(SecItemCopyMatching(query, &result), errSecNotAvailable);
    EXPECT_EQ(result, Value("before"));
}

TEST_F(HoldOff, EndsWhenTheProcessUsesTheKeychainInAnotherWay) {
    fail(Operation::update, errSecNotAvailable);
    KeychainStore::configure({.store = KeychainOptions::Store::memory});
    expectOver();
}

// A store that fails in the first step and is back in the third must not be emptied by a host that clears up.
TEST_F(HoldOff, ItemsOutliveAHostThatClearsUpAfterAFailedUpdate) {
    EXPECT_EQ(SecItemAdd(item), errSecSuccess);
    fail(Operation::update, errSecNotAvailable);
    EXPECT_EQ(SecItemDelete(item), errSecNotAvailable);
    EXPECT_EQ(SecItemDelete({{kSecClass, kSecClassGenericPassword}}), errSecNotAvailable);
    fault_.advance(5s);
    EXPECT_EQ(SecItemCopyMatching(item), errSecSuccess);
}
