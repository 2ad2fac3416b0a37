// SPDX-License-Identifier: Apache-2.0

// Processes that are killed while they write to the embedded store, and what they leave behind.

#include "tests/platform/security/embedded/EmbeddedKeychain.h"
#include "tests/platform/security/embedded/KeychainProcess.h"
#include "tests/platform/security/embedded/RawDatabase.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <map>
#include <random>
#include <string>

using namespace vorlan;
using tests::EmbeddedKeychain;
using tests::KeychainProcess;
using tests::RawDatabase;

namespace {

#ifdef VORLAN_SANITIZED
constexpr int rounds = 30;
#else
constexpr int rounds = 200;
#endif

using Items = std::map<std::string, std::string>;

std::string accountOf(std::size_t number) {
    return "k" + std::to_string(number % 20);
}

// What a flooding host does with its n-th operation.
void applyOperation(Items& items, int base, std::size_t n) {
    if (n % 7 == 0) {
        items.erase(accountOf(n));
    } else {
        items[accountOf(n)] = std::to_string(base + static_cast<int>(n));
    }
}

Items itemsOf(EmbeddedKeychain& keychain) {
    Items items;
    for (std::size_t i = 0; i < 20; ++i) {
        const auto found = keychain.read(accountOf(i));
        if (found.status == errSecSuccess) {
            items[accountOf(i)] = found.text.value_or("none");
        } else {
            EXPECT_EQ(found.status, errSecItemNotFound);
        }
    }
    return items;
}

// Nothing that was acknowledged is missing; the one operation that was under way may have been done or not.
void expectAcknowledged(EmbeddedKeychain& keychain, Items& expected, int base, std::size_t count) {
    keychain.reopen();
    const auto found = itemsOf(keychain);
    for (std::size_t n = 1; n <= count; ++n) applyOperation(expected, base, n);
    auto withTheNext = expected;
    applyOperation(withTheNext, base, count + 1);
    if (found == withTheNext) expected = withTheNext;
    EXPECT_EQ(found, expected) << count << " were acknowledged";
}

} // namespace

TEST(EmbeddedKeychainKill, EveryAcknowledgedOperationSurvivesAKillAtAnyInstant) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::size_t> lengths(0, 60);
    EmbeddedKeychain keychain;
    Items expected;
    std::size_t total = 0;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        // In every second round this process has the store open as well.
        if (round % 2 == 0) keychain.close();
        const int base = round * 1'000'000;
        KeychainProcess host;
        host.tell("flood " + std::to_string(base));
        const auto wanted = lengths(random);
        const auto read = host.readAcknowledgements(wanted);
        EXPECT_GE(read, wanted) << "the host ended by itself";
        const auto count = read + host.kill();
        expectAcknowledged(keychain, expected, base, count);
        EXPECT_EQ(RawDatabase(keychain.database()).text("PRAGMA integrity_check"), "ok");
        total += count;
    }
    EXPECT_GT(total, static_cast<std::size_t>(rounds));
}

TEST(EmbeddedKeychainKill, StoreThatIsBeingMadeSurvivesAKillAtAnyInstant) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> milliseconds(0, 12);
    EmbeddedKeychain keychain;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        keychain.close();
        std::filesystem::remove_all(keychain.folder());
        KeychainProcess host;
        if (round % 2 == 0) {
            EXPECT_EQ(host.ask("ready"), "ok");
        }
        host.tell("flood 0");
        host.awaitAcknowledgement(milliseconds(random));
        Items expected;
        const auto count = host.kill();
        expectAcknowledged(keychain, expected, 0, count);
        EXPECT_EQ(keychain.add("afterwards", "secret"), errSecSuccess);
        EXPECT_EQ(keychain.read("afterwards").text, "secret");
        EXPECT_EQ(RawDatabase(keychain.database()).text("PRAGMA integrity_check"), "ok");
    }
}
