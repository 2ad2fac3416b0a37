// SPDX-License-Identifier: Apache-2.0
// The fake itself, as others on the bus see it.
#include "tests/platform/security/secretservice/FakeSecretService.h"

#include "tests/support/BusConnection.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace vorlan::tests {

namespace {

using support::BusConnection;
using support::Reference;
using Attributes = std::map<std::string, std::string>;

constexpr char busName[] = "org.freedesktop.secrets";
constexpr char servicePath[] = "/org/freedesktop/secrets";
constexpr char collectionPath[] = "/org/freedesktop/secrets/aliases/default";

/// Somebody who talks to it without a library in between.
class FakeSecretServiceTest : public ::testing::Test {
protected:
    BusConnection::Method service(const char* name) const {
        return {busName, servicePath, "org.freedesktop.Secret.Service", name};
    }

    std::string openSession() const {
        const auto answer = connection_.call(service("OpenSession"),
                                             g_variant_new("(sv)", "plain", g_variant_new_string("")));
        return answer ? support::textOf(answer.get(), 1) : "";
    }

    /// Returns the path of the new item.
    std::string create(const std::string& session, const Attributes& attributes,
                       std::string_view secret) const {
        GVariantBuilder properties;
        g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(&properties, "{sv}", "org.freedesktop.Secret.Item.Attributes",
                              support::variantOf(attributes));
        auto* boxed = g_variant_new("(o@ay@ays)", session.c_str(), support::byteArray(""),
                                    support::byteArray(secret), "text/plain");
        const auto answer =
            connection_.call({busName, collectionPath, "org.freedesktop.Secret.Collection", "CreateItem"},
                             g_variant_new("(a{sv}@(oayays)b)", &properties, boxed, FALSE));
        return answer ? support::textOf(answer.get(), 0) : "";
    }

    /// How many items a search finds that are unlocked (0) or locked (1).
    gsize found(const Attributes& attributes, gsize index) const {
        const auto answer = connection_.call(service("SearchItems"),
                                             g_variant_new("(@a{ss})", support::variantOf(attributes)));
        return g_variant_n_children(support::childOf(answer.get(), index).get());
    }

    std::string secret(const std::string& session, const std::string& item) const {
        const auto answer = connection_.call({busName, item, "org.freedesktop.Secret.Item", "GetSecret"},
                                             g_variant_new("(o)", session.c_str()));
        const auto boxed = support::childOf(answer.get(), 0);
        return support::bytesOf(support::childOf(boxed.get(), 2).get());
    }

    const support::PrivateBus bus_;
    FakeSecretService fake_{bus_};
    const BusConnection connection_{bus_.address()};
};

} // namespace

TEST_F(FakeSecretServiceTest, KeepsSecretsAndFindsThemBySubsetsOfTheirAttributes) {
    const auto session = openSession();
    const auto item = create(session, {{"a", "1"}, {"b", "2"}}, "secret");
    EXPECT_EQ(secret(session, item), "secret");
    EXPECT_EQ(found({{"a", "1"}}, 0), 1U);
    EXPECT_EQ(found({{"a", "2"}}, 0), 0U);
    EXPECT_EQ(found({{"a", "1"}, {"c", ""}}, 0), 0U);
}

TEST_F(FakeSecretServiceTest, KeepsTwoItemsWithTheSameAttributes) {
    const auto session = openSession();
    const auto first = create(session, {{"a", "1"}}, "one");
    const auto second = create(session, {{"a", "1"}}, "two");
    EXPECT_NE(first, second);
    EXPECT_EQ(found({{"a", "1"}}, 0), 2U);
    fake_.duplicateItems({{"a", "2"}});
    EXPECT_EQ(found({{"a", "1"}}, 0), 2U);
    EXPECT_EQ(fake_.itemCount(), 4U);
}

TEST_F(FakeSecretServiceTest, FindsItemsAmongTheLockedOnesOrHidesThem) {
    create(openSession(), {{"a", "1"}}, "one");
    fake_.setLocked(true);
    EXPECT_EQ(found({}, 0), 0U);
    EXPECT_EQ(found({}, 1), 1U);
    fake_.setHidesLocked(true);
    EXPECT_EQ(found({}, 1), 0U);
}

TEST_F(FakeSecretServiceTest, UnlocksAtOnceWhereNoPromptIsNeeded) {
    fake_.setLocked(true, false);
    const auto answer =
        connection_.call(service("Unlock"), g_variant_new("(@ao)", support::objectPaths({collectionPath})));
    EXPECT_EQ(support::textOf(answer.get(), 1), "/");
    create(openSession(), {}, "one");
    EXPECT_EQ(found({}, 0), 1U);
}

TEST_F(FakeSecretServiceTest, UnlocksAfterAPromptThatIsGranted) {
    fake_.setLocked(true);
    fake_.setPrompts(FakeSecretService::Prompts::granted);
    const auto answer =
        connection_.call(service("Unlock"), g_variant_new("(@ao)", support::objectPaths({collectionPath})));
    const auto prompt = support::textOf(answer.get(), 1);
    EXPECT_NE(prompt, "/");
    connection_.call({busName, prompt, "org.freedesktop.Secret.Prompt", "Prompt"}, g_variant_new("(s)", ""));
    EXPECT_NE(create(openSession(), {}, "one"), "");
}

TEST_F(FakeSecretServiceTest, KeepsItemsAcrossADisconnection) {
    const auto item = create(openSession(), {{"a", "1"}}, "one");
    fake_.disconnect();
    connection_.waitForName(busName, false);
    fake_.connect();
    EXPECT_EQ(secret(openSession(), item), "one");
}

TEST_F(FakeSecretServiceTest, LeavesTheBusWhenItIsToldTo) {
    const auto item = create(openSession(), {{"a", "1"}}, "one");
    fake_.dieAt("Delete", true);
    g_dbus_connection_call(connection_.get(), busName, item.c_str(), "org.freedesktop.Secret.Item", "Delete",
                           nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
    connection_.waitForName(busName, false);
    EXPECT_EQ(fake_.callCount("Delete"), 1U);
    EXPECT_EQ(fake_.itemCount(), 0U);
}

} // namespace vorlan::tests
