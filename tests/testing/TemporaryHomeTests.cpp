// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <VorlanFoundation/Logging/Logger.h>
#include <VorlanFoundation/Platform/UserDefaults.h>

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

TEST(TemporaryHome, StoresAreEmptyWithNothingRegisteredAndTheLogFileIsANewOne) {
    auto& defaults = vorlan::UserDefaults::standard();
    const auto log = [](const TemporaryHome& home) { return home.path() / "Documents/home.log"; };
    vorlan::Logger::changeFileName("home.log");
    {
        const TemporaryHome first;
        defaults["a"] = 1;
        defaults.registerDefaults({{"b", 2}});
        vorlan::Logger::makeLogging(true);
        vorlan::Logger::log("in the first");
        EXPECT_TRUE(fs::exists(log(first)));
    }
    const TemporaryHome second;
    EXPECT_EQ(defaults.dictionaryRepresentation(), vorlan::Value::Dictionary());
    vorlan::Logger::log("switched off here");
    EXPECT_FALSE(fs::exists(log(second)));
    vorlan::Logger::makeLogging(true);
    vorlan::Logger::log("in the second");
    EXPECT_TRUE(fs::exists(log(second))) << "under the name that the host gave";
    vorlan::Logger::changeFileName("0475148A-4EE3-4F85-A54C-D3A15BADD933.log"); // as it was
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
