// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/FileManager.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/logging/LogCase.h"
#include "tests/platform/files/Environment.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <latch>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

using namespace vorlan;
using namespace std::string_literals;
using tests::Environment;
using tests::writeText;
using enum SearchPathDirectory;
namespace fs = std::filesystem;

namespace {

class FileManagerTest : public ::testing::Test {
protected:
    const fs::path& home() const { return home_.path(); }
    static const FileManager& manager() { return FileManager::defaultManager(); }

    // The user's only folder of a kind.
    static fs::path folderFor(SearchPathDirectory directory) {
        const auto urls = manager().URLsForDirectory(directory);
        EXPECT_EQ(urls.size(), 1U);
        EXPECT_EQ(manager().URLForDirectory(directory), urls.at(0));
        return urls.at(0).path();
    }

    void writeUserDirs(const std::string& text) const { writeText(home() / ".config/user-dirs.dirs", text); }

    // What the system says when an operation fails.
    template <class Operation>
    static std::error_code failure(const fs::path& path, Operation operation) {
        try {
            operation();
        } catch (const fs::filesystem_error& error) {
            EXPECT_EQ(error.path1(), path);
            return error.code();
        }
        return {};
    }

    static std::error_code failureToCreate(const fs::path& path, FileManager::Creation creation = {}) {
        return failure(path, [&] { manager().createDirectoryAtURL(FileURL(path), creation); });
    }

private:
    vorlan::testing::TemporaryHome home_;
};

} // namespace

TEST_F(FileManagerTest, KindsHaveTheNumbersOfThePlatform) {
    EXPECT_EQ(static_cast<int>(documents), 9);
    EXPECT_EQ(static_cast<int>(applicationSupport), 14);
    EXPECT_EQ(static_cast<int>(SearchPathDomainMask::user), 1);
}

TEST_F(FileManagerTest, ThereIsOneManager) {
    EXPECT_EQ(&FileManager::defaultManager(), &FileManager::defaultManager());
}

TEST_F(FileManagerTest, ApplicationSupportIsTheFolderForData) {
    EXPECT_EQ(folderFor(applicationSupport), home() / ".local/share");
    const Environment elsewhere("XDG_DATA_HOME", home() / "data");
    EXPECT_EQ(folderFor(applicationSupport), home() / "data");
    EXPECT_FALSE(fs::exists(home() / "data"));
}

TEST_F(FileManagerTest, FolderForDataIsInTheHomeByDefault) {
    for (const auto& value : {std::optional<std::string>(), std::optional(""s),
                              std::optional("relative/data"s), std::optional("~/data"s)}) {
        const Environment variables({{"XDG_DATA_HOME", value}, {"HOME", home() / "other"}});
        EXPECT_EQ(folderFor(applicationSupport), home() / "other/.local/share") << value.value_or("unset");
    }
}

TEST_F(FileManagerTest, DocumentsAreInTheHomeByDefault) {
    EXPECT_EQ(folderFor(documents), home() / "Documents");
    const Environment elsewhere("HOME", home() / "other");
    EXPECT_EQ(folderFor(documents), home() / "other/Documents");
}

TEST_F(FileManagerTest, UserMayHaveTheDocumentsElsewhere) {
    writeUserDirs("# a comment\nXDG_DESKTOP_DIR=\"$HOME/Desk\"\nXDG_DOCUMENTS_DIR=\"$HOME/My papers\"\n");
    EXPECT_EQ(folderFor(documents), home() / "My papers");
    writeUserDirs("XDG_DOCUMENTS_DIR=\"" + home().native() + "-papers\"\n");
    EXPECT_EQ(folderFor(documents), home().native() + "-papers") << "looked up afresh each time";
    fs::remove(home() / ".config/user-dirs.dirs");
    EXPECT_EQ(folderFor(documents), home() / "Documents");
}

TEST_F(FileManagerTest, UserDirsThatSayNothingUsefulDoNotCount) {
    for (const auto* text : {"", "XDG_DOCUMENTS_DIR=relative\n", "XDG_DOCUMENTS_DIR=\"relative\"\n",
                             "XDG_MUSIC_DIR=\"$HOME/Music\"\n", "\x01\x02\xFF\n"}) {
        writeUserDirs(text);
        EXPECT_EQ(folderFor(documents), home() / "Documents") << text;
    }
}

