// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/FileHandle.h>

#include "tests/logging/LogCase.h"
#include "tests/support/DescriptorCount.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>

using namespace vorlan;
using namespace std::string_literals;
using tests::textOf;
using tests::writeText;
namespace fs = std::filesystem;

namespace {

class FileHandleTest : public ::testing::Test {
protected:
    fs::path file() const { return home_.path() / "file"; }

private:
    vorlan::testing::TemporaryHome home_;
};

} // namespace

TEST_F(FileHandleTest, OnlyWhatIsThereIsOpened) {
    EXPECT_FALSE(FileHandle::forAppending(file()));
    EXPECT_FALSE(fs::exists(file()));
    writeText(file(), "a");
    EXPECT_TRUE(FileHandle::forAppending(file()));
}

TEST_F(FileHandleTest, FileIsMadeForTheUserAlone) {
    const auto former = umask(0);
    EXPECT_TRUE(FileHandle::forAppendingOrCreating(file()));
    umask(former);
    EXPECT_EQ(fs::status(file()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(FileHandleTest, TextsAreAppendedWhereverTheEndIs) {
    writeText(file(), "a");
    auto first = FileHandle::forAppending(file());
    auto second = FileHandle::forAppendingOrCreating(file());
    ASSERT_TRUE(first && second);
    EXPECT_TRUE(first->append("b"));
    EXPECT_TRUE(second->append("c"));
    EXPECT_TRUE(first->append("d"));
    EXPECT_EQ(textOf(file()), "abcd");
}

TEST_F(FileHandleTest, EmptyTextIsAppended) {
    EXPECT_TRUE(FileHandle::forAppendingOrCreating(file())->append(""));
    EXPECT_EQ(fs::file_size(file()), 0U);
}

TEST_F(FileHandleTest, FileIsCutOffAndWrittenOnFromThere) {
    writeText(file(), "abcd");
    auto handle = FileHandle::forAppending(file());
    EXPECT_TRUE(handle->truncate(2));
    EXPECT_TRUE(handle->append("x"));
    EXPECT_EQ(textOf(file()), "abx");
    EXPECT_TRUE(handle->truncate(0));
    EXPECT_EQ(fs::file_size(file()), 0U);
}

TEST_F(FileHandleTest, WhatIsNoRegularFileIsNotOpened) {
    const auto other = file().string() + "-target";
    const auto expectNone = [&] {
        EXPECT_FALSE(FileHandle::forAppending(file()));
        EXPECT_FALSE(FileHandle::forAppendingOrCreating(file()));
        fs::remove(file());
    };
    fs::create_directory(file());
    expectNone();
    writeText(other, "mine");
    fs::create_symlink(other, file());
    expectNone();
    EXPECT_EQ(textOf(other), "mine");
    ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
    expectNone();
}

TEST_F(FileHandleTest, PathWithANulIsNone) {
    EXPECT_FALSE(FileHandle::forAppendingOrCreating(file().native() + "\0more"s));
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(FileHandleTest, FileIsClosedWithTheHandle) {
    const auto isOpen = [&] { return support::openCount(file()) > 0; };
    auto handle = FileHandle::forAppendingOrCreating(file());
    EXPECT_TRUE(isOpen());
    auto moved = std::move(*handle);
    handle.reset();
    EXPECT_TRUE(isOpen()) << "the other handle owns it now";
    EXPECT_TRUE(moved.append("x"));
    { const auto last = std::move(moved); }
    EXPECT_FALSE(isOpen());
}
