// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/UserCase.h"
#include "tests/platform/security/embedded/KeychainProcess.h"

#include <VorlanFoundation/Testing/InMemoryKeychain.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <set>
#include <thread>

using namespace vorlan;
using namespace vorlan::tests;
namespace fs = std::filesystem;

namespace {

class KeychainChoice : public UserCase {
protected:
    void expectFromAll(OSStatus status) {
        EXPECT_EQ(add("new"), status);
        EXPECT_EQ(find("a"), status);
        EXPECT_EQ(update("a", {{kSecValueData, Data()}}), status);
        EXPECT_EQ(remove("a"), status);
    }
};

} // namespace

TEST_F(KeychainChoice, WhereNothingWasEverAddedNothingIsFoundAndNothingMade) {
    EXPECT_EQ(find("a"), errSecItemNotFound);
    EXPECT_EQ(update("a", {{kSecValueData, Data()}}), errSecItemNotFound);
    EXPECT_EQ(remove("a"), errSecItemNotFound);
    Texts keys;
    EXPECT_EQ(KeychainStore::keys("service", keys), errSecItemNotFound);
    EXPECT_EQ(KeychainStore::current(), Store::automatic);
    EXPECT_FALSE(fs::exists(folder().parent_path()));
    EXPECT_EQ(KeychainStore::description(), "no keychain yet: the first item decides where it is");
}

