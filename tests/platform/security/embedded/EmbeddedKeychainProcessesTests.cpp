// SPDX-License-Identifier: Apache-2.0

// Several processes with one embedded store.

#include "tests/platform/security/embedded/EmbeddedKeychain.h"
#include "tests/platform/security/embedded/KeychainProcess.h"
#include "tests/platform/security/embedded/RawDatabase.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

using namespace vorlan;
using tests::EmbeddedKeychain;
using tests::KeychainProcess;
using tests::RawDatabase;
using tests::Secret;

namespace fs = std::filesystem;

namespace {

#ifdef VORLAN_SANITIZED
constexpr int races = 5;
#else
constexpr int races = 25;
#endif

std::vector<KeychainProcess> hosts(int count, const char* store = "embedded",
                                   const std::vector<std::string>& wrapper = {}) {
    std::vector<KeychainProcess> started;
    started.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) started.emplace_back(store, wrapper);
    for (auto& host : started) EXPECT_EQ(host.ask("ready"), "ok");
    return started;
}

std::vector<std::string> keys() {
    std::vector<std::string> found;
    EXPECT_EQ(KeychainStore::keys(EmbeddedKeychain::service, found), errSecSuccess);
    return found;
}

} // namespace

TEST(EmbeddedKeychainProcesses, EightWritersLeaveExactlyWhatTheyWrote) {
    EmbeddedKeychain keychain;
    auto writers = hosts(8);
    for (std::size_t i = 0; i < writers.size(); ++i) writers[i].tell("fill w" + std::to_string(i) + "- 100");
    // On a busy machine a writer may not get its turn within the store's limit; it says so, and has not written.
    std::size_t written = 0;
    for (auto& writer : writers) written += std::stoul(writer.answer());
    EXPECT_GE(written, 100U);
    const auto found = keys();
    EXPECT_EQ(found.size(), written);
    EXPECT_EQ(std::set(found.begin(), found.end()).size(), written);
    for (const auto& account : found) ASSERT_EQ(keychain.read(account), (Secret{errSecSuccess, account}));
    EXPECT_EQ(RawDatabase(keychain.database()).text("PRAGMA integrity_check"), "ok");
}

TEST(EmbeddedKeychainProcesses, OneOfThoseWhoAddTheSameItemDoes) {
    EmbeddedKeychain keychain;
    auto writers = hosts(4);
    for (auto& writer : writers) writer.tell("fill same 50");
    int added = 0;
    for (auto& writer : writers) added += std::stoi(writer.answer());
    EXPECT_EQ(added, 50);
    EXPECT_EQ(keys().size(), 50U);
}

TEST(EmbeddedKeychainProcesses, StoreThatSeveralMakeAtOnceIsOne) {
    EmbeddedKeychain keychain;
    for (int race = 0; race < races && !HasFailure(); ++race) {
        SCOPED_TRACE("race " + std::to_string(race));
        keychain.close();
        fs::remove_all(keychain.folder());
        auto writers = hosts(6);
        for (std::size_t i = 0; i < writers.size(); ++i)
            writers[i].tell("add a" + std::to_string(i) + " secret");
        for (auto& writer : writers) EXPECT_EQ(writer.answer(), "0");
        for (auto& writer : writers) EXPECT_EQ(writer.ask("get a5"), "0 secret");
        keychain.reopen();
        EXPECT_EQ(keys().size(), 6U);
        EXPECT_EQ(RawDatabase(keychain.database()).text("PRAGMA journal_mode"), "wal");
    }
}

// Without a keyring on the bus the choice is the embedded store's; whoever records it first does so for all.
TEST(EmbeddedKeychainProcesses, StoreThatSeveralChooseAtOnceIsOne) {
    EmbeddedKeychain keychain;
    for (int race = 0; race < races / 5 && !HasFailure(); ++race) {
        SCOPED_TRACE("race " + std::to_string(race));
        keychain.close();
        fs::remove_all(keychain.folder());
        auto writers = hosts(4, "automatic", {"env", "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent"});
        for (std::size_t i = 0; i < writers.size(); ++i)
            writers[i].tell("add a" + std::to_string(i) + " secret");
        for (auto& writer : writers) EXPECT_EQ(writer.answer(), "0");
        keychain.reopen();
        EXPECT_EQ(keys().size(), 4U);
    }
}

