// SPDX-License-Identifier: Apache-2.0

// A store whose files are damaged: it answers what is right, or that it cannot; never a wrong value, and never that
// an item is not there which is.

#include "tests/platform/security/embedded/EmbeddedKeychain.h"
#include "tests/platform/security/embedded/RawDatabase.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <random>
#include <string>

using namespace vorlan;
using tests::EmbeddedKeychain;
using tests::FolderCopy;
using tests::RawDatabase;
using tests::Secret;

namespace fs = std::filesystem;

namespace {

constexpr int itemCount = 12;
#ifdef VORLAN_SANITIZED
constexpr int flips = 100;
#else
constexpr int flips = 500;
#endif

std::string accountOf(int number) {
    return "account-" + std::to_string(number);
}

// Of every size: some fill pages of their own.
std::string secretOf(int number) {
    return "secret-" + std::to_string(number) + std::string(number * 600, 'x');
}

void addItems(EmbeddedKeychain& keychain) {
    for (int i = 0; i < itemCount; ++i) ASSERT_EQ(keychain.add(accountOf(i), secretOf(i)), errSecSuccess);
}

// How many items could be read; those that could not failed with something else than not being there. One of them may be
// left out.
int expectNoWrongAnswer(EmbeddedKeychain& keychain, int except = -1) {
    int right = 0;
    for (int i = 0; i < itemCount; ++i) {
        if (i == except) continue;
        const auto found = keychain.read(accountOf(i));
        EXPECT_NE(found.status, errSecItemNotFound) << accountOf(i);
        if (found.status != errSecSuccess) continue;
        EXPECT_EQ(found.text, secretOf(i)) << accountOf(i);
        ++right;
    }
    return right;
}

// The same without an error.
void expectAllItems(EmbeddedKeychain& keychain) {
    for (int i = 0; i < itemCount; ++i)
        EXPECT_EQ(keychain.read(accountOf(i)), (Secret{errSecSuccess, secretOf(i)}));
}

// Flips single bits of the closed store's file, one at a time, `flips` times, and calls `look` with the store opened on
// each. The seed tells which bits, though not what is in the file.
template <class Look>
void flipBits(const Look& look) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    EmbeddedKeychain keychain;
    addItems(keychain);
    keychain.close();
    const FolderCopy copy(keychain.folder());
    const auto& good = copy.content("keychain.db");
    std::uniform_int_distribution<std::size_t> bits(0, 8 * good.size() - 1);
    for (int round = 0; round < flips && !::testing::Test::HasFailure(); ++round) {
        const auto bit = bits(random);
        SCOPED_TRACE("bit " + std::to_string(bit));
        copy.restore();
        auto bad = good;
        bad[bit / 8] = static_cast<char>(bad[bit / 8] ^ (1 << bit % 8));
        tests::overwrite(keychain.database(), bad);
        keychain.reopen();
        look(keychain, static_cast<int>(bit % itemCount));
        keychain.close();
    }
    copy.restore();
    keychain.reopen();
    expectAllItems(keychain);
}

void flipBitsAndRead() {
    int right = 0;
    flipBits([&](EmbeddedKeychain& keychain, int) { right += expectNoWrongAnswer(keychain); });
    EXPECT_GT(right, flips) << "one bit is not the end of all items";
}

// Puts something else in the place of the closed store's file.
class EmbeddedKeychainReplaced : public ::testing::Test {
protected:
    EmbeddedKeychainReplaced() {
        addItems(keychain_);
        keychain_.close();
        copy_.emplace(keychain_.folder());
    }

    // Nothing is found, nothing is said not to be there, and nothing is begun anew in its place.
    void expectRefused(OSStatus status) {
        keychain_.reopen();
        EXPECT_EQ(keychain_.read(accountOf(0)), (Secret{status}));
        EXPECT_EQ(keychain_.read("never stored"), (Secret{status}));
        EXPECT_EQ(keychain_.add("new", "secret"), status);
        EXPECT_EQ(keychain_.update(accountOf(0), "new"), status);
        EXPECT_EQ(keychain_.remove(accountOf(0)), status);
    }