TEST_F(FileManagerTest, UserDirsAreInTheConfigurationFolder) {
    fs::create_directory(home() / "settings");
    writeText(home() / "settings/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/Papers\"\n");
    EXPECT_EQ(folderFor(documents), home() / "Documents");
    const Environment elsewhere("XDG_CONFIG_HOME", home() / "settings");
    EXPECT_EQ(folderFor(documents), home() / "Papers");
}

// The base directory standard has paths that are not absolute ignored.
TEST_F(FileManagerTest, RelativeConfigurationFolderIsIgnored) {
    fs::create_directory(home() / "settings");
    writeText(home() / "settings/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/Wrong\"\n");
    writeUserDirs("XDG_DOCUMENTS_DIR=\"$HOME/Papers\"\n");
    const tests::WorkingDirectory inHome(home());
    const Environment variables("XDG_CONFIG_HOME", "settings");
    EXPECT_EQ(folderFor(documents), home() / "Papers");
}

TEST_F(FileManagerTest, HomeIsThatOfTheUserDatabaseWhereTheEnvironmentHasNone) {
    const passwd* user =
        getpwuid(getuid()); // NOLINT(concurrency-mt-unsafe): this is the only thread that asks
    ASSERT_NE(user, nullptr) << "the user that runs the tests is unknown to the system";
    const fs::path known = user->pw_dir;
    for (const auto& value : {std::optional<std::string>(), std::optional(""s), std::optional("relative"s)}) {
        const Environment variables({{"HOME", value}, {"XDG_DATA_HOME", std::nullopt}});
        EXPECT_EQ(folderFor(applicationSupport), known / ".local/share") << value.value_or("unset");
    }
}

TEST_F(FileManagerTest, LookingMakesNothing) {
    fs::remove_all(home() / ".local");
    EXPECT_EQ(manager().URLForDirectory(documents), FileURL(home() / "Documents"));
    EXPECT_EQ(manager().URLForDirectory(applicationSupport), FileURL(home() / ".local/share"));
    EXPECT_FALSE(fs::exists(home() / "Documents"));
    EXPECT_FALSE(fs::exists(home() / ".local"));
}

TEST_F(FileManagerTest, FolderIsMadeOnRequest) {
    fs::remove_all(home() / ".local");
    for (const auto kind : {documents, applicationSupport})
        for (int i = 0; i < 2; ++i) {
            const auto url = manager().URLForDirectory(kind, {.create = true});
            EXPECT_TRUE(fs::is_directory(url));
        }
    EXPECT_TRUE(fs::is_directory(home() / ".local/share"));
    EXPECT_TRUE(fs::is_directory(home() / "Documents"));
}

TEST_F(FileManagerTest, FolderThatCannotBeMadeIsAnError) {
    writeText(home() / "Documents", "a file");
    const auto code =
        failure(home() / "Documents", [&] { manager().URLForDirectory(documents, {.create = true}); });
    EXPECT_EQ(code, std::errc::file_exists);
    EXPECT_EQ(manager().URLForDirectory(documents), FileURL(home() / "Documents"));
}

TEST_F(FileManagerTest, NewFolderIsForTheUserAlone) {
    const auto former = umask(0);
    manager().createDirectoryAtURL(FileURL(home() / "one"));
    manager().createDirectoryAtURL(FileURL(home() / "a/b"), {.withIntermediateDirectories = true});
    umask(former);
    for (const auto* name : {"one", "a", "a/b"})
        EXPECT_EQ(fs::status(home() / name).permissions(), fs::perms::owner_all) << name;
}

TEST_F(FileManagerTest, FoldersAboveAreMadeOnRequestOnly) {
    EXPECT_EQ(failureToCreate(home() / "a/b"), std::errc::no_such_file_or_directory);
    EXPECT_FALSE(fs::exists(home() / "a"));
    EXPECT_FALSE(failureToCreate(home() / "a/b/c/d", {.withIntermediateDirectories = true}));
    EXPECT_TRUE(fs::is_directory(home() / "a/b/c/d"));
}

TEST_F(FileManagerTest, FolderThatIsThereIsASuccessOnlyWithThoseAbove) {
    fs::create_directory(home() / "a");
    EXPECT_EQ(failureToCreate(home() / "a"), std::errc::file_exists);
    EXPECT_FALSE(failureToCreate(home() / "a", {.withIntermediateDirectories = true}));
    fs::create_directory_symlink(home() / "a", home() / "link");
    EXPECT_FALSE(failureToCreate(home() / "link", {.withIntermediateDirectories = true}));
    EXPECT_FALSE(failureToCreate(home() / "link/b", {.withIntermediateDirectories = true}));
    EXPECT_TRUE(fs::is_directory(home() / "a/b"));
    EXPECT_FALSE(failureToCreate("/", {.withIntermediateDirectories = true}));
}

