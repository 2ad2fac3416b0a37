// SPDX-License-Identifier: Apache-2.0

// The keychain's hold-off after a failure, on the real clock.

#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/Security.h>
#include <VorlanFoundation/Testing/InMemoryKeychain.h>

#include <gtest/gtest.h>

#include <chrono>
#include <latch>

using namespace vorlan;
using namespace std::chrono_literals;

TEST(HoldOffSmoke, IsThereAtOnceAndOverAfterFiveSeconds) {
    const Value::Dictionary item{
        {kSecClass, kSecClassGenericPassword}, {kSecAttrService, "service"}, {kSecAttrAccount, "a"}};
    const vorlan::testing::InMemoryKeychain keychain;
    EXPECT_EQ(SecItemAdd(item), errSecSuccess);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(SecItemUpdate(item, {{kSecValueData, "no bytes"}}), errSecParam);
    const auto status = SecItemDelete({{kSecClass, kSecClassGenericPassword}});
    if (std::chrono::steady_clock::now() - begin >= 5s) GTEST_SKIP() << "the machine stood still";
    EXPECT_EQ(status, errSecParam);
    std::latch isOver(1);
    Queue::global().asyncAfter(5s, [&] { isOver.count_down(); });
    isOver.wait();
    EXPECT_EQ(SecItemDelete(item), errSecSuccess);
}
