// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Keychain/KeychainSettings.h>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <thread>

using vorlan::Accessibility;
using vorlan::KeychainSettings;

namespace {

void expectAllAbsent(const KeychainSettings& settings) {
    EXPECT_EQ(settings.service, std::nullopt);
    EXPECT_EQ(settings.accessGroup, std::nullopt);
    EXPECT_EQ(settings.synchronizable, std::nullopt);
    EXPECT_FALSE(settings.accessibility.has_value());
}

} // namespace

TEST(KeychainSettings, AreAllAbsentAtFirst) {
    const KeychainSettings settings;
    expectAllAbsent(settings);
}

TEST(KeychainSettings, ConfiguringThatSetsNothingLeavesAllAbsent) {
    expectAllAbsent(*KeychainSettings::with([](KeychainSettings&) {}));
}

TEST(KeychainSettings, ConfiguringBeginsWithAllAbsentAndWhatItSetsIsReturned) {
    const auto settings = KeychainSettings::with([](KeychainSettings& fresh) {
        expectAllAbsent(fresh);
        fresh.service = "com.example.mail";
        fresh.accessGroup = "group";
        fresh.synchronizable = false;
        fresh.accessibility = Accessibility::always({.thisDeviceOnly = true});
    });
    EXPECT_EQ(settings->service, "com.example.mail");
    EXPECT_EQ(settings->accessGroup, "group");
    EXPECT_EQ(settings->synchronizable, false);
    EXPECT_EQ(settings->accessibility->securityConstant(), vorlan::kSecAttrAccessibleAlwaysThisDeviceOnly);
}

TEST(KeychainSettings, ConfiguringIsCalledOnceOnTheCallersThreadWithWhatIsReturned) {
    int calls = 0;
    const KeychainSettings* filled = nullptr;
    std::thread::id thread;
    const auto settings = KeychainSettings::with([&](KeychainSettings& fresh) {
        ++calls;
        filled = &fresh;
        thread = std::this_thread::get_id();
    });
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(filled, settings.get());
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST(KeychainSettings, AreSharedAndChangedInPlace) {
    const auto settings = KeychainSettings::with([](KeychainSettings& fresh) { fresh.service = "one"; });
    const auto same = settings;
    *same->service += " and more";
    same->synchronizable = true;
    EXPECT_EQ(settings->service, "one and more");
    EXPECT_EQ(settings->synchronizable, true);
    same->service = std::nullopt;
    EXPECT_EQ(settings->service, std::nullopt);
}

TEST(KeychainSettings, EachCallMakesNewOnes) {
    const auto first = KeychainSettings::with([](KeychainSettings& fresh) { fresh.service = "one"; });
    const auto second = KeychainSettings::with([](KeychainSettings&) {});
    EXPECT_NE(first, second);
    expectAllAbsent(*second);
}
