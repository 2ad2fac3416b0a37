// SPDX-License-Identifier: Apache-2.0
#include "platform/localization/LocalizedTables.h"

#include "tests/platform/defaults/ReportedProblems.h"
#include "tests/platform/localization/TableBytes.h"
#include "tests/platform/localization/TableTree.h"

#include <gtest/gtest.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>

using namespace vorlan;
using tests::ReportedProblems;
using tests::xmlDictionary;
using tests::xmlList;
using tests::xmlPlural;
using tests::xmlVariable;
namespace fs = std::filesystem;

namespace {

// While it lives, this thread may only read what others may; the tree is one that they may look into.
class OrdinaryUser {
public:
    explicit OrdinaryUser(const tests::TableTree& tree) {
        for (auto folder = tree.folder("de"); folder != tree.home().parent_path();
             folder = folder.parent_path())
            fs::permissions(folder, fs::perms::group_exec | fs::perms::others_exec, fs::perm_options::add);
        if (geteuid() == 0) setfsuid(nobody);
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser() { setfsuid(geteuid()); }

private:
    static constexpr uid_t nobody = 65534;
};

class LocalizedTablesTest : public ::testing::Test {
protected:
    // The text of "k" as it is now, "none" where the table has none, and "no folder" where there is none.
    std::string text(const std::string& language = "de", std::string_view table = {},
                     std::string_view key = "k") const {
        recheckLocalizedTables();
        return textKnown(language, table, key);
    }

    // The same by what is known already.
    std::string textKnown(const std::string& language = "de", std::string_view table = {},
                          std::string_view key = "k") const {
        std::string text = "no folder";
        const bool isFound = useLocalizedEntry(
            {tree_.resources().native(), language, table}, key,
            [&](const StringTableEntry* entry) { text = entry != nullptr ? entry->text : "none"; });
        EXPECT_EQ(isFound, text != "no folder");
        return text;
    }

    void put(const std::string& text, const std::string& language = "de") const {
        tree_.put(language, "Localizable.strings", "k = " + text + ";");
    }

    fs::path file() const { return tree_.folder("de") / "Localizable.strings"; }