TEST_F(FileManagerTest, WhatIsInPlaceOfTheFolderIsAnError) {
    writeText(home() / "file", "text");
    fs::create_symlink(home() / "missing", home() / "link");
    for (const bool above : {false, true}) {
        const FileManager::Creation creation{.withIntermediateDirectories = above};
        EXPECT_EQ(failureToCreate(home() / "file", creation), std::errc::file_exists);
        EXPECT_EQ(failureToCreate(home() / "link", creation), std::errc::file_exists);
    }
    EXPECT_EQ(failureToCreate(home() / "file/a"), std::errc::not_a_directory);
    EXPECT_EQ(tests::textOf(home() / "file"), "text");
}

TEST_F(FileManagerTest, FileAmongTheFoldersAboveIsAnError) {
    writeText(home() / "file", "text");
    EXPECT_THROW(
        manager().createDirectoryAtURL(FileURL(home() / "file/a/b"), {.withIntermediateDirectories = true}),
        fs::filesystem_error);
}

TEST_F(FileManagerTest, NameThatIsTooLongIsAnError) {
    EXPECT_EQ(failureToCreate(home() / std::string(300, 'x')), std::errc::filename_too_long);
}

TEST_F(FileManagerTest, PathWithANulIsAnError) {
    const auto path = home().native() + "/a\0b"s;
    EXPECT_EQ(failureToCreate(path), std::errc::invalid_argument);
    EXPECT_FALSE(fs::exists(home() / "a"));
    EXPECT_EQ(failure(path, [&] { manager().attributesOfItemAtPath(path); }), std::errc::invalid_argument);
}

TEST_F(FileManagerTest, FolderMayBeMadeByManyAtOnce) {
    constexpr int count = 8;
    for (int round = 0; round < 20; ++round) {
        const FileURL url(home() / std::to_string(round) / "b/c/d");
        std::latch start(count);
        std::atomic<int> failures = 0;
        std::vector<std::jthread> threads;
        for (int i = 0; i < count; ++i)
            threads.emplace_back([&] {
                start.arrive_and_wait();
                failures += failureToCreate(url, {.withIntermediateDirectories = true}) ? 1 : 0;
            });
        threads.clear();
        EXPECT_EQ(failures, 0);
        EXPECT_TRUE(fs::is_directory(url));
    }
}

TEST_F(FileManagerTest, AttributesTellTypeAndSize) {
    writeText(home() / "file", "12345");
    fs::create_symlink(home() / "file", home() / "link");
    ASSERT_EQ(mkfifo((home() / "pipe").c_str(), 0600), 0);
    const auto typeOf = [&](const char* name) {
        return manager().attributesOfItemAtPath(home() / name).type;
    };
    const auto sizeOf = [&](const char* name) {
        return manager().attributesOfItemAtPath(home() / name).size;
    };
    EXPECT_EQ(typeOf("file"), fs::file_type::regular);
    EXPECT_EQ(sizeOf("file"), 5U);
    EXPECT_EQ(typeOf("link"), fs::file_type::symlink) << "the link itself";
    EXPECT_EQ(sizeOf("link"), std::nullopt);
    EXPECT_EQ(typeOf("pipe"), fs::file_type::fifo);
    EXPECT_EQ(sizeOf("pipe"), std::nullopt);
    EXPECT_EQ(typeOf("."), fs::file_type::directory);
    EXPECT_EQ(sizeOf("."), std::nullopt);
    EXPECT_EQ(manager().attributesOfItemAtPath("/dev/null").type, fs::file_type::character);
}

TEST_F(FileManagerTest, SizeMayBeBeyond32Bits) {
    writeText(home() / "file", "");
    fs::resize_file(home() / "file", 5'000'000'000);
    EXPECT_EQ(manager().attributesOfItemAtPath(home() / "file").size, 5'000'000'000U);
}

TEST_F(FileManagerTest, AttributesOfAMissingFileAreAnError) {
    const auto look = [&] { manager().attributesOfItemAtPath(home() / "missing"); };
    EXPECT_EQ(failure(home() / "missing", look), std::errc::no_such_file_or_directory);
}
