// SPDX-License-Identifier: Apache-2.0

// What may be in the place of the log file and its folder.

#include <VorlanFoundation/Logging/Logger.h>
#include <VorlanFoundation/Platform/HomeChange.h>

#include "tests/logging/LogCase.h"
#include "tests/support/DescriptorCount.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <string>

using namespace vorlan;
using namespace std::string_literals;
using tests::linesOf;
using tests::textOf;
using tests::writeText;
namespace fs = std::filesystem;

namespace {

class LoggerFileTest : public tests::LogCase {
protected:
    LoggerFileTest() { Logger::makeLogging(true); }
    std::size_t lines() const { return linesOf(text()).size(); }
};

} // namespace

TEST_F(LoggerFileTest, OnlyTheUserMayReadTheFile) {
    const auto former = umask(0);
    Logger::log("text");
    umask(former);
    EXPECT_EQ(fs::status(file()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(LoggerFileTest, OnlyTheUserMayReadTheFileThatCleanMakes) {
    const auto former = umask(0);
    Logger::clean();
    umask(former);
    EXPECT_EQ(fs::status(file()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(LoggerFileTest, FileMayBeDeletedMeanwhile) {
    Logger::log("first");
    fs::remove(file());
    Logger::log("second");
    EXPECT_EQ(lines(), 1U);
    EXPECT_TRUE(text().ends_with("second\n"));
}

TEST_F(LoggerFileTest, FileMayBeMovedMeanwhile) {
    Logger::log("first");
    fs::rename(file(), folder() / "moved.log");
    Logger::log("second");
    EXPECT_TRUE(text().ends_with("second\n"));
    EXPECT_EQ(lines(), 1U);
    EXPECT_TRUE(textOf(folder() / "moved.log").ends_with("first\n"));
}

TEST_F(LoggerFileTest, FileMayBeChangedMeanwhile) {
    Logger::log("first");
    writeText(file(), "by hand\n");
    Logger::log("second");
    EXPECT_EQ(lines(), 2U);
    EXPECT_TRUE(text().starts_with("by hand\n["));
}

TEST_F(LoggerFileTest, NoDescriptorIsKept) {
    Logger::log("first");
    EXPECT_EQ(support::openCount(file()), 0U);
}

TEST_F(LoggerFileTest, SymbolicLinkIsNotFollowed) {
    const auto target = home() / "precious";
    writeText(target, "mine");
    fs::create_symlink(target, file());
    Logger::log("text");
    Logger::changeFileSizeLimit(-1);
    Logger::log("text");
    Logger::clean();
    EXPECT_EQ(textOf(target), "mine");
    EXPECT_TRUE(fs::is_symlink(file()));
}

TEST_F(LoggerFileTest, NothingIsMadeWhereASymbolicLinkLeads) {
    const auto target = home() / "missing";
    fs::create_symlink(target, file());
    Logger::log("text");
    Logger::clean();
    EXPECT_FALSE(fs::exists(target));
}

// A pipe that nobody reads would keep whoever opens it waiting.
TEST_F(LoggerFileTest, PipeDoesNotMakeTheCallerWait) {
    ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
    Logger::log("text");
    Logger::clean();
    EXPECT_TRUE(fs::is_fifo(file()));
}

TEST_F(LoggerFileTest, PipeThatIsReadIsNotWrittenTo) {
    ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
    const int reader = open(file().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    Logger::log("text");
    std::array<char, 64> buffer{};
    EXPECT_LE(read(reader, buffer.data(), buffer.size()), 0) << buffer.data();
    close(reader);
}

TEST_F(LoggerFileTest, FolderInPlaceOfTheFileIsLeftAlone) {
    fs::create_directory(file());
    Logger::log("text");
    Logger::clean();
    EXPECT_TRUE(fs::is_empty(file()));
}

TEST_F(LoggerFileTest, NameThatIsNoFileNameWritesNothing) {
    for (const auto& name : {"a\0b"s, ""s, "."s, std::string(300, 'x'), "missing/file"s}) {
        Logger::changeFileName(name);
        Logger::log("text");
        Logger::clean();
    }
    EXPECT_TRUE(fs::is_empty(folder()));
}

TEST_F(LoggerFileTest, MissingDocumentsFolderIsMade) {
    const vorlan::testing::TemporaryHome other;
    ASSERT_FALSE(fs::exists(other.path() / "Documents"));
    Logger::makeLogging(true);
    Logger::log("text");
    EXPECT_EQ(linesOf(textOf(other.path() / "Documents" / tests::logFileName)).size(), 1U);
}

TEST_F(LoggerFileTest, UserMayHaveTheDocumentsElsewhere) {
    const vorlan::testing::TemporaryHome other;
    writeText(other.path() / ".config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/Papers/Own\"\n");
    Logger::makeLogging(true);
    Logger::log("text");
    EXPECT_EQ(linesOf(textOf(other.path() / "Papers/Own" / tests::logFileName)).size(), 1U);
    EXPECT_FALSE(fs::exists(other.path() / "Documents"));
}

TEST_F(LoggerFileTest, WithoutADocumentsFolderNothingIsWritten) {
    const vorlan::testing::TemporaryHome other;
    writeText(other.path() / "Documents", "a file");
    Logger::makeLogging(true);
    Logger::log("text");
    Logger::clean();
    EXPECT_EQ(textOf(other.path() / "Documents"), "a file");
}

TEST_F(LoggerFileTest, FolderThatIsGoneMeanwhileIsNoError) {
    Logger::log("text");
    fs::remove_all(folder());
    Logger::log("text");
    Logger::clean();
    EXPECT_FALSE(fs::exists(file()));
    fs::create_directory(folder());
    Logger::log("again");
    EXPECT_EQ(lines(), 1U);
}