TEST_F(KeychainChoice, FirstItemOfAUserWithoutAKeyringIsEmbedded) {
    EXPECT_EQ(add("a"), errSecSuccess);
    EXPECT_EQ(KeychainStore::current(), Store::embedded);
    EXPECT_EQ(KeychainStore::description(), "the embedded keychain in " + folder().string());
    EXPECT_NE(contentOf(record()).find("embedded"), std::string::npos);
    EXPECT_TRUE(fs::exists(database()));
    EXPECT_EQ(fs::status(folder()).permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(record()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(KeychainChoice, FirstItemOfAUserWithAReadyKeyringIsInIt) {
    const auto& keyring = startKeyring();
    EXPECT_EQ(find("a"), errSecItemNotFound);
    EXPECT_EQ(add("a"), errSecSuccess);
    EXPECT_EQ(keyring.itemCount(), 1u);
    EXPECT_EQ(KeychainStore::current(), Store::secretService);
    EXPECT_NE(contentOf(record()).find("secretService"), std::string::npos);
    EXPECT_FALSE(fs::exists(database()));
    startAnew();
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_F(KeychainChoice, KeyringThatIsLockedIsNotChosen) {
    auto& keyring = startKeyring();
    keyring.setLocked(true);
    EXPECT_EQ(add("a"), errSecSuccess);
    EXPECT_EQ(KeychainStore::current(), Store::embedded);
    EXPECT_EQ(keyring.itemCount(), 0u);
}

TEST_F(KeychainChoice, KeyringWithoutADefaultCollectionIsNotChosen) {
    auto& keyring = startKeyring();
    keyring.setHasDefault(false);
    EXPECT_EQ(add("a"), errSecSuccess);
    EXPECT_EQ(KeychainStore::current(), Store::embedded);
    EXPECT_EQ(keyring.itemCount(), 0u);
}

TEST_F(KeychainChoice, BusWithoutAKeyringIsNoKeyring) {
    bus_.emplace();
    EXPECT_EQ(add("a"), errSecSuccess);
    EXPECT_EQ(KeychainStore::current(), Store::embedded);
}

TEST_F(KeychainChoice, RecordedKeyringThatIsGoneIsNeverReplaced) {
    auto& keyring = startKeyring();
    EXPECT_EQ(add("a"), errSecSuccess);
    for (const bool isFresh : {false, true}) {
        if (isFresh) startAnew();
        keyring.disconnect();
        expectFromAll(errSecNotAvailable);
        EXPECT_EQ(KeychainStore::current(), Store::secretService);
        keyring.connect();
        EXPECT_EQ(accounts(), Texts{"a"});
    }
    EXPECT_FALSE(fs::exists(database()));
}

TEST_F(KeychainChoice, RecordedKeyringThatIsLockedSaysSo) {
    auto& keyring = startKeyring();
    EXPECT_EQ(add("a"), errSecSuccess);
    for (const bool isHidden : {false, true}) {
        keyring.setHidesLocked(isHidden);
        keyring.setLocked(true);
        startAnew();
        expectFromAll(errSecInteractionNotAllowed);
        EXPECT_EQ(find("none"), errSecInteractionNotAllowed)
            << "not even what is not there is said not to be";
        keyring.setLocked(false);
        EXPECT_EQ(accounts(), Texts{"a"});
    }
    EXPECT_FALSE(fs::exists(database()));
}

TEST_F(KeychainChoice, EmbeddedOnceItStaysSoWhenAKeyringAppears) {
    EXPECT_EQ(add("a"), errSecSuccess);
    const auto& keyring = startKeyring();
    startAnew();
    EXPECT_EQ(add("b"), errSecSuccess);
    EXPECT_EQ(accounts(), (Texts{"a", "b"}));
    EXPECT_EQ(keyring.itemCount(), 0u);
}

TEST_F(KeychainChoice, HostMayChooseTheEmbeddedStoreBesideAKeyring) {
    const auto& keyring = startKeyring();
    startAnew({.store = Store::embedded});
    EXPECT_EQ(add("a"), errSecSuccess);
    EXPECT_EQ(keyring.itemCount(), 0u);
    startAnew();
    EXPECT_EQ(KeychainStore::current(), Store::embedded);
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_F(KeychainChoice, HostThatChoosesAKeyringGetsNoOtherStore) {
    startAnew({.store = Store::secretService});
    EXPECT_EQ(add("a"), errSecNotAvailable);
    EXPECT_FALSE(fs::exists(record()));
    EXPECT_FALSE(fs::exists(database()));
    auto& keyring = startKeyring();
    keyring.setLocked(true);
    startAnew({.store = Store::secretService});
    EXPECT_EQ(add("a"), errSecInteractionNotAllowed);
    EXPECT_FALSE(fs::exists(record()));
    keyring.setLocked(false);
    EXPECT_EQ(add("a"), errSecSuccess);
    startAnew();
    EXPECT_EQ(KeychainStore::current(), Store::secretService);
}

TEST_F(KeychainChoice, ChoiceThatContradictsTheRecordIsRefusedAndReportedOnce) {
    EXPECT_EQ(add("a"), errSecSuccess);
    const auto& keyring = startKeyring();
    startAnew({.store = Store::secretService});
    expectFromAll(errSecNotAvailable);
    expectFromAll(errSecNotAvailable);
    EXPECT_EQ(problems_.count(), 1u);
    EXPECT_EQ(problems_.take(),
              "VorlanFoundation/Keychain: the keychain is to be in the store \"secretService\", but "
              "this user's items are in \"embedded\"");
    EXPECT_EQ(keyring.itemCount(), 0u);
    startAnew();
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_F(KeychainChoice, EmbeddedStoreContradictsARecordedKeyring) {
    startKeyring();
    EXPECT_EQ(add("a"), errSecSuccess);
    startAnew({.store = Store::embedded});
    expectFromAll(errSecNotAvailable);
    EXPECT_FALSE(fs::exists(database()));
}

TEST_F(KeychainChoice, MemoryIsBesideWhatIsRecordedAndStartsEmpty) {
    EXPECT_EQ(add("a"), errSecSuccess);
    startAnew({.store = Store::memory});
    EXPECT_EQ(KeychainStore::current(), Store::memory);
    EXPECT_EQ(KeychainStore::description(), "the keychain in memory");
    EXPECT_EQ(find("a"), errSecItemNotFound);
    EXPECT_EQ(add("b"), errSecSuccess);
    startAnew({.store = Store::memory});
    EXPECT_EQ(accounts(), Texts{});
    startAnew();
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_F(KeychainChoice, EnvironmentChoosesWhereTheHostDoesNot) {
    const auto& keyring = startKeyring();
    const Environment chosen("VORLAN_KEYCHAIN_STORE", "memory");
    startAnew();
    EXPECT_EQ(add("in memory"), errSecSuccess);
    EXPECT_EQ(KeychainStore::current(), Store::memory);
    EXPECT_FALSE(fs::exists(folder()));
    startAnew({.store = Store::embedded});
    EXPECT_EQ(add("embedded"), errSecSuccess);
    EXPECT_EQ(KeychainStore::current(), Store::embedded) << "the host wins";
    EXPECT_EQ(keyring.itemCount(), 0u);
    const Environment contradicting("VORLAN_KEYCHAIN_STORE", "secretService");
    startAnew();
    EXPECT_EQ(find("embedded"), errSecNotAvailable);
}

TEST_F(KeychainChoice, EnvironmentThatSaysNothingOrAutomaticChoosesNothing) {
    const auto& keyring = startKeyring();
    EXPECT_EQ(add("a"), errSecSuccess);
    for (const auto* nothing : {"", "automatic"}) {
        const Environment variable("VORLAN_KEYCHAIN_STORE", nothing);
        startAnew();
        EXPECT_EQ(accounts(), Texts{"a"});
    }
    EXPECT_EQ(keyring.itemCount(), 1u);
}

TEST_F(KeychainChoice, EnvironmentThatNamesNoStoreIsRefusedAndReportedOnce) {
    EXPECT_EQ(add("a"), errSecSuccess);
    std::optional<Environment> variable;
    variable.emplace("VORLAN_KEYCHAIN_STORE", "Embedded");
    startAnew();
    expectFromAll(errSecNotAvailable);
    EXPECT_EQ(problems_.count(), 1u);
    EXPECT_EQ(problems_.take(),
              "VorlanFoundation/Keychain: the environment's VORLAN_KEYCHAIN_STORE names no store");
    variable.reset();
    EXPECT_EQ(find("a"), errSecNotAvailable) << "as long as it is the same process";
    startAnew();
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_F(KeychainChoice, LostRecordBesideItemsIsNotGuessed) {
    EXPECT_EQ(add("a"), errSecSuccess);
    for (const bool isFresh : {false, true}) {
        fs::remove(record());
        if (isFresh) startAnew();
        expectFromAll(errSecInvalidKeychain);
        EXPECT_FALSE(fs::exists(record()));
        EXPECT_GE(problems_.count(), 1u);
        startAnew({.store = Store::embedded});
        EXPECT_EQ(accounts(), Texts{"a"}) << "the host decided";
        EXPECT_EQ(add("b"), errSecSuccess);
        EXPECT_EQ(remove("b"), errSecSuccess);
        startAnew();
        EXPECT_EQ(accounts(), Texts{"a"}) << "and the decision was recorded";
    }
}

TEST_F(KeychainChoice, LostRecordBesideItemsIsNotReplacedByAKeyring) {
    EXPECT_EQ(add("a"), errSecSuccess);
    const auto& keyring = startKeyring();
    fs::remove(record());
    startAnew();
    expectFromAll(errSecInvalidKeychain);
    EXPECT_EQ(keyring.itemCount(), 0u);
}

TEST_F(KeychainChoice, RecordThatIsDamagedOrNewerIsRefusedAndLeftAsItIs) {
    EXPECT_EQ(add("a"), errSecSuccess);
    const auto good = contentOf(record());
    auto newer = good;
    newer.replace(newer.find(" 1\n"), 3, " 2\n");
    auto unknown = good;
    unknown.replace(unknown.find("embedded"), 8, "elsewhere");
    for (const auto& bad :
         {std::string(), std::string("nonsense"), newer, unknown, good.substr(0, good.size() / 2)}) {
        std::ofstream(record(), std::ios::binary) << bad;
        startAnew();
        expectFromAll(errSecInvalidKeychain);
        EXPECT_EQ(contentOf(record()), bad);
    }
    std::ofstream(record(), std::ios::binary) << good;
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_F(KeychainChoice, RecordThatCannotBeReadIsNotTakenForNone) {
    EXPECT_EQ(add("a"), errSecSuccess);
    const auto good = contentOf(record());
    fs::remove(record());
    fs::create_directory(record());
    startAnew();
    EXPECT_NE(find("a"), errSecItemNotFound);
    EXPECT_NE(find("a"), errSecSuccess);
    EXPECT_NE(add("b"), errSecSuccess);
    fs::remove(record());
    std::ofstream(record(), std::ios::binary) << good;
    fs::permissions(record(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_F(KeychainChoice, ChoiceOfAnotherProcessIsSeenAtOnce) {
    EXPECT_EQ(find("a"), errSecItemNotFound);
    KeychainProcess other("automatic");
    EXPECT_EQ(other.ask("add a secret"), "0");
    EXPECT_EQ(KeychainStore::current(), Store::embedded);
    Texts keys;
    EXPECT_EQ(KeychainStore::keys("com.example.vault", keys), errSecSuccess);
    EXPECT_EQ(keys, Texts{"a"});
}

TEST_F(KeychainChoice, FirstItemsOfSeveralThreadsAreInOneStore) {
    startKeyring();
    std::array<OSStatus, 6> statuses{};
    {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < statuses.size(); ++i)
            threads.emplace_back([&, i] { statuses[i] = add(std::to_string(i)); });
    }
    for (const auto status : statuses) EXPECT_EQ(status, errSecSuccess);
    startAnew();
    const auto found = accounts();
    EXPECT_EQ(std::set(found.begin(), found.end()).size(), statuses.size());
    EXPECT_FALSE(fs::exists(database()));
}

TEST_F(KeychainChoice, FolderAndKeyFileMayBeElsewhere) {
    const auto elsewhere = fs::path(std::getenv("HOME")) / "elsewhere";
    const auto keys = fs::path(std::getenv("HOME")) / "keys";
    fs::create_directory(keys);
    fs::permissions(keys, fs::perms::owner_all);
    startAnew({.store = Store::embedded, .folder = elsewhere, .keyFile = keys / "key"});
    EXPECT_EQ(add("a"), errSecSuccess);
    EXPECT_TRUE(fs::exists(elsewhere / "keychain.db"));
    EXPECT_TRUE(fs::exists(elsewhere / "store"));
    EXPECT_TRUE(fs::exists(keys / "key"));
    EXPECT_FALSE(fs::exists(elsewhere / "master.key"));
    EXPECT_FALSE(fs::exists(folder()));
    startAnew({.folder = elsewhere});
    EXPECT_EQ(find("a"), errSecNotAvailable) << "without its key";
    const Environment variable("VORLAN_KEY_FILE", keys / "key");
    startAnew({.folder = elsewhere});
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_F(KeychainChoice, EachHomeHasItsOwn) {
    EXPECT_EQ(add("a"), errSecSuccess);
    {
        const vorlan::testing::TemporaryHome another;
        EXPECT_EQ(find("a"), errSecItemNotFound);
        EXPECT_EQ(KeychainStore::current(), Store::automatic);
    }
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_F(KeychainChoice, ForkedChildIsRefused) {
    EXPECT_EQ(add("a"), errSecSuccess);
    const auto child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        Texts keys;
        const bool isRefused = SecItemCopyMatching(item("a")) == errSecNotAvailable &&
                               SecItemAdd(item("b")) == errSecNotAvailable &&
                               SecItemUpdate(item("a"), {}) == errSecNotAvailable &&
                               SecItemDelete(item("a")) == errSecNotAvailable &&
                               KeychainStore::keys("service", keys) == errSecNotAvailable &&
                               KeychainStore::current() == Store::automatic;
        _exit(isRefused ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST(SecCopyErrorMessageString, EachStatusHasASentenceOfItsOwn) {
    std::set<std::string> sentences;
    const std::vector<OSStatus> all{errSecSuccess,
                                    errSecUnimplemented,
                                    errSecDiskFull,
                                    errSecIO,
                                    errSecParam,
                                    errSecAllocate,
                                    errSecUserCanceled,
                                    errSecNotAvailable,
                                    errSecAuthFailed,
                                    errSecInvalidKeychain,
                                    errSecDuplicateItem,
                                    errSecItemNotFound,
                                    errSecDecode,
                                    errSecInteractionNotAllowed,
                                    errSecMissingEntitlement};
    for (const auto status : all) sentences.insert(SecCopyErrorMessageString(status));
    EXPECT_EQ(sentences.size(), all.size());
    EXPECT_EQ(SecCopyErrorMessageString(errSecItemNotFound), "There is no such item");
    EXPECT_EQ(SecCopyErrorMessageString(-99), "Unknown status -99");
}
