// SPDX-License-Identifier: Apache-2.0

// What the embedded store's files tell: nothing in clear, and nothing that somebody changed without its key.

#include "tests/platform/security/embedded/EmbeddedKeychain.h"
#include "tests/platform/security/embedded/RawDatabase.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace vorlan;
using tests::EmbeddedKeychain;
using tests::RawDatabase;
using tests::Secret;

namespace fs = std::filesystem;

namespace {

void expectNoneInClear(const fs::path& folder, const std::vector<std::string>& texts) {
    int files = 0;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const auto content = tests::contentOf(entry.path());
        for (const auto& text : texts)
            EXPECT_EQ(content.find(text), std::string::npos) << text << " in " << entry.path();
        ++files;
    }
    EXPECT_GE(files, 3);
}

std::vector<std::string> columnsOf(const fs::path& file) {
    RawDatabase database(file);
    std::vector<std::string> names;
    const auto count = std::stoi("0" + database.text("SELECT count(*) FROM pragma_table_info('item')"));
    for (int i = 0; i < count; ++i)
        names.push_back(
            database.text("SELECT name FROM pragma_table_info('item') WHERE cid = " + std::to_string(i)));
    return names;
}

// Two items, and what somebody who can write the file, but lacks the key, does to it.
class EmbeddedKeychainSealing : public ::testing::Test {
protected:
    EmbeddedKeychainSealing() {
        EXPECT_EQ(keychain_.add("anna", "annas secret"), errSecSuccess);
        EXPECT_EQ(keychain_.add("bert", "berts secret"), errSecSuccess);
        keychain_.close();
    }

    void tamper(const std::string& statements) {
        keychain_.close();
        RawDatabase database(keychain_.database());
        ASSERT_TRUE(database.execute(statements)) << database.message();
        ASSERT_GT(database.changes(), 0);
    }

    // All rows anew: a unique index allows no two to be equal in between.
    void swap(const std::string& column) {
        const auto others = "(SELECT " + column + " FROM former WHERE former.ref != changed.ref)";
        tamper(
            "CREATE TEMP TABLE former AS SELECT * FROM item; CREATE TEMP TABLE changed AS SELECT * FROM item;"
            "DELETE FROM item; UPDATE changed SET " +
            column + " = " + others + "; INSERT INTO item SELECT * FROM changed;");
        keychain_.reopen();
    }

    EmbeddedKeychain keychain_;
};

} // namespace

TEST_F(EmbeddedKeychainSealing, FilesShowNeitherSecretsNorNames) {
    keychain_.reopen();
    const Value::Dictionary names{{kSecAttrAccessGroup, "group-in-clear"},
                                  {kSecAttrGeneric, tests::dataOf("generic-in-clear")},
                                  {kSecAttrLabel, "label-in-clear"}};
    ASSERT_EQ(keychain_.add("account-in-clear", "secret-in-clear", names), errSecSuccess);
    const std::vector<std::string> texts{"account-in-clear", "secret-in-clear",        "group-in-clear",
                                         "generic-in-clear", "label-in-clear",         "later-in-clear",
                                         "annas secret",     EmbeddedKeychain::service};
    expectNoneInClear(keychain_.folder(), texts);
    ASSERT_EQ(keychain_.update("account-in-clear", "later-in-clear"), errSecSuccess);
    expectNoneInClear(keychain_.folder(), texts);
    ASSERT_EQ(keychain_.remove("account-in-clear"), errSecSuccess);
    expectNoneInClear(keychain_.folder(), texts);
    keychain_.close();
    expectNoneInClear(keychain_.folder(), texts);
}

TEST_F(EmbeddedKeychainSealing, EqualSecretsLookDifferent) {
    keychain_.reopen();
    ASSERT_EQ(keychain_.add("carla", "annas secret"), errSecSuccess);
    keychain_.close();
    RawDatabase database(keychain_.database());
    EXPECT_EQ(database.text("SELECT count(*) FROM item"), "3");
    EXPECT_EQ(database.text("SELECT count(DISTINCT val) FROM item"), "3");
}

