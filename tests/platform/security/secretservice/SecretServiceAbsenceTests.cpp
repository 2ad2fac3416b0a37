// SPDX-License-Identifier: Apache-2.0
// A keyring that is not there, not yet, or not any more.
#include "tests/platform/security/secretservice/KeyringItems.h"

#include <VorlanFoundation/Platform/Queue.h>

#include <glib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <latch>
#include <thread>

namespace vorlan::tests {

namespace {

using namespace std::chrono_literals;

constexpr char addressVariable[] = "DBUS_SESSION_BUS_ADDRESS";

/// The four functions fail alike, soon, and none says that the item is not there.
void expectAllToBe(OSStatus status) {
    const auto duration = durationOf([&] {
        EXPECT_EQ(read("anna"), status);
        EXPECT_EQ(update("anna", "new"), status);
        EXPECT_EQ(remove("anna"), status);
        EXPECT_EQ(add("anna", "new"), status);
        EXPECT_EQ(add("bert", "new"), status);
        EXPECT_EQ(read("carl"), status);
    });
    EXPECT_LT(duration, 8s);
}

class SecretServiceAbsenceTest : public FakeKeyringTest {
protected:
    SecretServiceAbsenceTest() { EXPECT_EQ(add("anna", "secret"), errSecSuccess); }

    /// The item is there once the keyring is.
    void expectAllAfterReconnection() {
        use({});
        EXPECT_EQ(secretOf("anna"), "secret");
        EXPECT_EQ(fake_.itemCount(), 1U);
    }
};

/// A process that has not been on any bus yet: a connection outlives those who use it by a moment, and would be found.
class UnreachableBusTest : public KeyringTest {
protected:
    void expectAllToWorkOnTheRightBus() {
        setenv(addressVariable, bus_.address().c_str(), 1); // NOLINT(concurrency-mt-unsafe)
        const FakeSecretService fake(bus_);
        EXPECT_EQ(add("anna", "secret"), errSecSuccess);
        EXPECT_EQ(secretOf("anna"), "secret");
        KeychainStore::configure({.store = KeychainOptions::Store::memory});
    }
};

} // namespace

TEST_F(UnreachableBusTest, WithoutABusNothingIsAvailable) {
    unsetenv(addressVariable); // NOLINT(concurrency-mt-unsafe)
    unsetenv("DISPLAY");       // NOLINT(concurrency-mt-unsafe)
    expectAllToBe(errSecNotAvailable);
    expectAllToWorkOnTheRightBus();
}

TEST_F(UnreachableBusTest, WithTheAddressOfAFormerBusNothingIsAvailable) {
    const auto stale = "unix:path=" + (home_.path() / "no-such-socket").string();
    setenv(addressVariable, stale.c_str(), 1); // NOLINT(concurrency-mt-unsafe)
    expectAllToBe(errSecNotAvailable);
    expectAllToWorkOnTheRightBus();
}

TEST_F(SecretServiceAbsenceTest, WithoutAServiceNothingIsAvailable) {
    use({});
    fake_.disconnect();
    expectAllToBe(errSecNotAvailable);
    fake_.connect();
    expectAllAfterReconnection();
}

TEST_F(SecretServiceAbsenceTest, ServiceThatLeftBetweenCallsIsNotAvailable) {
    fake_.disconnect();
    expectAllToBe(errSecNotAvailable);
    fake_.connect();
    EXPECT_EQ(secretOf("anna"), "secret");
}

TEST_F(SecretServiceAbsenceTest, ServiceThatWasStartedAgainIsFoundByEveryFunction) {
    const auto restart = [&] {
        fake_.disconnect();
        fake_.connect();
    };
    restart();
    EXPECT_EQ(secretOf("anna"), "secret");
    restart();
    EXPECT_EQ(update("anna", "new"), errSecSuccess);
    restart();
    EXPECT_EQ(add("bert", "other"), errSecSuccess);
    restart();
    EXPECT_EQ(remove("anna"), errSecSuccess);
    EXPECT_EQ(fake_.itemCount(), 1U);
    EXPECT_EQ(secretOf("bert"), "other");
}

TEST_F(SecretServiceAbsenceTest, BusThatIsGoneEndsNeitherTheProcessNorInNotFound) {
    bus_.kill();
    expectAllToBe(errSecNotAvailable);
    // Where a connection that was shared with others would raise a signal.
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {}
    EXPECT_EQ(read("anna"), errSecNotAvailable);
}

TEST_F(SecretServiceAbsenceTest, KeyringThatComesLateIsWaitedFor) {
    fake_.disconnect();
    use({.waitForKeyring = 60s});
    std::latch begun(1);
    std::string secret;
    std::thread reader([&] {
        begun.count_down();
        secret = secretOf("anna");
    });
    begun.wait();
    std::latch connected(1);
    Queue::global().asyncAfter(3s, [&] {
        fake_.connect();
        connected.count_down();
    });
    reader.join();
    connected.wait();
    EXPECT_EQ(secret, "secret");
}

TEST_F(SecretServiceAbsenceTest, KeyringThatNeverComesIsWaitedForAsLongAsConfigured) {
    fake_.disconnect();
    use({.waitForKeyring = 300ms});
    OSStatus status = errSecSuccess;
    const auto duration = durationOf([&] { status = read("anna"); });
    EXPECT_EQ(status, errSecNotAvailable);
    EXPECT_GE(duration, 300ms);
    EXPECT_LT(duration, 8s);
}

TEST_F(SecretServiceAbsenceTest, WithoutADefaultKeyringNothingIsAddedAndNothingCountsAsMissing) {
    fake_.setHasDefault(false);
    EXPECT_EQ(add("bert", "other"), errSecInteractionNotAllowed);
    EXPECT_EQ(read("bert"), errSecInteractionNotAllowed);
    EXPECT_EQ(update("bert", "new"), errSecInteractionNotAllowed);
    EXPECT_EQ(remove("bert"), errSecInteractionNotAllowed);
    EXPECT_EQ(secretOf("anna"), "secret");
    EXPECT_EQ(fake_.itemCount(), 1U);
}

TEST_F(SecretServiceAbsenceTest, ForkedChildIsRefusedAtOnce) {
    const auto query = itemOf("anna");
    const auto child = fork();
    if (child == 0) {
        alarm(10); // one that waits for an answer would wait for ever
        _exit(SecItemCopyMatching(query) == errSecNotAvailable ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(secretOf("anna"), "secret");
}

} // namespace vorlan::tests
