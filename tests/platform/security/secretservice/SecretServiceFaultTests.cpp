// SPDX-License-Identifier: Apache-2.0
// A keyring that hangs, dies, lies, or has been written to by others.
#include "tests/platform/security/secretservice/KeyringItems.h"

#include <VorlanFoundation/Keychain.h>

#include <array>
#include <vector>

namespace vorlan::tests {

namespace {

using namespace std::chrono_literals;

class SecretServiceFaultTest : public FakeKeyringTest {
protected:
    SecretServiceFaultTest() { EXPECT_EQ(add("anna", "secret"), errSecSuccess); }
};

/// A method of the service, and the function that cannot do without it.
struct Step {
    const char* method;
    OSStatus (*function)();
};

const std::vector<Step> steps{
    {"SearchItems", [] { return read("anna"); }},
    {"GetSecrets", [] { return read("anna"); }},
    {"SearchItems", [] { return update("anna", "new"); }},
    {"SetSecret", [] { return update("anna", "new"); }},
    {"SearchItems", [] { return remove("anna"); }},
    {"Delete", [] { return remove("anna"); }},
    {"SearchItems", [] { return add("bert", "other"); }},
    {"CreateItem", [] { return add("bert", "other"); }},
    {"ReadAlias", [] { return read("carl"); }},
    {"Set", [] { return update("anna", "new"); }},
};

class SecretServiceStepTest : public SecretServiceFaultTest,
                              public ::testing::WithParamInterface<std::size_t> {
protected:
    const Step& step() const { return steps[GetParam()]; }

    /// As it was; but what comes after the secret of an item was set cannot undo that.
    void expectUnchanged() {
        const auto secret = secretOf("anna");
        EXPECT_TRUE(secret == "secret" || (std::string(step().method) == "Set" && secret == "new")) << secret;
    }

    /// Either what it was, or what was to be done.
    void expectNothingLost() {
        const auto secret = secretOf("anna");
        const bool isRemoval = std::string(step().method) == "Delete";
        EXPECT_TRUE(secret == "secret" || secret == "new" || (isRemoval && secret == "(-25300)")) << secret;
    }
};

std::string stepName(const ::testing::TestParamInfo<std::size_t>& info) {
    constexpr std::array functions{"Read",   "Read", "Update", "Update",      "Remove",
                                   "Remove", "Add",  "Add",    "ReadMissing", "Update"};
    return std::string(functions.at(info.param)) + "In" + steps[info.param].method;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(, SecretServiceStepTest, ::testing::Range<std::size_t>(0, 10), stepName);

TEST_P(SecretServiceStepTest, ServiceThatDoesNotAnswerIsGivenUpInTime) {
    fake_.ignore(step().method, FakeSecretService::always);
    OSStatus status = errSecSuccess;
    const auto duration = durationOf([&] { status = step().function(); });
    EXPECT_EQ(status, errSecNotAvailable);
    EXPECT_LT(duration, 8s);
    fake_.behave();
    expectUnchanged();
    EXPECT_EQ(fake_.itemCount(), 1U);
}

TEST_P(SecretServiceStepTest, ServiceThatDiesBeforeItsWorkIsNotAvailable) {
    fake_.dieAt(step().method, false);
    EXPECT_EQ(step().function(), errSecNotAvailable);
    EXPECT_EQ(step().function(), errSecNotAvailable);
    fake_.connect();
    expectUnchanged();
    EXPECT_EQ(fake_.itemCount(), 1U);
}

TEST_P(SecretServiceStepTest, ServiceThatDiesAfterItsWorkIsNotAvailable) {
    fake_.dieAt(step().method, true);
    EXPECT_EQ(step().function(), errSecNotAvailable);
    fake_.connect();
    expectNothingLost();
}

TEST_P(SecretServiceStepTest, ErrorsOfTheServiceAreNeverNotFound) {
    for (const char* error :
         {"org.freedesktop.DBus.Error.AccessDenied", "org.freedesktop.DBus.Error.NoReply",
          "org.freedesktop.DBus.Error.LimitsExceeded", "org.freedesktop.DBus.Error.NoMemory",
          "org.freedesktop.DBus.Error.Failed", "org.example.Unheard.Of"}) {
        fake_.fail(step().method, error, FakeSecretService::always);
        const auto status = step().function();
        EXPECT_NE(status, errSecSuccess) << error;
        EXPECT_NE(status, errSecItemNotFound) << error;
        EXPECT_NE(status, errSecDuplicateItem) << error;
        fake_.behave();
        expectUnchanged();
    }
}

TEST_F(SecretServiceFaultTest, ServiceThatOpensNoSessionIsNotAvailable) {
    use({});
    fake_.ignore("OpenSession", FakeSecretService::always);
    OSStatus status = errSecSuccess;
    const auto duration = durationOf([&] { status = read("anna"); });
    EXPECT_EQ(status, errSecNotAvailable);
    EXPECT_LT(duration, 8s);
    fake_.behave();
    EXPECT_EQ(secretOf("anna"), "secret");
}

TEST_F(SecretServiceFaultTest, SecretsThatAreNotOursAreDamaged) {
    fake_.setWrongSecrets(true);
    EXPECT_EQ(read("anna"), errSecDecode);
    fake_.setWrongSecrets(false);
    EXPECT_EQ(secretOf("anna"), "secret");
}

TEST_F(SecretServiceFaultTest, DamagedItemIsRepairedByAnUpdate) {
    fake_.setWrongSecrets(true);
    EXPECT_EQ(update("anna", "new"), errSecSuccess);
    fake_.setWrongSecrets(false);
    EXPECT_EQ(secretOf("anna"), "new");
}

TEST_F(SecretServiceFaultTest, LostReplyOfACreationIsNotFollowedByASecondOne) {
    fake_.loseReply("CreateItem");
    const auto before = fake_.callCount("CreateItem");
    EXPECT_EQ(add("bert", "other"), errSecNotAvailable);
    EXPECT_EQ(fake_.callCount("CreateItem"), before + 1);
    EXPECT_EQ(add("bert", "again"), errSecDuplicateItem);
    EXPECT_EQ(secretOf("bert"), "other");
    EXPECT_EQ(fake_.itemCount(), 2U);
}

TEST_F(SecretServiceFaultTest, DuplicatesMadeByOthersAreOneItem) {
    fake_.duplicateItems({{"uuid", "00000000-0000-4000-8000-000000000000"}});
    fake_.duplicateItems();
    ASSERT_EQ(fake_.itemCount(), 4U);
    EXPECT_EQ(countOfItems(), 1U);
    EXPECT_EQ(secretOf("anna"), "secret");
    EXPECT_EQ(add("anna", "new"), errSecDuplicateItem);
}

TEST_F(SecretServiceFaultTest, UpdateLeavesOneOfDuplicates) {
    fake_.duplicateItems({{"uuid", "00000000-0000-4000-8000-000000000000"}});
    EXPECT_EQ(update("anna", "new"), errSecSuccess);
    EXPECT_EQ(fake_.itemCount(), 1U);
    EXPECT_EQ(secretOf("anna"), "new");
}

TEST_F(SecretServiceFaultTest, RemovalRemovesAllDuplicates) {
    fake_.duplicateItems({{"uuid", "00000000-0000-4000-8000-000000000000"}});
    EXPECT_EQ(remove("anna"), errSecSuccess);
    EXPECT_EQ(fake_.itemCount(), 0U);
    EXPECT_EQ(read("anna"), errSecItemNotFound);
}

TEST_F(SecretServiceFaultTest, ItemThatIsGoneWhenItIsDeletedIsNoFailure) {
    for (const char* error :
         {"org.freedesktop.DBus.Error.UnknownMethod", "org.freedesktop.DBus.Error.UnknownObject"}) {
        fake_.fail("Delete", error);
        const auto status = remove("anna");
        EXPECT_TRUE(status == errSecSuccess || status == errSecItemNotFound) << status;
    }
}

namespace {

/// The manager's update is the one that erases a whole service when it goes wrong twice.
class KeychainManagerOnTheKeyringTest : public FakeKeyringTest {
protected:
    KeychainManagerOnTheKeyringTest() {
        for (const char* key : {"anna", "bert", "carl"})
            EXPECT_TRUE(manager_.insert(key, dataFromText("secret")));
    }

    void expectAllAfter(bool wasUpdated) {
        EXPECT_FALSE(wasUpdated);
        fake_.behave();
        fake_.setLocked(false);
        detail::setKeychainFaults(nullptr);
        EXPECT_EQ(fake_.itemCount(), 3U);
        for (const char* key : {"anna", "bert", "carl"}) EXPECT_TRUE(manager_.data(key).has_value()) << key;
    }

    bool update() { return manager_.update("anna", dataFromText("new")); }

    KeychainManager manager_ = KeychainManager::with([](KeychainSettings& settings) {
        settings.service = serviceName;
        settings.synchronizable = false;
        settings.accessibility = Accessibility::unlocked({.thisDeviceOnly = false});
    });
};

} // namespace

TEST_F(KeychainManagerOnTheKeyringTest, UpdateThatIsRefusedOnceLosesNothing) {
    fake_.fail("SetSecret", "org.freedesktop.DBus.Error.AccessDenied");
    expectAllAfter(update());
}

TEST_F(KeychainManagerOnTheKeyringTest, UpdateOfALockedKeyringLosesNothing) {
    fake_.setLocked(true);
    expectAllAfter(update());
}

TEST_F(KeychainManagerOnTheKeyringTest, UpdateThatIsNotAnsweredLosesNothing) {
    fake_.ignore("SetSecret");
    expectAllAfter(update());
}

TEST_F(KeychainManagerOnTheKeyringTest, UpdateDuringWhichTheServiceDiesLosesNothing) {
    fake_.dieAt("SetSecret", false);
    const bool wasUpdated = update();
    fake_.connect();
    expectAllAfter(wasUpdated);
}

TEST_F(KeychainManagerOnTheKeyringTest, UpdateThatFindsNoAnswerAtFirstLosesNothing) {
    fake_.fail("SearchItems", "org.freedesktop.DBus.Error.NoReply", 3);
    expectAllAfter(update());
}

} // namespace vorlan::tests
