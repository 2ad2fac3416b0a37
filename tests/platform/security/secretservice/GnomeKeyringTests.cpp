// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/secretservice/GnomeKeyring.h"

#include "tests/support/BusConnection.h"

#include <gtest/gtest.h>

#include <string>

namespace vorlan::tests {

namespace {

using support::BusConnection;

/// Where the alias "default" leads.
std::string defaultKeyring(const BusConnection& connection) {
    const auto answer = connection.call({"org.freedesktop.secrets", "/org/freedesktop/secrets",
                                         "org.freedesktop.Secret.Service", "ReadAlias"},
                                        g_variant_new("(s)", "default"));
    return answer ? support::textOf(answer.get(), 0) : "";
}

bool isLocked(const BusConnection& connection) {
    const auto answer =
        connection.call({"org.freedesktop.secrets", "/org/freedesktop/secrets/collection/login",
                         "org.freedesktop.DBus.Properties", "Get"},
                        g_variant_new("(ss)", "org.freedesktop.Secret.Collection", "Locked"));
    const auto boxed = support::childOf(answer.get(), 0);
    const support::Reference<GVariant> value(g_variant_get_variant(boxed.get()));
    return g_variant_get_boolean(value.get()) != FALSE;
}

class GnomeKeyringTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!GnomeKeyring::isInstalled()) GTEST_SKIP() << "gnome-keyring-daemon is not installed";
    }

    const support::PrivateBus bus_;
};

} // namespace

TEST_F(GnomeKeyringTest, HasAnOpenKeyringAfterALogin) {
    const GnomeKeyring keyring(bus_);
    const BusConnection connection(bus_.address());
    EXPECT_EQ(defaultKeyring(connection), "/org/freedesktop/secrets/collection/login");
    EXPECT_FALSE(isLocked(connection));
}

TEST_F(GnomeKeyringTest, HasNoKeyringWithoutALogin) {
    const GnomeKeyring keyring(bus_, GnomeKeyring::Login::none);
    EXPECT_EQ(defaultKeyring(BusConnection(bus_.address())), "/");
}

TEST_F(GnomeKeyringTest, IsLockedAndUnlockedWithoutAQuestion) {
    const GnomeKeyring keyring(bus_);
    const BusConnection connection(bus_.address());
    keyring.lock();
    EXPECT_TRUE(isLocked(connection));
    keyring.unlock();
    EXPECT_FALSE(isLocked(connection));
}

TEST_F(GnomeKeyringTest, ComesBackUnlockedAfterItWasKilled) {
    GnomeKeyring keyring(bus_);
    keyring.kill();
    keyring.restart();
    EXPECT_FALSE(isLocked(BusConnection(bus_.address())));
}

TEST_F(GnomeKeyringTest, AnswersAgainAfterItHung) {
    const GnomeKeyring keyring(bus_);
    keyring.hang();
    keyring.goOn();
    EXPECT_FALSE(isLocked(BusConnection(bus_.address())));
}

} // namespace vorlan::tests
