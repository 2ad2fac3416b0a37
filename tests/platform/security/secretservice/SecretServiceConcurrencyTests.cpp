// SPDX-License-Identifier: Apache-2.0
// Many threads and many processes at one keyring.
#include "tests/platform/security/secretservice/KeyringItems.h"

#include "tests/support/ChildProcess.h"

#include <atomic>
#include <sstream>
#include <thread>
#include <vector>

namespace vorlan::tests {

namespace {

/// Adds, reads, changes and deletes items of its own.
bool useKeychain(int thread) {
    for (int i = 0; i < 5; ++i) {
        const auto item = itemOf("thread " + std::to_string(thread) + ", item " + std::to_string(i));
        auto withSecret = item;
        withSecret[kSecValueData] = dataFromText("secret");
        auto query = item;
        query[kSecReturnData] = kCFBooleanTrue;
        Value result;
        if (SecItemAdd(withSecret) != errSecSuccess) return false;
        if (SecItemUpdate(item, {{kSecValueData, dataFromText("new")}}) != errSecSuccess) return false;
        if (SecItemCopyMatching(query, &result) != errSecSuccess) return false;
        if (result.as<Data>() != dataFromText("new")) return false;
        if (i % 2 == 0 && SecItemDelete(item) != errSecSuccess) return false;
    }
    return true;
}

/// Eight at once, all of whom succeed; two items of each are left.
void expectThreadsToAgree() {
    std::atomic<int> successes = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread)
        threads.emplace_back([&successes, thread] { successes += useKeychain(thread) ? 1 : 0; });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(successes, 8);
    EXPECT_EQ(countOfItems(), 16U);
}

class GnomeKeyringConcurrencyTest : public KeyringTest {
protected:
    void SetUp() override {
        if (!GnomeKeyring::isInstalled()) GTEST_SKIP() << "gnome-keyring-daemon is not installed";
        keyring_.emplace(bus_);
    }

    std::optional<GnomeKeyring> keyring_;
};

using FakeKeyringConcurrencyTest = FakeKeyringTest;

} // namespace

TEST_F(FakeKeyringConcurrencyTest, EightThreadsAtOnceGetWhatTheyWant) {
    expectThreadsToAgree();
}

TEST_F(FakeKeyringConcurrencyTest, EightThreadsAtOnceOutliveARestart) {
    expectThreadsToAgree();
    fake_.disconnect();
    fake_.connect();
    EXPECT_EQ(countOfItems(), 16U);
}

TEST_F(GnomeKeyringConcurrencyTest, EightThreadsAtOnceGetWhatTheyWant) {
    expectThreadsToAgree();
}

TEST_F(GnomeKeyringConcurrencyTest, ProcessesInARaceAddEachItemOnce) {
    constexpr int items = 20;
    std::vector<support::ChildProcess> racers;
    for (int i = 0; i < 4; ++i)
        racers.emplace_back(
            std::vector<std::string>{VORLAN_KEYRING_RACER, serviceName, std::to_string(items)});
    for (auto& racer : racers) ASSERT_EQ(racer.nextLine(), "ready");
    for (auto& racer : racers) racer.send("go\n");
    int added = 0;
    int known = 0;
    for (auto& racer : racers) {
        std::istringstream counts(racer.nextLine());
        int hisAdded = -1;
        int hisKnown = -1;
        int hisFailed = -1;
        counts >> hisAdded >> hisKnown >> hisFailed;
        EXPECT_EQ(hisFailed, 0) << counts.str();
        added += hisAdded;
        known += hisKnown;
        EXPECT_EQ(racer.wait(), 0);
    }
    EXPECT_EQ(added, items);
    EXPECT_EQ(known, 3 * items);
    EXPECT_EQ(countOfItems(), static_cast<std::size_t>(items));
}

} // namespace vorlan::tests
