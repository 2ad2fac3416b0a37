// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Keychain.h>

#include "tests/support/WorkerThreads.h"

#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <string>

using vorlan::Accessibility;
using vorlan::KeychainManager;
using vorlan::KeychainSettings;

namespace {

class KeychainManagerDeathTest : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        if (GetParam()) support::useWorkerThreads();
    }
};

void fill(KeychainSettings& settings) {
    settings.service = "service";
    settings.synchronizable = true;
    settings.accessibility = Accessibility::unlocked({.thisDeviceOnly = false});
}

std::string stop(const std::string& missing) {
    return "^VorlanFoundation/KeychainManager: Fatal error: the settings have no " + missing + "\n$";
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Process, KeychainManagerDeathTest, ::testing::Bool(), [](const auto& process) {
    return process.param ? "ThatHasUsedWorkerThreads" : "WithoutWorkerThreads";
});

TEST_P(KeychainManagerDeathTest, SettingsWithoutAServiceStopTheProcess) {
    KeychainSettings settings;
    fill(settings);
    settings.service = std::nullopt;
    EXPECT_EXIT(KeychainManager{settings}, ::testing::KilledBySignal(SIGABRT), stop("service"));
}

TEST_P(KeychainManagerDeathTest, SettingsWithoutASynchronizableFlagStopTheProcess) {
    KeychainSettings settings;
    fill(settings);
    settings.synchronizable = std::nullopt;
    EXPECT_EXIT(KeychainManager{settings}, ::testing::KilledBySignal(SIGABRT), stop("synchronizable flag"));
}

TEST_P(KeychainManagerDeathTest, SettingsWithoutAnAccessibilityStopTheProcess) {
    KeychainSettings settings;
    fill(settings);
    settings.accessibility = std::nullopt;
    EXPECT_EXIT(KeychainManager{settings}, ::testing::KilledBySignal(SIGABRT), stop("accessibility"));
}

TEST_P(KeychainManagerDeathTest, ConfiguringThatSetsOnlyTheServiceStopsTheProcess) {
    EXPECT_EXIT(KeychainManager::with([](KeychainSettings& settings) { settings.service = "service"; }),
                ::testing::KilledBySignal(SIGABRT), stop("synchronizable flag"));
    EXPECT_EXIT(KeychainManager::with([](KeychainSettings&) {}), ::testing::KilledBySignal(SIGABRT),
                stop("service"));
}

TEST_P(KeychainManagerDeathTest, AbsentAccessGroupIsAllowed) {
    KeychainSettings settings;
    fill(settings);
    const KeychainManager manager(settings);
    EXPECT_EQ(settings.accessGroup, std::nullopt);
}