TEST(EmbeddedKeychainProcesses, WhatOneChangesAnotherSees) {
    EmbeddedKeychain keychain;
    KeychainProcess other;
    EXPECT_EQ(other.ask("get anna"), std::to_string(errSecItemNotFound));
    ASSERT_EQ(keychain.add("anna", "secret"), errSecSuccess);
    EXPECT_EQ(other.ask("get anna"), "0 secret");
    ASSERT_EQ(keychain.update("anna", "newer"), errSecSuccess);
    EXPECT_EQ(other.ask("get anna"), "0 newer");
    EXPECT_EQ(other.ask("update anna newest"), "0");
    EXPECT_EQ(keychain.read("anna"), (Secret{errSecSuccess, "newest"}));
    EXPECT_EQ(other.ask("remove anna"), "0");
    EXPECT_EQ(keychain.read("anna"), (Secret{errSecItemNotFound}));
    ASSERT_EQ(keychain.add("anna", "again"), errSecSuccess);
    EXPECT_EQ(other.ask("add anna secret"), std::to_string(errSecDuplicateItem));
}

// As by somebody who brings back a copy: what is written from then on goes into the file that is there.
TEST(EmbeddedKeychainProcesses, DatabaseThatWasReplacedIsOpenedAnew) {
    EmbeddedKeychain keychain;
    ASSERT_EQ(keychain.add("anna", "secret"), errSecSuccess);
    keychain.close();
    const auto copy = keychain.folder() / "copy";
    fs::copy(keychain.database(), copy);
    keychain.reopen();
    ASSERT_EQ(keychain.add("bert", "secret"), errSecSuccess);
    fs::remove(keychain.folder() / "keychain.db-wal");
    fs::remove(keychain.folder() / "keychain.db-shm");
    fs::rename(copy, keychain.database());
    EXPECT_EQ(keychain.add("carla", "secret"), errSecSuccess);
    KeychainProcess other;
    EXPECT_EQ(other.ask("get carla"), "0 secret");
    EXPECT_EQ(other.ask("get anna"), "0 secret");
    EXPECT_EQ(keychain.read("bert"), (Secret{errSecItemNotFound})) << "it is not in the copy";
}

TEST(EmbeddedKeychainProcesses, DatabaseThatWasDeletedIsNotWrittenToAnyMore) {
    EmbeddedKeychain keychain;
    ASSERT_EQ(keychain.add("anna", "secret"), errSecSuccess);
    fs::remove(keychain.database());
    EXPECT_EQ(keychain.add("bert", "secret"), errSecInvalidKeychain);
    EXPECT_EQ(keychain.read("anna"), (Secret{errSecInvalidKeychain}));
}

// A store that is deleted and made anew is another one, also for those who had it open.
TEST(EmbeddedKeychainProcesses, StoreThatWasTakenAwayIsNotWrittenToAnyMore) {
    EmbeddedKeychain keychain;
    KeychainProcess other;
    ASSERT_EQ(keychain.add("anna", "secret"), errSecSuccess);
    ASSERT_EQ(other.ask("get anna"), "0 secret");
    keychain.close();
    fs::rename(keychain.folder(), keychain.home() / "aside");
    keychain.reopen();
    ASSERT_EQ(keychain.add("bert", "secret"), errSecSuccess);
    EXPECT_EQ(other.ask("get bert"), "0 secret");
    EXPECT_EQ(other.ask("add carla secret"), "0");
    EXPECT_EQ(keychain.read("carla"), (Secret{errSecSuccess, "secret"}));
}
