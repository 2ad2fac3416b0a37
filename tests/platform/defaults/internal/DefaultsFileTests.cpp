// SPDX-License-Identifier: Apache-2.0
#include "platform/defaults/DefaultsFile.h"

#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <filesystem>

using namespace vorlan;
using namespace vorlan::defaults;

namespace {

class DefaultsFiles : public ::testing::Test {
protected:
    DefaultsFiles() { std::filesystem::create_directories(folder_); }

    struct stat statusOf(const DefaultsFile& file) const {
        struct stat status{};
        EXPECT_EQ(stat(file.path().c_str(), &status), 0);
        return status;
    }

    const vorlan::testing::TemporaryHome home_;
    const std::filesystem::path folder_ = home_.path() / "store";
    Problems problems_;
};

} // namespace

TEST_F(DefaultsFiles, VersionOfAnotherIsSeenAndTheOwnIsKnown) {
    DefaultsFile file(folder_, problems_);
    DefaultsFile other(folder_, problems_);
    EXPECT_TRUE(file.refresh());
    EXPECT_TRUE(file.replace({{"key", 1}}));
    EXPECT_FALSE(file.refresh());
    EXPECT_TRUE(other.refresh());
    EXPECT_EQ(other.entries(), (Value::Dictionary{{"key", 1}}));
    EXPECT_TRUE(problems_.empty());
}

// File systems give the number of a removed file to the next one, and their clocks stand still for some milliseconds:
// a later version could look like the one that was read, and what it says would be overwritten.
TEST_F(DefaultsFiles, LaterVersionIsNeverTakenForTheOneThatWasRead) {
    DefaultsFile reader(folder_, problems_);
    DefaultsFile writer(folder_, problems_);
    for (int round = 0; round < 20; ++round) {
        EXPECT_TRUE(writer.replace({{"key", 1}}));
        reader.refresh();
        const auto seen = statusOf(reader);
        EXPECT_TRUE(writer.replace({{"key", 2}}));
        EXPECT_TRUE(writer.replace({{"key", 3}}));
        const auto later = statusOf(reader);
        ASSERT_EQ(later.st_size, seen.st_size);
        const std::array times{later.st_atim, seen.st_mtim};
        ASSERT_EQ(utimensat(AT_FDCWD, reader.path().c_str(), times.data(), 0), 0);
        EXPECT_TRUE(reader.refresh()) << "round " << round;
        EXPECT_EQ(reader.entries(), (Value::Dictionary{{"key", 3}}));
    }
}