    void expectAllItemsOnceItIsBack() {
        keychain_.close();
        copy_->restore();
        keychain_.reopen();
        expectAllItems(keychain_);
    }

    EmbeddedKeychain keychain_;
    std::optional<FolderCopy> copy_;
};

} // namespace

// Four times the same, as each is a process of its own.
TEST(EmbeddedKeychainDamage, FlippedBitGivesNoWrongValueAndHidesNoItem) {
    flipBitsAndRead();
}

TEST(EmbeddedKeychainDamage, FlippedBitGivesNoWrongValueAndHidesNoItemAgain) {
    flipBitsAndRead();
}

TEST(EmbeddedKeychainDamage, FlippedBitGivesNoWrongValueAndHidesNoItemAThirdTime) {
    flipBitsAndRead();
}

TEST(EmbeddedKeychainDamage, FlippedBitGivesNoWrongValueAndHidesNoItemAFourthTime) {
    flipBitsAndRead();
}

TEST(EmbeddedKeychainDamage, FlippedBitHasNoOtherItemDeleted) {
    int deleted = 0;
    flipBits([&](EmbeddedKeychain& keychain, int number) {
        const auto status = keychain.remove(accountOf(number));
        EXPECT_NE(status, errSecItemNotFound);
        deleted += status == errSecSuccess ? 1 : 0;
        expectNoWrongAnswer(keychain, status == errSecSuccess ? number : -1);
    });
    EXPECT_GT(deleted, flips / 4);
}

TEST(EmbeddedKeychainDamage, FlippedBitHasNoOtherItemChanged) {
    int changed = 0;
    flipBits([&](EmbeddedKeychain& keychain, int number) {
        const auto status = keychain.update(accountOf(number), "newer");
        EXPECT_NE(status, errSecItemNotFound);
        expectNoWrongAnswer(keychain, number);
        if (status != errSecSuccess) return;
        const auto found = keychain.read(accountOf(number));
        EXPECT_TRUE(found.status != errSecSuccess || found.text == "newer") << found;
        ++changed;
    });
    EXPECT_GT(changed, flips / 4);
}

TEST_F(EmbeddedKeychainReplaced, EmptyFileIsNoEmptyStore) {
    tests::overwrite(keychain_.database(), "");
    expectRefused(errSecInvalidKeychain);
    EXPECT_EQ(tests::contentOf(keychain_.database()), "");
    expectAllItemsOnceItIsBack();
}

TEST_F(EmbeddedKeychainReplaced, MissingFileIsNoEmptyStore) {
    fs::remove(keychain_.database());
    keychain_.reopen();
    for (int i = 0; i < itemCount; ++i) {
        const auto found = keychain_.read(accountOf(i));
        EXPECT_NE(found.status, errSecSuccess);
        EXPECT_NE(found.status, errSecItemNotFound);
    }
    expectAllItemsOnceItIsBack();
}

