// SPDX-License-Identifier: Apache-2.0

// When the log is on.

#include <VorlanFoundation/Logging/Logger.h>
#include <VorlanFoundation/Platform/UserDefaults.h>

#include "tests/logging/LogCase.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace vorlan;
using tests::linesOf;
using tests::logSwitchKey;
namespace fs = std::filesystem;

namespace {

class LoggerSwitchTest : public tests::LogCase {
protected:
    std::size_t lines() const { return linesOf(text()).size(); }
    static UserDefaults& store() { return UserDefaults::standard(); }
    static bool isStored() { return store().storedEntries().contains(logSwitchKey); }
};

} // namespace

TEST_F(LoggerSwitchTest, LogIsOffAtFirst) {
    Logger::log("text");
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(LoggerSwitchTest, SwitchingTakesEffectWithTheNextCall) {
    Logger::makeLogging(true);
    Logger::log("on");
    Logger::makeLogging(false);
    Logger::log("off");
    EXPECT_EQ(lines(), 1U);
    Logger::makeLogging(true);
    Logger::log("on");
    EXPECT_EQ(lines(), 2U);
}

TEST_F(LoggerSwitchTest, ClearingTheDefaultsSwitchesTheLogOff) {
    Logger::makeLogging(true);
    ASSERT_TRUE(isStored());
    Logger::clearDefaults();
    EXPECT_FALSE(isStored());
    Logger::log("text");
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(LoggerSwitchTest, ClearingTheDefaultsLeavesOtherEntries) {
    store().setObject(5, "volume");
    Logger::makeLogging(true);
    Logger::clearDefaults();
    EXPECT_EQ(store().integerForKey("volume"), 5);
}

TEST_F(LoggerSwitchTest, SwitchIsKeptUnderItsKey) {
    Logger::makeLogging(true);
    EXPECT_EQ(store().storedEntries()[logSwitchKey], Value(true));
    Logger::makeLogging(false);
    EXPECT_EQ(store().storedEntries()[logSwitchKey], Value(false));
}

TEST_F(LoggerSwitchTest, NothingIsStoredWhereTheSwitchStandsSoAlready) {
    Logger::makeLogging(false);
    EXPECT_FALSE(isStored()) << "absent is off";
    store().setObject("YES", logSwitchKey);
    Logger::makeLogging(true);
    EXPECT_EQ(store().storedEntries()[logSwitchKey], Value("YES")) << "it counted as on already";
}

TEST_F(LoggerSwitchTest, EntryOfTheStoreCountsAtOnce) {
    store().setObject(true, logSwitchKey);
    Logger::log("on");
    store().setObject(false, logSwitchKey);
    Logger::log("off");
    store().setObject(1, logSwitchKey);
    Logger::log("on");
    store().removeObjectForKey(logSwitchKey);
    Logger::log("off");
    EXPECT_EQ(lines(), 2U);
}

TEST_F(LoggerSwitchTest, EntryThatIsNoBooleanIsOff) {
    store().setObject(Value::Array{true}, logSwitchKey);
    Logger::log("text");
    store().setObject("no", logSwitchKey);
    Logger::log("text");
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(LoggerSwitchTest, RegisteredDefaultCounts) {
    store().registerDefaults({{logSwitchKey, true}});
    Logger::log("on");
    EXPECT_EQ(lines(), 1U);
    Logger::makeLogging(true);
    EXPECT_FALSE(isStored()) << "it is on already";
    Logger::makeLogging(false);
    EXPECT_TRUE(isStored());
    Logger::log("off");
    EXPECT_EQ(lines(), 1U);
    Logger::clearDefaults();
    Logger::log("on, as registered");
    EXPECT_EQ(lines(), 2U);
    store().registerDefaults({{logSwitchKey, false}});
    Logger::log("off");
    EXPECT_EQ(lines(), 2U);
}

TEST_F(LoggerSwitchTest, SwitchBelongsToTheHome) {
    Logger::makeLogging(true);
    Logger::log("in the first home");
    {
        const vorlan::testing::TemporaryHome other;
        Logger::log("in the other home, where the log is off");
        EXPECT_FALSE(fs::exists(other.path() / "Documents" / tests::logFileName));
        Logger::makeLogging(true);
        Logger::log("in the other home");
        EXPECT_EQ(linesOf(tests::textOf(other.path() / "Documents" / tests::logFileName)).size(), 1U);
    }
    Logger::log("in the first home again");
    EXPECT_EQ(lines(), 2U);
}

// Describing a value may switch the log off: the values after it are not written any more.
TEST_F(LoggerSwitchTest, SwitchIsLookedAtBeforeEachLine) {
    struct Off {
        std::string description() const { // NOLINT: not static, as descriptions are
            Logger::makeLogging(false);
            return "off";
        }
    };
    Logger::makeLogging(true);
    Logger::log("on");
    Logger::log(Off());
    Logger::log("off");
    EXPECT_EQ(lines(), 1U);
}
