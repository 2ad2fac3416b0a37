// SPDX-License-Identifier: Apache-2.0

// The key of the embedded store: where it is missing, damaged, another store's, or open to others.

#include "tests/platform/security/embedded/EmbeddedKeychain.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

using namespace vorlan;
using tests::EmbeddedKeychain;
using tests::FolderCopy;
using tests::Secret;

namespace fs = std::filesystem;

namespace {

constexpr auto forOwner = fs::perms::owner_read | fs::perms::owner_write;
constexpr auto nobody = 65534;

mode_t modeOf(const fs::path& path) {
    struct stat status{};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

class EmbeddedKeychainKey : public ::testing::Test {
protected:
    EmbeddedKeychainKey() {
        EXPECT_EQ(keychain_.add("anna", "correct horse"), errSecSuccess);
        keychain_.close();
        copy_.emplace(keychain_.folder());
    }

    void expectRefused(OSStatus status) {
        keychain_.reopen();
        EXPECT_EQ(keychain_.read("anna"), (Secret{status}));
        EXPECT_EQ(keychain_.read("never stored"), (Secret{status}));
        EXPECT_EQ(keychain_.add("bert", "battery staple"), status);
        EXPECT_EQ(keychain_.remove("anna"), status);
        keychain_.close();
    }

    void expectItemOnceItIsBack() {
        copy_->restore();
        keychain_.reopen();
        EXPECT_EQ(keychain_.read("anna"), (Secret{errSecSuccess, "correct horse"}));
        EXPECT_EQ(keychain_.read("bert").status, errSecItemNotFound);
    }

    EmbeddedKeychain keychain_;
    std::optional<FolderCopy> copy_;
};

} // namespace

TEST_F(EmbeddedKeychainKey, FilesAreForTheirOwnerOnly) {
    keychain_.reopen();
    ASSERT_EQ(keychain_.update("anna", "battery staple"), errSecSuccess);
    EXPECT_EQ(modeOf(keychain_.folder()), 0700U);
    int files = 0;
    for (const auto& entry : fs::directory_iterator(keychain_.folder())) {
        EXPECT_EQ(modeOf(entry.path()) & 077, 0U) << entry.path();
        ++files;
    }
    EXPECT_GE(files, 3);
}

TEST_F(EmbeddedKeychainKey, MissingKeyIsNotAvailableAndNotMadeAnew) {
    fs::remove(keychain_.key());
    expectRefused(errSecNotAvailable);
    EXPECT_FALSE(fs::exists(keychain_.key()));
    expectItemOnceItIsBack();
}

// Without its database the key is of no use, but a new one would be of less when that comes back.
TEST_F(EmbeddedKeychainKey, LostKeyAndDatabaseAreNoEmptyStore) {
    fs::remove(keychain_.key());
    fs::remove(keychain_.database());
    keychain_.reopen();
    const auto found = keychain_.read("anna");
    EXPECT_NE(found.status, errSecSuccess);
    EXPECT_NE(found.status, errSecItemNotFound);
    keychain_.close();
    expectItemOnceItIsBack();
}

TEST_F(EmbeddedKeychainKey, EveryFlippedBitOfTheKeyIsNoticed) {
    const auto good = copy_->content("master.key");
    for (std::size_t bit = 0; bit < 8 * good.size() && !HasFailure(); bit += 3) {
        SCOPED_TRACE("bit " + std::to_string(bit));
        auto bad = good;
        bad[bit / 8] = static_cast<char>(bad[bit / 8] ^ (1 << bit % 8));
        tests::overwrite(keychain_.key(), bad);
        expectRefused(errSecInvalidKeychain);
    }
    expectItemOnceItIsBack();
}

TEST_F(EmbeddedKeychainKey, KeyOfAnyOtherLengthIsDamaged) {
    const auto good = copy_->content("master.key");
    for (std::size_t length = 0; length < good.size() && !HasFailure(); ++length) {
        SCOPED_TRACE(std::to_string(length) + " bytes");
        tests::overwrite(keychain_.key(), good.substr(0, length));
        expectRefused(errSecInvalidKeychain);
    }
    tests::overwrite(keychain_.key(), good + "x");
    expectRefused(errSecInvalidKeychain);
    expectItemOnceItIsBack();
}

TEST_F(EmbeddedKeychainKey, KeyOfAnotherStoreIsNotAvailable) {
    KeychainStore::configure(
        {.store = KeychainOptions::Store::embedded, .folder = keychain_.home() / "other"});
    ASSERT_EQ(keychain_.add("anna", "another"), errSecSuccess);
    keychain_.close();
    tests::overwrite(keychain_.key(), tests::contentOf(keychain_.home() / "other" / "master.key"));
    expectRefused(errSecNotAvailable);
    expectItemOnceItIsBack();
}

TEST_F(EmbeddedKeychainKey, KeyThatOthersMayReadIsRefused) {
    for (const auto bits : {fs::perms::group_read, fs::perms::others_read, fs::perms::group_write}) {
        fs::permissions(keychain_.key(), forOwner | bits);
        expectRefused(errSecNotAvailable);
    }
    expectItemOnceItIsBack();
}

TEST_F(EmbeddedKeychainKey, KeyThatIsALinkIsRefused) {
    const auto elsewhere = keychain_.home() / "elsewhere.key";
    fs::rename(keychain_.key(), elsewhere);
    fs::create_symlink(elsewhere, keychain_.key());
    expectRefused(errSecNotAvailable);
    expectItemOnceItIsBack();
}

TEST_F(EmbeddedKeychainKey, DatabaseThatOthersMayReadIsRefused) {
    fs::permissions(keychain_.database(), forOwner | fs::perms::group_read);
    expectRefused(errSecNotAvailable);
    expectItemOnceItIsBack();
}

TEST_F(EmbeddedKeychainKey, FolderThatOthersMayUseIsRefused) {
    for (const auto bits : {fs::perms::group_read, fs::perms::group_exec, fs::perms::others_write}) {
        fs::permissions(keychain_.folder(), fs::perms::owner_all | bits);
        expectRefused(errSecNotAvailable);
    }
    fs::permissions(keychain_.folder(), fs::perms::owner_all);
    expectItemOnceItIsBack();
}

TEST_F(EmbeddedKeychainKey, FilesOfAnotherUserAreRefused) {
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser can give files away";
    for (const auto& path : {keychain_.key(), keychain_.database(), keychain_.folder()}) {
        SCOPED_TRACE(path);
        ASSERT_EQ(chown(path.c_str(), nobody, nobody), 0);
        expectRefused(errSecNotAvailable);
        ASSERT_EQ(chown(path.c_str(), 0, 0), 0);
    }
    expectItemOnceItIsBack();
}

TEST_F(EmbeddedKeychainKey, KeyMayBeKeptElsewhere) {
    const auto keys = keychain_.home() / "keys";
    fs::create_directory(keys);
    fs::permissions(keys, fs::perms::owner_all);
    const KeychainOptions options{.store = KeychainOptions::Store::embedded,
                                  .folder = keychain_.home() / "apart",
                                  .keyFile = keys / "vault.key"};
    KeychainStore::configure(options);
    ASSERT_EQ(keychain_.add("anna", "elsewhere"), errSecSuccess);
    EXPECT_TRUE(fs::exists(keys / "vault.key"));
    EXPECT_FALSE(fs::exists(keychain_.home() / "apart" / "master.key"));
    KeychainStore::configure(options);
    EXPECT_EQ(keychain_.read("anna"), (Secret{errSecSuccess, "elsewhere"}));
    KeychainStore::configure({.store = options.store, .folder = options.folder});
    EXPECT_EQ(keychain_.read("anna"), (Secret{errSecNotAvailable})) << "the folder alone tells nothing";
}