TEST_F(EmbeddedKeychainReplaced, RandomBytesAreRefusedAndLeftAsTheyAre) {
    std::mt19937 random(4711);
    std::string noise(20'000, ' ');
    for (auto& byte : noise) byte = static_cast<char>(random());
    tests::overwrite(keychain_.database(), noise);
    expectRefused(errSecInvalidKeychain);
    EXPECT_EQ(tests::contentOf(keychain_.database()), noise);
    expectAllItemsOnceItIsBack();
}

TEST_F(EmbeddedKeychainReplaced, PartOfTheFileGivesNoWrongValueAndHidesNoItem) {
    const auto good = copy_->content("keychain.db");
    for (std::size_t length = 1; length < good.size(); length += 997) {
        SCOPED_TRACE(std::to_string(length) + " of " + std::to_string(good.size()) + " bytes");
        keychain_.close();
        copy_->restore();
        tests::overwrite(keychain_.database(), good.substr(0, length));
        keychain_.reopen();
        const bool isMissingMuch = length < good.size() / 2;
        EXPECT_LE(expectNoWrongAnswer(keychain_), isMissingMuch ? itemCount - 1 : itemCount);
    }
    expectAllItemsOnceItIsBack();
}

TEST_F(EmbeddedKeychainReplaced, FolderInItsPlaceIsRefused) {
    fs::remove(keychain_.database());
    fs::create_directory(keychain_.database());
    keychain_.reopen();
    const auto status = keychain_.read(accountOf(0)).status;
    EXPECT_NE(status, errSecSuccess);
    EXPECT_NE(status, errSecItemNotFound);
    expectRefused(status);
    expectAllItemsOnceItIsBack();
}

TEST_F(EmbeddedKeychainReplaced, LinkInItsPlaceIsNotFollowed) {
    const auto elsewhere = keychain_.home() / "elsewhere.db";
    fs::rename(keychain_.database(), elsewhere);
    fs::create_symlink(elsewhere, keychain_.database());
    const auto before = tests::contentOf(elsewhere);
    keychain_.reopen();
    const auto status = keychain_.read(accountOf(0)).status;
    EXPECT_NE(status, errSecSuccess);
    EXPECT_NE(status, errSecItemNotFound);
    expectRefused(status);
    EXPECT_EQ(tests::contentOf(elsewhere), before);
    expectAllItemsOnceItIsBack();
}

TEST_F(EmbeddedKeychainReplaced, NewerVersionIsRefusedAndLeftAsItIs) {
    RawDatabase(keychain_.database()).execute("PRAGMA user_version = 1000");
    const auto before = tests::contentOf(keychain_.database());
    expectRefused(errSecInvalidKeychain);
    keychain_.close();
    EXPECT_EQ(tests::contentOf(keychain_.database()), before);
    expectAllItemsOnceItIsBack();
}

TEST_F(EmbeddedKeychainReplaced, AnotherProgramsDatabaseIsRefusedAndLeftAsItIs) {
    fs::remove(keychain_.database());
    tests::overwrite(keychain_.database(), "");
    fs::permissions(keychain_.database(), fs::perms::owner_read | fs::perms::owner_write);
    ASSERT_TRUE(RawDatabase(keychain_.database()).execute("CREATE TABLE notes (text)"));
    const auto before = tests::contentOf(keychain_.database());
    expectRefused(errSecInvalidKeychain);
    keychain_.close();
    EXPECT_EQ(tests::contentOf(keychain_.database()), before);
    expectAllItemsOnceItIsBack();
}

// What was in the journal only is lost with it, as it is when a machine goes back to a former copy.
TEST(EmbeddedKeychainDamage, JournalThatIsLostTakesNoItemsOfBefore) {
    EmbeddedKeychain keychain;
    addItems(keychain);
    keychain.close();
    keychain.reopen();
    ASSERT_EQ(keychain.update(accountOf(0), "newer"), errSecSuccess);
    const FolderCopy whileItIsOpen(keychain.folder());
    keychain.close();
    whileItIsOpen.restore();
    fs::remove(keychain.folder() / "keychain.db-wal");
    fs::remove(keychain.folder() / "keychain.db-shm");
    keychain.reopen();
    EXPECT_EQ(keychain.read(accountOf(0)), (Secret{errSecSuccess, secretOf(0)}));
    EXPECT_EQ(keychain.read(accountOf(1)), (Secret{errSecSuccess, secretOf(1)}));
}

TEST(EmbeddedKeychainDamage, MarkerThatIsLostIsNotGuessed) {
    EmbeddedKeychain keychain(KeychainOptions::Store::automatic);
    KeychainStore::configure({.store = KeychainOptions::Store::embedded});
    ASSERT_EQ(keychain.add("anna", "secret"), errSecSuccess);
    keychain.close();
    fs::remove(keychain.marker());
    keychain.reopen();
    EXPECT_EQ(keychain.read("anna"), (Secret{errSecInvalidKeychain}));
    EXPECT_EQ(keychain.add("bert", "secret"), errSecInvalidKeychain);
    KeychainStore::configure({.store = KeychainOptions::Store::embedded});
    EXPECT_EQ(keychain.read("anna"), (Secret{errSecSuccess, "secret"}))
        << "who says which store it is is believed";
}
