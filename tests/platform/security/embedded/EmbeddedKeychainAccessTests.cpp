// SPDX-License-Identifier: Apache-2.0

// An embedded store on a disk that is full or that cannot be written, and one that somebody else keeps busy.

#include "tests/platform/security/embedded/EmbeddedKeychain.h"
#include "tests/platform/security/embedded/KeychainProcess.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

using namespace vorlan;
using tests::EmbeddedKeychain;
using tests::KeychainProcess;
using tests::Secret;

namespace fs = std::filesystem;

namespace {

const std::string diskFull = std::to_string(errSecDiskFull);

/// A home whose data folder is a disk of its own, which is there for one host only, and gone with it.
class SmallDisk {
public:
    SmallDisk() { isThere_ = host_.ask("ready") == "ok"; }

    bool isThere() const noexcept { return isThere_; }
    std::string ask(const std::string& command) { return host_.ask(command); }

    /// Leaves no room on it.
    void occupy() { ASSERT_EQ(ask("occupy " + filler_), "ok"); }
    /// Makes room again, and ends the time in which the host's calls are refused.
    void free() {
        ASSERT_EQ(ask("free " + filler_), "ok");
        configure();
    }
    void configure() { ASSERT_EQ(ask("configure"), "ok"); }

private:
    vorlan::testing::TemporaryHome home_;
    std::string folder_ = (home_.path() / ".local" / "share").string();
    std::string filler_ = folder_ + "/filler";
    KeychainProcess host_{"embedded",
                          {"unshare", "--mount", "--map-root-user", "sh", "-c",
                           R"(mount -t tmpfs -o size=1m,mode=700 none "$0" && exec "$@")", folder_}};
    bool isThere_ = false;
};

constexpr auto noDisk = "this machine lets no process mount a disk of its own";

} // namespace

TEST(EmbeddedKeychainAccess, FullDiskIsSaidAndNothingIsLost) {
    SmallDisk disk;
    if (!disk.isThere()) GTEST_SKIP() << noDisk;
    ASSERT_EQ(disk.ask("add before secret"), "0");
    disk.occupy();
    EXPECT_EQ(disk.ask("add-large large 100000"), diskFull);
    disk.configure();
    EXPECT_EQ(disk.ask("get before"), "0 secret");
    EXPECT_EQ(disk.ask("update-large before 100000"), diskFull);
    disk.configure();
    EXPECT_EQ(disk.ask("get before"), "0 secret");
    EXPECT_EQ(disk.ask("get large"), std::to_string(errSecItemNotFound));
    disk.free();
    EXPECT_EQ(disk.ask("add after secret"), "0");
    EXPECT_EQ(disk.ask("update before newer"), "0");
    disk.configure();
    EXPECT_EQ(disk.ask("get before"), "0 newer");
    EXPECT_EQ(disk.ask("get after"), "0 secret");
}

TEST(EmbeddedKeychainAccess, UpdateThatFailsForRoomHoldsOffWhatWouldDelete) {
    SmallDisk disk;
    if (!disk.isThere()) GTEST_SKIP() << noDisk;
    ASSERT_EQ(disk.ask("add before secret"), "0");
    disk.occupy();
    EXPECT_EQ(disk.ask("update-large before 100000"), diskFull);
    EXPECT_EQ(disk.ask("remove before"), diskFull);
    disk.free();
    EXPECT_EQ(disk.ask("get before"), "0 secret");
}

TEST(EmbeddedKeychainAccess, StoreThatCannotBeMadeForRoomIsMadeLater) {
    SmallDisk disk;
    if (!disk.isThere()) GTEST_SKIP() << noDisk;
    disk.occupy();
    EXPECT_EQ(disk.ask("add first secret"), diskFull);
    disk.free();
    EXPECT_EQ(disk.ask("get first"), std::to_string(errSecItemNotFound));
    EXPECT_EQ(disk.ask("add first secret"), "0");
    disk.configure();
    EXPECT_EQ(disk.ask("get first"), "0 secret");
}

