// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

using vorlan::testing::TemporaryHome;
namespace fs = std::filesystem;

TEST(TemporaryHome, PointsTheVariablesToEmptyFoldersOfItsOwn) {
    const TemporaryHome home;
    EXPECT_EQ(std::getenv("HOME"), home.path());
    for (const auto* variable :
         {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"}) {
        const fs::path folder = std::getenv(variable);
        EXPECT_TRUE(fs::is_empty(folder)) << variable;
        EXPECT_TRUE(folder.string().starts_with(home.path().string())) << variable;
    }
    EXPECT_EQ(fs::status(home.path() / ".runtime").permissions(), fs::perms::owner_all);
}

TEST(TemporaryHome, VariablesHaveTheirFormerValuesAgainAndTheFoldersAreGone) {
    setenv("HOME", "/former/home", 1);
    unsetenv("XDG_DATA_HOME");
    fs::path path;
    {
        const TemporaryHome home;
        path = home.path();
        std::ofstream(path / ".config/settings") << "something";
    }
    EXPECT_FALSE(fs::exists(path));
    EXPECT_STREQ(std::getenv("HOME"), "/former/home");
    EXPECT_EQ(std::getenv("XDG_DATA_HOME"), nullptr);
}

TEST(TemporaryHome, EachIsFresh) {
    const TemporaryHome first;
    {
        const TemporaryHome second;
        EXPECT_NE(first.path(), second.path());
        EXPECT_EQ(std::getenv("HOME"), second.path());
    }
    EXPECT_EQ(std::getenv("HOME"), first.path());
}
