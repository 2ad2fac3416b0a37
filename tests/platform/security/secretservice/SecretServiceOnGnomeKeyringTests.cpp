// SPDX-License-Identifier: Apache-2.0
// The desktop's own keyring, in the states that a desktop brings about.
#include "tests/platform/security/secretservice/KeyringItems.h"

#include "tests/support/BusConnection.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>

namespace vorlan::tests {

namespace {

using namespace std::chrono_literals;

class SecretServiceOnGnomeKeyringTest : public KeyringTest {
protected:
    void SetUp() override {
        if (!GnomeKeyring::isInstalled()) GTEST_SKIP() << "gnome-keyring-daemon is not installed";
        keyring_.emplace(bus_);
        ASSERT_EQ(add("anna", "the secret of anna"), errSecSuccess);
    }

    std::optional<GnomeKeyring> keyring_;
};

class WithoutALoginTest : public KeyringTest {
protected:
    void SetUp() override {
        if (!GnomeKeyring::isInstalled()) GTEST_SKIP() << "gnome-keyring-daemon is not installed";
    }
};

/// What any program on the bus sees of the items, as text.
std::string whatOthersSee(const std::string& address) {
    const support::BusConnection connection(address);
    const auto found = connection.call({"org.freedesktop.secrets", "/org/freedesktop/secrets",
                                        "org.freedesktop.Secret.Service", "SearchItems"},
                                       g_variant_new("(@a{ss})", support::variantOf({})));
    const auto paths = support::childOf(found.get(), 0);
    std::string text;
    for (gsize i = 0; i < g_variant_n_children(paths.get()); ++i) {
        const auto properties = connection.call({"org.freedesktop.secrets", support::textOf(paths.get(), i),
                                                 "org.freedesktop.DBus.Properties", "GetAll"},
                                                g_variant_new("(s)", "org.freedesktop.Secret.Item"));
        gchar* printed = g_variant_print(properties.get(), FALSE);
        text += printed;
        g_free(printed);
    }
    return text;
}

bool has(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(SecretServiceOnGnomeKeyringTest, ItemsAreKeptThroughEveryFunction) {
    EXPECT_EQ(secretOf("anna"), "the secret of anna");
    EXPECT_EQ(add("anna", "new"), errSecDuplicateItem);
    EXPECT_EQ(update("anna", "new"), errSecSuccess);
    EXPECT_EQ(secretOf("anna"), "new");
    EXPECT_EQ(read("bert"), errSecItemNotFound);
    EXPECT_EQ(remove("anna"), errSecSuccess);
    EXPECT_EQ(read("anna"), errSecItemNotFound);
}

TEST_F(SecretServiceOnGnomeKeyringTest, LockedKeyringIsLockedForEveryFunction) {
    keyring_->lock();
    EXPECT_EQ(read("anna"), errSecInteractionNotAllowed);
    EXPECT_EQ(update("anna", "new"), errSecInteractionNotAllowed);
    EXPECT_EQ(remove("anna"), errSecInteractionNotAllowed);
    EXPECT_EQ(add("bert", "other"), errSecInteractionNotAllowed);
    EXPECT_EQ(read("carl"), errSecInteractionNotAllowed);
    keyring_->unlock();
    EXPECT_EQ(secretOf("anna"), "the secret of anna");
    EXPECT_EQ(countOfItems(), 1U);
}

TEST_F(SecretServiceOnGnomeKeyringTest, HungKeyringIsGivenUpInTime) {
    keyring_->hang();
    OSStatus status = errSecSuccess;
    const auto duration = durationOf([&] { status = read("anna"); });
    keyring_->goOn();
    EXPECT_EQ(status, errSecNotAvailable);
    EXPECT_LT(duration, 8s);
    EXPECT_EQ(secretOf("anna"), "the secret of anna");
}

TEST_F(SecretServiceOnGnomeKeyringTest, KilledKeyringIsNotAvailableUntilItIsBack) {
    keyring_->kill();
    EXPECT_EQ(read("anna"), errSecNotAvailable);
    EXPECT_EQ(update("anna", "new"), errSecNotAvailable);
    EXPECT_EQ(remove("anna"), errSecNotAvailable);
    EXPECT_EQ(add("bert", "other"), errSecNotAvailable);
    keyring_->restart();
    EXPECT_EQ(secretOf("anna"), "the secret of anna");
    EXPECT_EQ(countOfItems(), 1U);
}

TEST_F(SecretServiceOnGnomeKeyringTest, KeyringThatWasStartedAgainIsFound) {
    keyring_->restart();
    EXPECT_EQ(secretOf("anna"), "the secret of anna");
    keyring_->restart();
    EXPECT_EQ(update("anna", "new"), errSecSuccess);
    keyring_->restart();
    EXPECT_EQ(add("bert", "other"), errSecSuccess);
    keyring_->restart();
    EXPECT_EQ(remove("anna"), errSecSuccess);
    EXPECT_EQ(secretOf("bert"), "other");
}

TEST_F(SecretServiceOnGnomeKeyringTest, OthersSeeWhatItemsAreForAndNoSecret) {
    const auto seen = whatOthersSee(bus_.address());
    EXPECT_TRUE(has(seen, "'svc': 'com.example.mail'")) << seen;
    EXPECT_TRUE(has(seen, "'acct': 'anna'")) << seen;
    EXPECT_TRUE(has(seen, "'acctt': 's'")) << seen;
    EXPECT_TRUE(has(seen, "'agrp': ''")) << seen;
    EXPECT_TRUE(has(seen, "'class': 'genp'")) << seen;
    EXPECT_TRUE(has(seen, "'sync': '0'")) << seen;
    EXPECT_TRUE(has(seen, "'gena': '-'")) << seen;
    EXPECT_TRUE(has(seen, "'v': '1'")) << seen;
    EXPECT_TRUE(has(seen, "com.example.mail: anna")) << seen;
    EXPECT_FALSE(has(seen, "the secret of anna")) << seen;
    EXPECT_FALSE(has(seen, "dGhlIHNlY3JldCBvZiBhbm5h")) << seen; // the same in base64
}

TEST_F(SecretServiceOnGnomeKeyringTest, LabelsCanBeHidden) {
    use({.hidesLabels = true});
    ASSERT_EQ(add("bert", "other"), errSecSuccess);
    const auto seen = whatOthersSee(bus_.address());
    EXPECT_TRUE(has(seen, "com.example.mail: anna")) << seen;
    EXPECT_FALSE(has(seen, "com.example.mail: bert")) << seen;
}

TEST_F(SecretServiceOnGnomeKeyringTest, FilesOfTheKeyringHoldNoSecret) {
    bool hasFiles = false;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(keyring_->folder())) {
        if (!entry.is_regular_file()) continue;
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string content{std::istreambuf_iterator<char>(file), {}};
        hasFiles |= !content.empty();
        EXPECT_FALSE(has(content, "the secret of anna")) << entry.path();
        EXPECT_FALSE(has(content, "dGhlIHNlY3JldCBvZiBhbm5h")) << entry.path();
    }
    EXPECT_TRUE(hasFiles);
}

TEST_F(WithoutALoginTest, KeyringThatWasNeverMadeIsLockedNotEmpty) {
    const GnomeKeyring keyring(bus_, GnomeKeyring::Login::none);
    EXPECT_EQ(add("anna", "secret"), errSecInteractionNotAllowed);
    EXPECT_EQ(read("anna"), errSecInteractionNotAllowed);
    EXPECT_EQ(update("anna", "new"), errSecInteractionNotAllowed);
    EXPECT_EQ(remove("anna"), errSecInteractionNotAllowed);
}

} // namespace vorlan::tests