TEST_F(EmbeddedKeychainSealing, SwappedValuesAreNoticed) {
    swap("val");
    EXPECT_EQ(keychain_.read("anna"), (Secret{errSecDecode}));
    EXPECT_EQ(keychain_.read("bert"), (Secret{errSecDecode}));
}

TEST_F(EmbeddedKeychainSealing, SwappedNamesAreNoticed) {
    swap("acct");
    EXPECT_EQ(keychain_.read("anna"), (Secret{errSecDecode}));
    EXPECT_EQ(keychain_.read("bert"), (Secret{errSecDecode}));
}

TEST_F(EmbeddedKeychainSealing, ChangedAccessibilityIsNoticed) {
    tamper("UPDATE item SET acc = 'dk'");
    keychain_.reopen();
    EXPECT_EQ(keychain_.read("anna"), (Secret{errSecDecode}));
}

// Whatever column somebody empties, moves or overwrites: no answer is wrong, and none is that there is no such item.
TEST_F(EmbeddedKeychainSealing, EveryChangedColumnIsNoticedOrDoesNoHarm) {
    const tests::FolderCopy copy(keychain_.folder());
    const auto columns = columnsOf(keychain_.database());
    int tried = 0;
    for (const auto& column : columns) {
        const std::vector<std::string> values{"x'00'",
                                              "1",
                                              "'ak'",
                                              "zeroblob(28)",
                                              "''",
                                              "CAST(" + column + " AS TEXT)",
                                              "CAST(" + column + " AS BLOB)"};
        for (const auto& value : values) {
            keychain_.close();
            copy.restore();
            if (!RawDatabase(keychain_.database()).execute("UPDATE item SET " + column + " = " + value))
                continue;
            keychain_.reopen();
            const auto found = keychain_.read("anna");
            SCOPED_TRACE(column + " = " + value);
            EXPECT_NE(found.status, errSecItemNotFound);
            EXPECT_TRUE(found.status != errSecSuccess || found.text == "annas secret") << found;
            ++tried;
        }
    }
    EXPECT_GT(tried, 30);
}

TEST_F(EmbeddedKeychainSealing, ValueThatWasTakenAwayIsNoticed) {
    tamper("UPDATE item SET val = NULL");
    keychain_.reopen();
    EXPECT_EQ(keychain_.read("anna"), (Secret{errSecDecode}));
}

TEST_F(EmbeddedKeychainSealing, UpdateRepairsADamagedValue) {
    tamper("UPDATE item SET val = randomblob(60)");
    keychain_.reopen();
    ASSERT_EQ(keychain_.read("anna"), (Secret{errSecDecode}));
    EXPECT_EQ(keychain_.update("anna", "a new secret"), errSecSuccess);
    EXPECT_EQ(keychain_.read("anna"), (Secret{errSecSuccess, "a new secret"}));
    EXPECT_EQ(keychain_.read("bert"), (Secret{errSecDecode}));
    keychain_.reopen();
    EXPECT_EQ(keychain_.read("anna"), (Secret{errSecSuccess, "a new secret"}));
}

TEST_F(EmbeddedKeychainSealing, DamagedItemCanBeDeletedAndAddedAnew) {
    tamper("UPDATE item SET val = randomblob(60)");
    keychain_.reopen();
    EXPECT_EQ(keychain_.add("anna", "a new secret"), errSecDuplicateItem);
    EXPECT_EQ(keychain_.remove("anna"), errSecSuccess);
    EXPECT_EQ(keychain_.add("anna", "a new secret"), errSecSuccess);
    EXPECT_EQ(keychain_.read("anna"), (Secret{errSecSuccess, "a new secret"}));
}

TEST_F(EmbeddedKeychainSealing, DamagedItemDoesNotHideTheOthers) {
    tamper("UPDATE item SET val = randomblob(60) WHERE ref = (SELECT min(ref) FROM item)");
    keychain_.reopen();
    int right = 0;
    for (const std::string name : {"anna", "bert"})
        right += keychain_.read(name) == Secret{errSecSuccess, name + "s secret"} ? 1 : 0;
    EXPECT_EQ(right, 1);
    EXPECT_EQ(keychain_.read("never stored"), (Secret{errSecItemNotFound}));
}
