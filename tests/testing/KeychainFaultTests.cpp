// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/KeychainFault.h>

#include <VorlanFoundation/Platform/Security.h>
#include <VorlanFoundation/Testing/InMemoryKeychain.h>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using vorlan::testing::InMemoryKeychain;
using vorlan::testing::KeychainFault;
using Operation = KeychainFault::Operation;
using Operations = std::vector<Operation>;

namespace {

const Value::Dictionary item{
    {kSecClass, kSecClassGenericPassword}, {kSecAttrService, "service"}, {kSecAttrAccount, "a"}};

} // namespace

TEST(KeychainFault, ToldNothingItLetsEverythingPass) {
    const InMemoryKeychain keychain;
    const KeychainFault fault;
    EXPECT_EQ(SecItemAdd(item), errSecSuccess);
    EXPECT_EQ(SecItemUpdate(item, {{kSecValueData, Data()}}), errSecSuccess);
    EXPECT_EQ(SecItemCopyMatching(item), errSecSuccess);
    EXPECT_EQ(SecItemDelete(item), errSecSuccess);
    EXPECT_EQ(fault.operations(),
              (Operations{Operation::add, Operation::update, Operation::copyMatching, Operation::remove}));
}

TEST(KeychainFault, AnswersSoManyCallsOfAnOperationWithoutTheirBeingDone) {
    const InMemoryKeychain keychain;
    KeychainFault fault;
    fault.answer(Operation::add, errSecMissingEntitlement, 2);
    EXPECT_EQ(SecItemAdd(item), errSecMissingEntitlement);
    EXPECT_EQ(SecItemCopyMatching(item), errSecItemNotFound) << "it is about another operation";
    EXPECT_EQ(SecItemAdd(item), errSecMissingEntitlement);
    EXPECT_EQ(SecItemAdd(item), errSecSuccess);
    fault.answer(Operation::remove, errSecSuccess);
    EXPECT_EQ(SecItemDelete(item), errSecSuccess);
    EXPECT_EQ(SecItemCopyMatching(item), errSecSuccess) << "it was not deleted";
}

TEST(KeychainFault, AnswersComeInTheOrderInWhichTheyWereGiven) {
    const InMemoryKeychain keychain;
    KeychainFault fault;
    fault.answer(Operation::add, errSecDuplicateItem, 2);
    fault.answer(Operation::remove, errSecParam);
    fault.answer(Operation::add, errSecParam);
    EXPECT_EQ(SecItemAdd(item), errSecDuplicateItem);
    EXPECT_EQ(SecItemAdd(item), errSecDuplicateItem);
    EXPECT_EQ(SecItemAdd(item), errSecParam);
    EXPECT_EQ(SecItemAdd(item), errSecSuccess);
    EXPECT_EQ(SecItemDelete(item), errSecParam);
}

TEST(KeychainFault, AnswersEverythingForSoLongOnItsClock) {
    const InMemoryKeychain keychain;
    KeychainFault fault;
    fault.answerAll(errSecParam, 3s);
    fault.advance(3s - 1ns);
    EXPECT_EQ(SecItemAdd(item), errSecParam);
    EXPECT_EQ(SecItemCopyMatching(item), errSecParam);
    EXPECT_EQ(SecItemDelete(item), errSecParam);
    fault.advance(1ns);
    EXPECT_EQ(SecItemAdd(item), errSecSuccess);
}

TEST(KeychainFault, WhatIsToldOfOneOperationComesBeforeWhatIsToldOfAll) {
    const InMemoryKeychain keychain;
    KeychainFault fault;
    fault.answerAll(errSecParam, 1s);
    fault.answer(Operation::add, errSecDuplicateItem);
    EXPECT_EQ(SecItemAdd(item), errSecDuplicateItem);
    EXPECT_EQ(SecItemAdd(item), errSecParam);
}

TEST(KeychainFault, ItsClockIsThatOfTheHoldOffAndStandsStill) {
    const InMemoryKeychain keychain;
    KeychainFault fault;
    fault.answer(Operation::update, errSecNotAvailable);
    EXPECT_EQ(SecItemUpdate(item, {}), errSecNotAvailable);
    EXPECT_EQ(SecItemCopyMatching(item), errSecNotAvailable);
    fault.advance(5s - 1ns);
    EXPECT_EQ(SecItemCopyMatching(item), errSecNotAvailable);
    EXPECT_EQ(fault.operations(), Operations{Operation::update}) << "what is held off does not get here";
    fault.advance(1ns);
    EXPECT_EQ(SecItemCopyMatching(item), errSecItemNotFound);
    EXPECT_EQ(fault.operations(), (Operations{Operation::update, Operation::copyMatching}));
}

TEST(KeychainFault, WhenItIsGoneAllIsAsBefore) {
    const InMemoryKeychain keychain;
    {
        KeychainFault fault;
        fault.answer(Operation::add, errSecParam, 100);
        fault.answer(Operation::update, errSecNotAvailable);
        EXPECT_EQ(SecItemUpdate(item, {}), errSecNotAvailable);
    }
    EXPECT_EQ(SecItemAdd(item), errSecSuccess) << "the hold-off went too";
    {
        const KeychainFault another;
        EXPECT_EQ(another.operations(), Operations{}) << "it is new";
        EXPECT_EQ(SecItemCopyMatching(item), errSecSuccess);
    }
}

TEST(KeychainFault, CountsWhatSeveralThreadsDo) {
    const InMemoryKeychain keychain;
    KeychainFault fault;
    fault.answer(Operation::copyMatching, errSecParam, 40);
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < 4; ++thread)
            threads.emplace_back([] {
                for (int i = 0; i < 25; ++i) SecItemCopyMatching(item);
            });
    }
    EXPECT_EQ(fault.operations(), Operations(100, Operation::copyMatching));
    fault.answer(Operation::copyMatching, errSecParam);
    EXPECT_EQ(SecItemCopyMatching(item), errSecParam);
    EXPECT_EQ(SecItemCopyMatching(item), errSecItemNotFound) << "the forty were used up";
}
