// SPDX-License-Identifier: Apache-2.0

// Folders and disks that do not let a store be read or saved. Permissions do not bind root, so another process does
// it as nobody.

#include <VorlanFoundation/Platform/UserDefaults.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/platform/defaults/ForeignPropertyList.h"
#include "tests/platform/defaults/HostProcess.h"
#include "tests/platform/defaults/ReportedProblems.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

using namespace vorlan;
using std::filesystem::perms;
using tests::contentOf;
using tests::forgetEverything;
using tests::HostProcess;

namespace {

constexpr auto name = "com.example.editor";
constexpr unsigned nobody = 65534;

// A store with one entry, and a process of a user whom permissions bind.
class Restricted {
public:
    Restricted() : host(name) {
        UserDefaults store(name);
        store.setObject(1, "before");
        EXPECT_TRUE(store.synchronize());
        file = store.fileURL().path();
        folder = file.parent_path();
        forgetEverything();
        content = contentOf(file);
        if (geteuid() != 0) return;
        giveAway(home.path());
        EXPECT_EQ(host.ask("become " + std::to_string(nobody)), "true");
    }

    // The temporary home has to be removable, whatever a case did to it.
    ~Restricted() {
        std::error_code ignored;
        std::filesystem::permissions(folder, perms::owner_all, ignored);
    }

    bool hasProblems() { return !host.ask("problems").starts_with("0 "); }

    vorlan::testing::TemporaryHome home; // NOLINT(*-non-private-*): made before all else
    HostProcess host;                    // NOLINT(*-non-private-*)
    std::filesystem::path file;          // NOLINT(*-non-private-*)
    std::filesystem::path folder;        // NOLINT(*-non-private-*)
    std::string content;                 // NOLINT(*-non-private-*)

private:
    static void giveAway(const std::filesystem::path& root) {
        EXPECT_EQ(lchown(root.c_str(), nobody, nobody), 0);
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
            EXPECT_EQ(lchown(entry.path().c_str(), nobody, nobody), 0);
    }
};

} // namespace

TEST(UserDefaultsAccess, FileThatMayNotBeReadIsReportedAndNotOverwritten) {
    Restricted restricted;
    auto& host = restricted.host;
    std::filesystem::permissions(restricted.file, perms::none);
    host.ask("register before nothing");
    EXPECT_EQ(host.ask("get before"), "nothing");
    EXPECT_EQ(host.ask("set new 2"), "ok");
    EXPECT_EQ(host.ask("get new"), "2");
    EXPECT_EQ(host.ask("synchronize"), "false");
    EXPECT_TRUE(restricted.hasProblems());

    std::filesystem::permissions(restricted.file, perms::owner_all);
    EXPECT_EQ(contentOf(restricted.file), restricted.content);
    EXPECT_EQ(host.ask("set newer 3"), "ok");
    EXPECT_EQ(host.ask("synchronize"), "true");
    EXPECT_EQ(host.ask("get before"), "1");
    EXPECT_EQ(host.finish(), 0);
    EXPECT_EQ(UserDefaults(name).storedEntries(),
              (Value::Dictionary{{"before", 1}, {"new", 2}, {"newer", 3}}));
}

TEST(UserDefaultsAccess, FolderThatMayNotBeWrittenIsReadWithoutAProblem) {
    Restricted restricted;
    std::filesystem::permissions(restricted.folder, perms::owner_read | perms::owner_exec);
    EXPECT_EQ(restricted.host.ask("get before"), "1");
    EXPECT_EQ(restricted.host.ask("get missing"), "absent");
    EXPECT_EQ(restricted.host.ask("problems"), "0 ");
    EXPECT_EQ(restricted.host.finish(), 0);
}

TEST(UserDefaultsAccess, FolderThatMayNotBeWrittenKeepsChangesInMemoryUntilItMay) {
    Restricted restricted;
    auto& host = restricted.host;
    std::filesystem::permissions(restricted.folder, perms::owner_read | perms::owner_exec);
    EXPECT_EQ(host.ask("set new 2"), "ok");
    EXPECT_EQ(host.ask("remove before"), "ok");
    EXPECT_EQ(host.ask("synchronize"), "false");
    EXPECT_TRUE(restricted.hasProblems());
    EXPECT_EQ(host.ask("get new"), "2");
    EXPECT_EQ(host.ask("get before"), "absent");
    EXPECT_EQ(contentOf(restricted.file), restricted.content);

    std::filesystem::permissions(restricted.folder, perms::owner_all);
    EXPECT_EQ(host.ask("set newer 3"), "ok");
    EXPECT_EQ(host.ask("synchronize"), "true");
    EXPECT_EQ(host.finish(), 0);
    EXPECT_EQ(UserDefaults(name).storedEntries(), (Value::Dictionary{{"new", 2}, {"newer", 3}}));
}

TEST(UserDefaultsAccess, FolderThatMayNotEvenBeListedIsReportedAndKeptInMemory) {
    Restricted restricted;
    auto& host = restricted.host;
    std::filesystem::permissions(restricted.folder, perms::none);
    EXPECT_EQ(host.ask("get before"), "absent");
    EXPECT_EQ(host.ask("set new 2"), "ok");
    EXPECT_EQ(host.ask("get new"), "2");
    EXPECT_EQ(host.ask("synchronize"), "false");
    EXPECT_TRUE(restricted.hasProblems());

    std::filesystem::permissions(restricted.folder, perms::owner_all);
    EXPECT_EQ(host.ask("synchronize"), "true");
    EXPECT_EQ(host.finish(), 0);
    EXPECT_EQ(UserDefaults(name).storedEntries(), (Value::Dictionary{{"before", 1}, {"new", 2}}));
}

