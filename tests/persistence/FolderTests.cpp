// SPDX-License-Identifier: Apache-2.0

// The folders of an application, asked for by one with an identifier and by one without.

#include <VorlanFoundation/Persistence/Folder.h>

#include "tests/extensions/BundledHost.h"
#include "tests/logging/LogCase.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace vorlan;
using tests::BundledHost;
using tests::linesOf;
using tests::textElement;
namespace fs = std::filesystem;

namespace {

constexpr auto identifier = "com.example.notes";

class FolderTest : public tests::LogCase {
protected:
    void SetUp() override {
        host_.write(
            {{"CFBundleIdentifier", textElement(identifier)}, {"CFBundleName", textElement("Notes")}});
    }

    const BundledHost& host() const { return host_; }
    fs::path data() const { return home() / ".local/share"; }
    static std::string urlOf(const fs::path& path) { return FileURL(path).description(); }

    // The lines of the log, from behind the application's name.
    std::vector<std::string> logged() const {
        std::vector<std::string> texts;
        for (const auto& line : linesOf(text())) {
            const auto name = line.find(" Notes] ");
            texts.push_back(name == 26 ? line.substr(name + 8) : "no prefix: " + line);
        }
        return texts;
    }

private:
    BundledHost host_{home() / "application", tests::Layout::beside};
};

} // namespace

TEST_F(FolderTest, ApplicationsFolderIsNamedByItsIdentifierAndMade) {
    EXPECT_EQ(host().ask("applicationDataDirectory"), urlOf(data() / identifier));
    EXPECT_TRUE(fs::is_directory(data() / identifier));
    EXPECT_EQ(fs::status(data() / identifier).permissions(), fs::perms::owner_all);
    EXPECT_FALSE(fs::exists(file())) << "the log is off";
}

TEST_F(FolderTest, EachReadLogsThatItWasMade) {
    const auto outcome = host().run({"makeLogging", "applicationDataDirectory", "applicationDataDirectory"});
    EXPECT_EQ(outcome.status, 0);
    const auto line = "[Folder] Successfully create directory at path: " + urlOf(data() / identifier);
    EXPECT_EQ(logged(), (std::vector<std::string>{line, line}));
}

TEST_F(FolderTest, FilesInTheFolderAreKept) {
    fs::create_directories(data() / identifier);
    tests::writeText(data() / identifier / "library.db", "books");
    EXPECT_EQ(host().ask("applicationDataDirectory"), urlOf(data() / identifier));
    EXPECT_EQ(tests::textOf(data() / identifier / "library.db"), "books");
}

TEST_F(FolderTest, EveryReadMakesTheFolderAnew) {
    host().ask("applicationDataDirectory");
    fs::remove(data() / identifier);
    host().ask("applicationDataDirectory");
    EXPECT_TRUE(fs::is_directory(data() / identifier));
}

TEST_F(FolderTest, FileInItsPlaceIsLoggedAndTheURLReturned) {
    tests::writeText(data() / identifier, "a file");
    const auto outcome = host().run({"makeLogging", "applicationDataDirectory"});
    ASSERT_EQ(outcome.answers.size(), 2U);
    EXPECT_EQ(outcome.answers[1], urlOf(data() / identifier));
    EXPECT_EQ(logged(), (std::vector<std::string>{"[Folder] Cannot create directory at path: " +
                                                  urlOf(data() / identifier)}));
    EXPECT_EQ(tests::textOf(data() / identifier), "a file");
}

TEST_F(FolderTest, URLIsPercentEncodedInTheLog) {
    host().write(
        {{"CFBundleIdentifier", textElement("my own notes")}, {"CFBundleName", textElement("Notes")}});
    host().run({"makeLogging", "applicationDataDirectory"});
    ASSERT_EQ(logged().size(), 1U);
    EXPECT_TRUE(logged()[0].ends_with("/my%20own%20notes")) << logged()[0];
    EXPECT_TRUE(fs::is_directory(data() / "my own notes"));
}

TEST_F(FolderTest, FoldersAboveAreMadeAsWell) {
    fs::remove_all(home() / ".local");
    EXPECT_EQ(host().ask("applicationDataDirectory"), urlOf(data() / identifier));
    EXPECT_TRUE(fs::is_directory(data() / identifier));
}

TEST_F(FolderTest, FolderIsAbsentWithoutAPlaceForApplicationsData) {
    fs::remove_all(data());
    tests::writeText(data(), "a file");
    const auto outcome = host().run({"makeLogging", "applicationDataDirectory"});
    EXPECT_EQ(outcome.answers, (std::vector<std::string>{"ok", "absent"}));
    EXPECT_FALSE(fs::exists(file())) << "nothing is logged";
}

TEST_F(FolderTest, FolderIsAbsentWithoutAnIdentifier) {
    const auto expectAbsent = [this] {
        const auto outcome = host().run({"makeLogging", "applicationDataDirectory"});
        EXPECT_EQ(outcome.answers, (std::vector<std::string>{"ok", "absent"}));
        EXPECT_TRUE(fs::is_empty(data()));
        EXPECT_FALSE(fs::exists(file())) << "nothing is logged";
    };
    host().write({{"CFBundleName", textElement("Notes")}});
    expectAbsent();
    host().write({{"CFBundleIdentifier", "<integer>5</integer>"}});
    expectAbsent();
    fs::remove_all(host().bundle());
    expectAbsent();
}

TEST_F(FolderTest, FolderIsAbsentInThisProgramWhichHasNoIdentifier) {
    Logger::makeLogging(true);
    EXPECT_EQ(Folder::applicationDataDirectory(), std::nullopt);
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(FolderTest, FolderFollowsTheEnvironment) {
    const auto place = home() / "elsewhere/data";
    EXPECT_EQ(host().ask("applicationDataDirectory", {{"XDG_DATA_HOME", place}}), urlOf(place / identifier));
    EXPECT_TRUE(fs::is_directory(place / identifier));
}

TEST_F(FolderTest, DocumentsAreNeitherMadeNorLogged) {
    Logger::makeLogging(true);
    fs::remove_all(folder());
    EXPECT_EQ(Folder::documentsDirectory(), FileURL(folder()));
    EXPECT_FALSE(fs::exists(folder()));
}

TEST_F(FolderTest, DocumentsAreWhereTheUserHasThem) {
    tests::writeText(home() / ".config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/Papers\"\n");
    EXPECT_EQ(Folder::documentsDirectory(), FileURL(home() / "Papers"));
    EXPECT_FALSE(fs::exists(home() / "Papers"));
    fs::remove(home() / ".config/user-dirs.dirs");
    EXPECT_EQ(Folder::documentsDirectory(), FileURL(folder())) << "looked up afresh each time";
}