TEST(EmbeddedKeychainAccess, DiskThatCannotBeWrittenKeepsItsItems) {
    EmbeddedKeychain keychain;
    ASSERT_EQ(keychain.add("before", "secret"), errSecSuccess);
    keychain.close();
    KeychainProcess host("embedded",
                         {"unshare", "--mount", "--map-root-user", "sh", "-c",
                          R"(mount --bind "$0" "$0" && mount -o remount,bind,ro "$0" && exec "$@")",
                          keychain.folder().parent_path().string()});
    if (host.ask("ready") != "ok") GTEST_SKIP() << noDisk;
    const auto added = std::stoi(host.ask("add after secret"));
    EXPECT_NE(added, errSecSuccess);
    EXPECT_NE(added, errSecItemNotFound);
    ASSERT_EQ(host.ask("configure"), "ok");
    const auto updated = std::stoi(host.ask("update before newer"));
    EXPECT_NE(updated, errSecSuccess);
    EXPECT_NE(updated, errSecItemNotFound);
    ASSERT_EQ(host.ask("configure"), "ok");
    EXPECT_NE(std::stoi(host.ask("get before")), errSecItemNotFound);
    host.kill();
    keychain.reopen();
    EXPECT_EQ(keychain.read("before"), (Secret{errSecSuccess, "secret"}));
    EXPECT_EQ(keychain.read("after").status, errSecItemNotFound);
}

TEST(EmbeddedKeychainAccess, WriterIsToldWhenAnotherKeepsTheStoreBusy) {
    EmbeddedKeychain keychain;
    ASSERT_EQ(keychain.add("before", "secret"), errSecSuccess);
    KeychainProcess host;
    ASSERT_EQ(host.ask("hold " + keychain.database().string()), "ok");
    EXPECT_EQ(keychain.read("before"), (Secret{errSecSuccess, "secret"})) << "reading waits for no writer";
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(keychain.add("after", "secret"), errSecNotAvailable);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
    ASSERT_EQ(host.ask("release"), "ok");
    EXPECT_EQ(keychain.add("after", "secret"), errSecSuccess);
    EXPECT_EQ(keychain.read("after"), (Secret{errSecSuccess, "secret"}));
}

// The one who keeps it busy may be killed, and takes its lock along.
TEST(EmbeddedKeychainAccess, DeadProcessKeepsNothingBusy) {
    EmbeddedKeychain keychain;
    ASSERT_EQ(keychain.add("before", "secret"), errSecSuccess);
    KeychainProcess host;
    ASSERT_EQ(host.ask("hold " + keychain.database().string()), "ok");
    host.kill();
    EXPECT_EQ(keychain.update("before", "newer"), errSecSuccess);
    EXPECT_EQ(keychain.read("before"), (Secret{errSecSuccess, "newer"}));
}

// As where /home is a link to another disk.
TEST(EmbeddedKeychainAccess, FolderMayBeReachedThroughALink) {
    EmbeddedKeychain keychain;
    const auto actual = keychain.home() / "actual";
    const auto link = keychain.home() / "link";
    fs::create_directory(actual);
    fs::create_symlink(actual, link);
    KeychainStore::configure(
        {.store = KeychainOptions::Store::embedded, .folder = link / "deeper" / "keychain"});
    EXPECT_EQ(keychain.add("anna", "secret"), errSecSuccess);
    KeychainStore::configure(
        {.store = KeychainOptions::Store::embedded, .folder = actual / "deeper" / "keychain"});
    EXPECT_EQ(keychain.read("anna"), (Secret{errSecSuccess, "secret"}));
}

// As a process leaves it that was killed while it made the first item's store.
TEST(EmbeddedKeychainAccess, LookingIntoAnEmptyFileMakesNoStoreOfItAndTheFirstItemDoes) {
    EmbeddedKeychain keychain;
    fs::create_directories(keychain.folder());
    fs::permissions(keychain.folder(), fs::perms::owner_all);
    std::ofstream(keychain.database()).close();
    fs::permissions(keychain.database(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(keychain.read("anna").status, errSecItemNotFound);
    EXPECT_EQ(keychain.remove("anna"), errSecItemNotFound);
    EXPECT_EQ(fs::file_size(keychain.database()), 0U);
    EXPECT_FALSE(fs::exists(keychain.key()));
    EXPECT_EQ(keychain.add("anna", "secret"), errSecSuccess);
    EXPECT_EQ(keychain.read("anna"), (Secret{errSecSuccess, "secret"}));
}