    tests::TableTree tree_;
    ReportedProblems problems_;
};

} // namespace

TEST_F(LocalizedTablesTest, TextIsThatOfTheLanguageElseThatOfBase) {
    EXPECT_EQ(text(), "no folder");
    put("base", "Base");
    EXPECT_EQ(text(), "base");
    EXPECT_EQ(text(""), "base");
    put("german");
    EXPECT_EQ(text(), "german");
    EXPECT_EQ(text("fr"), "base");
    EXPECT_EQ(text("de", "", "other"), "none");
    fs::remove(file());
    EXPECT_EQ(text(), "none") << "a folder without the table does not give way to that of Base";
}

TEST_F(LocalizedTablesTest, TablesAreFilesOfTheirName) {
    put("german");
    tree_.put("de", "Menu.strings", "k = menu;");
    EXPECT_EQ(text("de", "Menu"), "menu");
    EXPECT_EQ(text("de", "Localizable"), "german");
    EXPECT_EQ(text("de", "menu"), "none");
}

TEST_F(LocalizedTablesTest, FoldersAreThoseOfResourcesWhereThereIsSuchAFolder) {
    put("german");
    std::string found;
    const auto find = [&] {
        recheckLocalizedTables();
        useLocalizedEntry({tree_.bundle().native(), "de", ""}, "k", [&](const StringTableEntry* entry) {
            found = entry != nullptr ? entry->text : "none";
        });
        return found;
    };
    EXPECT_EQ(find(), "german");
    fs::rename(tree_.resources(), tree_.bundle() / "former");
    fs::create_directories(tree_.bundle() / "de.lproj");
    EXPECT_EQ(find(), "none");
    fs::rename(tree_.bundle() / "former/de.lproj/Localizable.strings",
               tree_.bundle() / "de.lproj/Localizable.strings");
    EXPECT_EQ(find(), "german");
}

TEST_F(LocalizedTablesTest, NamesLeadNowhereElse) {
    put("german");
    tree_.put("", "Localizable.strings", "k = outside;");
    fs::create_directories(tree_.resources() / "x.lproj/.lproj");
    for (const std::string language : {"../Resources/de", "x/../de", "/", "x/"})
        EXPECT_EQ(text(language), "no folder") << language;
    EXPECT_EQ(text(std::string("de\0", 3)), "no folder");
    EXPECT_EQ(text(std::string(300, 'a')), "no folder");
    for (const auto* table : {"../Localizable", "../de.lproj/Localizable", "/", ".."})
        EXPECT_EQ(text("de", table), "none") << table;
    EXPECT_EQ(text("de", std::string_view("Localizable\0", 12)), "none");
    EXPECT_EQ(text("de", std::string(300, 'a')), "none");
    EXPECT_EQ(problems_.count(), 0U);
}

TEST_F(LocalizedTablesTest, PluralFormsGoBeforeOtherTexts) {
    put("german");
    tree_.put("de", "Localizable.stringsdict",
              xmlList(xmlDictionary({{"k", xmlPlural("%#@n@", {{"n", xmlVariable({{"other", "x"}})}})}})));
    EXPECT_EQ(text(), "%#@n@");
    fs::remove(tree_.folder("de") / "Localizable.stringsdict");
    EXPECT_EQ(text(), "german");
}

TEST_F(LocalizedTablesTest, ChangesOfFilesAreSeen) {
    put("first");
    EXPECT_EQ(text(), "first");
    put("second");
    EXPECT_EQ(text(), "second");
    fs::remove(file());
    EXPECT_EQ(text(), "none");
    put("third");
    EXPECT_EQ(text(), "third");
    fs::remove_all(tree_.folder("de"));
    EXPECT_EQ(text(), "no folder");
    put("fourth");
    EXPECT_EQ(text(), "fourth");
    tree_.put("other", "Localizable.strings", "k = fifth;");
    fs::rename(tree_.folder("de"), tree_.folder("former"));
    fs::rename(tree_.folder("other"), tree_.folder("de"));
    EXPECT_EQ(text(), "fifth");
    EXPECT_EQ(problems_.count(), 0U);
}

// Written over in place within a tick of the file system's clock, with the same size.
TEST_F(LocalizedTablesTest, ChangesThatLeaveNoTraceAreSeenWhileTheFileIsYoung) {
    put("0");
    EXPECT_EQ(text(), "0");
    for (int i = 0; i < 50; ++i) {
        const auto next = std::to_string(i % 10);
        tests::writeText(file(), "k = " + next + ";");
        ASSERT_EQ(text(), next);
    }
}

// On a machine that stood still for longer than files are left alone, a try says nothing.
TEST_F(LocalizedTablesTest, FilesAreNotLookedAtAgainAtOnce) {
    bool hasTold = false;
    for (int i = 0; i < 100 && !hasTold; ++i) {
        put("first");
        const auto before = std::chrono::steady_clock::now();
        EXPECT_EQ(text(), "first");
        put("second");
        const auto known = textKnown();
        hasTold = std::chrono::steady_clock::now() - before < std::chrono::milliseconds(50);
        if (hasTold) {
            EXPECT_EQ(known, "first");
        }
    }
    EXPECT_TRUE(hasTold);
}

TEST_F(LocalizedTablesTest, ChangesAreSeenByThemselvesSoonAfter) {
    put("first");
    EXPECT_EQ(textKnown(), "first");
    put("second");
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (textKnown() != "second" && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
    EXPECT_EQ(textKnown(), "second");
}

TEST_F(LocalizedTablesTest, BrokenFileKeepsTheFormerTextsAndIsReportedOncePerVersion) {
    put("first");
    EXPECT_EQ(text(), "first");
    tree_.put("de", "Localizable.strings", "k = second;\nl = ;");
    for (int i = 0; i < 3; ++i) EXPECT_EQ(text(), "first");
    ASSERT_EQ(problems_.count(), 1U);
    EXPECT_EQ(problems_.take(), "VorlanFoundation/Bundle: cannot use " + file().native() +
                                    ": line 2, column 5: expected a text, found ';'");
    tree_.put("de", "Localizable.strings", xmlList("<array/>"));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(text(), "first");
    ASSERT_EQ(problems_.count(), 1U);
    EXPECT_EQ(problems_.take(),
              "VorlanFoundation/Bundle: cannot use " + file().native() + ": it is no dictionary");
    put("third");
    EXPECT_EQ(text(), "third");
    EXPECT_EQ(problems_.count(), 0U);
}

TEST_F(LocalizedTablesTest, FileThatWasBrokenFromTheFirstIsEmpty) {
    put("= broken");
    EXPECT_EQ(text(), "none");
    EXPECT_EQ(text(), "none");
    EXPECT_EQ(problems_.count(), 1U);
}

TEST_F(LocalizedTablesTest, BrokenPluralFormsLeaveTheOtherTexts) {
    put("german");
    tree_.put("de", "Localizable.stringsdict", "nonsense");
    EXPECT_EQ(text(), "german");
    ASSERT_EQ(problems_.count(), 1U);
    EXPECT_TRUE(problems_.take().ends_with("Localizable.stringsdict: it is no property list"));
}

TEST_F(LocalizedTablesTest, WhatIsNoFileIsReportedAndDoesNotMakeTheCallerWait) {
    fs::create_directories(file());
    EXPECT_EQ(text(), "none");
    ASSERT_EQ(problems_.count(), 1U);
    EXPECT_TRUE(problems_.take().ends_with(": Is a directory"));
    fs::remove(file());
    ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
    EXPECT_EQ(text(), "none");
    EXPECT_EQ(text(), "none");
    EXPECT_EQ(problems_.count(), 1U);
}

TEST_F(LocalizedTablesTest, FileThatIsTooLargeIsReportedWithoutReadingIt) {
    put("first");
    EXPECT_EQ(text(), "first");
    fs::resize_file(file(), std::uintmax_t{1} << 40U); // takes no room
    EXPECT_EQ(text(), "first");
    ASSERT_EQ(problems_.count(), 1U);
    EXPECT_TRUE(problems_.take().ends_with(": it is larger than any table"));
}

TEST_F(LocalizedTablesTest, FileThatMayNotBeReadKeepsTheFormerTexts) {
    put("first");
    EXPECT_EQ(text(), "first");
    fs::permissions(file(), fs::perms::none);
    {
        const OrdinaryUser user(tree_); // as root may read everything
        for (int i = 0; i < 3; ++i) EXPECT_EQ(text(), "first");
    }
    ASSERT_EQ(problems_.count(), 1U);
    EXPECT_TRUE(problems_.take().ends_with(": Permission denied"));
    fs::permissions(file(), fs::perms::owner_read);
    EXPECT_EQ(text(), "first");
    EXPECT_EQ(problems_.count(), 0U);
}

TEST_F(LocalizedTablesTest, WhatKeepsAFileFromBeingReadMayPassWithoutAChangeOfTheFile) {
    put("first");
    fs::permissions(file(), fs::perms::none);
    {
        const OrdinaryUser user(tree_);
        for (int i = 0; i < 3; ++i) EXPECT_EQ(text(), "none");
    }
    ASSERT_EQ(problems_.count(), 1U);
    EXPECT_TRUE(problems_.take().ends_with(": Permission denied"));
    // An ordinary user is not let in but by such a change.
    if (geteuid() != 0) fs::permissions(file(), fs::perms::owner_read);
    EXPECT_EQ(text(), "first");
    EXPECT_EQ(problems_.count(), 0U);
}

TEST_F(LocalizedTablesTest, LinksThatLeadNowhereAreNotThere) {
    fs::create_directories(tree_.folder("de"));
    fs::create_symlink("missing", file());
    EXPECT_EQ(text(), "none");
    fs::create_directory_symlink("de.lproj", tree_.folder("nl"));
    tests::writeText(tree_.folder("de") / "missing", "k = linked;");
    EXPECT_EQ(text("nl"), "linked");
    EXPECT_EQ(problems_.count(), 0U);
    fs::create_symlink("Loop.strings", tree_.folder("de") / "Loop.strings");
    EXPECT_EQ(text("de", "Loop"), "none");
    EXPECT_EQ(problems_.count(), 1U);
}

TEST_F(LocalizedTablesTest, UseMayLookUpMore) {
    put("first");
    put("french", "fr");
    EXPECT_EQ(text(), "first");
    useLocalizedEntry({tree_.resources().native(), "de", ""}, "k", [&](const StringTableEntry* outer) {
        put("second");
        EXPECT_EQ(text("fr"), "french");
        EXPECT_EQ(text(), "second");
        for (int i = 0; i < 600; ++i) EXPECT_EQ(text("de", "table" + std::to_string(i)), "none");
        EXPECT_EQ(outer->text, "first") << "what is used stays until that returns";
    });
    EXPECT_EQ(text(), "second");
}

TEST_F(LocalizedTablesTest, ExceptionOfUsePassesAndLeavesNothingBehind) {
    put("first");
    EXPECT_THROW(useLocalizedEntry({tree_.resources().native(), "de", ""}, "k",
                                   [](const StringTableEntry*) { throw std::runtime_error("stop"); }),
                 std::runtime_error);
    put("second");
    EXPECT_EQ(text(), "second");
}

TEST_F(LocalizedTablesTest, ProblemHandlerMayLookUp) {
    put("first");
    std::string seen;
    setProblemHandler([&](std::string_view, std::string_view) { seen = textKnown(); });
    put("= broken", "fr");
    EXPECT_EQ(text("fr"), "none");
    EXPECT_EQ(seen, "first");
    put("= broken");
    EXPECT_EQ(text(), "first");
    EXPECT_EQ(seen, "first");
}

TEST_F(LocalizedTablesTest, ManyTablesMayBeUsedByTurns) {
    for (int i = 0; i < 3; ++i)
        tree_.put("de", "t" + std::to_string(i * 299) + ".strings", "k = " + std::to_string(i) + ";");
    for (int round = 0; round < 2; ++round)
        for (int i = 0; i < 600; ++i)
            ASSERT_EQ(textKnown("de", "t" + std::to_string(i)),
                      i % 299 == 0 ? std::to_string(i / 299) : "none");
    tree_.put("de", "t0.strings", "k = new;");
    EXPECT_EQ(text("de", "t0"), "new");
}

namespace {

// Looks up a text when its thread ends, after what the library keeps for the thread is gone.
struct LastWords {
    ~LastWords() {
        useLocalizedEntry({*resources, "de", ""}, "k", [this](const StringTableEntry* entry) {
            *text = entry != nullptr ? entry->text : "none";
        });
    }
    const std::string* resources = nullptr;
    std::string* text = nullptr;
};

} // namespace

TEST_F(LocalizedTablesTest, TextsAreFoundUntilTheVeryEndOfAThread) {
    put("first");
    const auto resources = tree_.resources().native();
    std::string text;
    std::thread([&] {
        thread_local LastWords words;
        words.resources = &resources;
        words.text = &text;
        EXPECT_EQ(textKnown(), "first"); // makes what the thread keeps, which goes before the words
    }).join();
    EXPECT_EQ(text, "first");
}