#ifndef VORLAN_SANITIZED // a sanitizer opens pipes of its own, and reports memory that it then cannot look at
TEST(UserDefaultsAccess, FileThatCannotBeOpenedForAMomentLosesNothing) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    store.setObject(1, "before");
    EXPECT_TRUE(store.synchronize());
    HostProcess host(name);
    EXPECT_EQ(host.ask("get before"), "1");
    EXPECT_EQ(host.ask("set own 2"), "ok");
    EXPECT_EQ(host.ask("synchronize"), "true");
    ASSERT_EQ(host.ask("files off"), "true");
    store.setObject(3, "theirs");
    EXPECT_TRUE(store.synchronize());
    host.ask("synchronize");
    EXPECT_EQ(host.ask("get before"), "1");
    ASSERT_EQ(host.ask("files on"), "true");
    EXPECT_EQ(host.ask("set after 4"), "ok");
    EXPECT_EQ(host.ask("synchronize"), "true");
    EXPECT_EQ(host.ask("all"), R"({"after": 4, "before": 1, "own": 2, "theirs": 3})");
    EXPECT_EQ(host.finish(), 0);
}
#endif

TEST(UserDefaultsAccess, MissingConfigurationFolderIsMade) {
    const vorlan::testing::TemporaryHome home;
    const tests::ReportedProblems problems;
    std::filesystem::remove_all(home.path() / ".config");
    UserDefaults store(name);
    EXPECT_EQ(store.objectForKey("key"), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(home.path() / ".config")); // reading makes nothing
    store.setObject(1, "key");
    EXPECT_TRUE(store.synchronize());
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).integerForKey("key"), 1);
    EXPECT_EQ(problems.count(), 0U);
}

TEST(UserDefaultsAccess, FolderThatIsDeletedMeanwhileIsMadeAnew) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    store.setObject(1, "before");
    EXPECT_TRUE(store.synchronize());
    std::filesystem::remove_all(home.path() / ".config");
    store.setObject(2, "after");
    EXPECT_TRUE(store.synchronize());
    forgetEverything();
    EXPECT_EQ(UserDefaults(name).integerForKey("after"), 2);
}

TEST(UserDefaultsAccess, FullDiskIsReportedAndKeepsChangesInMemoryUntilThereIsRoom) {
    const vorlan::testing::TemporaryHome home;
    const auto configuration = (home.path() / ".config").string();
    // The disk is there for the host only, and gone with it.
    HostProcess host(name, {"unshare", "--mount", "--map-root-user", "sh", "-c",
                            R"(mount -t tmpfs -o size=256k none "$0" && exec "$@")", configuration});
    if (host.ask("set before 1") == "gone")
        GTEST_SKIP() << "this machine lets no process mount a disk of its own";
    ASSERT_EQ(host.ask("synchronize"), "true");
    const auto filler = configuration + "/filler";
    ASSERT_EQ(host.ask("occupy " + filler), "ok");

    EXPECT_EQ(host.ask("blob large 65536"), "ok");
    EXPECT_EQ(host.ask("set small 2"), "ok");
    EXPECT_EQ(host.ask("synchronize"), "false");
    EXPECT_NE(host.ask("problems"), "0 ");
    EXPECT_EQ(host.ask("get small"), "2");
    EXPECT_EQ(host.ask("get before"), "1");
    EXPECT_NE(host.ask("get large"), "absent");

    ASSERT_EQ(host.ask("free " + filler), "true");
    EXPECT_EQ(host.ask("set after 3"), "ok");
    EXPECT_EQ(host.ask("remove large"), "ok");
    EXPECT_EQ(host.ask("synchronize"), "true");
    EXPECT_EQ(host.ask("restart"), "ok");
    EXPECT_EQ(host.ask("all"), R"({"after": 3, "before": 1, "small": 2})");
    EXPECT_EQ(host.ask("problems"), "0 ");
    EXPECT_EQ(host.finish(), 0);
}

TEST(UserDefaultsAccess, FullDiskLeavesTheFileThatWasThere) {
    const vorlan::testing::TemporaryHome home;
    const auto configuration = (home.path() / ".config").string();
    HostProcess host(name, {"unshare", "--mount", "--map-root-user", "sh", "-c",
                            R"(mount -t tmpfs -o size=256k none "$0" && exec "$@")", configuration});
    if (host.ask("set before 1") == "gone")
        GTEST_SKIP() << "this machine lets no process mount a disk of its own";
    ASSERT_EQ(host.ask("synchronize"), "true");
    ASSERT_EQ(host.ask("occupy " + configuration + "/filler"), "ok");
    EXPECT_EQ(host.ask("blob large 65536"), "ok");
    EXPECT_EQ(host.ask("synchronize"), "false");
    EXPECT_EQ(host.ask("restart"), "ok");
    EXPECT_EQ(host.ask("get before"), "1");
    EXPECT_EQ(host.finish(), 0);
}
