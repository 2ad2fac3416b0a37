// SPDX-License-Identifier: Apache-2.0

// Where an application finds its own bundle.

#include <VorlanFoundation/Platform/Bundle.h>
#include <VorlanFoundation/Platform/FileURL.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/extensions/BundledHost.h"
#include "tests/logging/LogCase.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace vorlan;
using tests::BundledHost;
using tests::Layout;
using tests::textElement;
using tests::writeInfo;
namespace fs = std::filesystem;

namespace {

constexpr auto key = "CFBundleName";

class MainBundleTest : public ::testing::Test {
protected:
    fs::path folder() const { return fs::canonical(home_.path()) / "application"; }

    static std::string urlOf(const fs::path& path) { return FileURL(path).description(); }

    // Which Info.plist a program read, by what it says as a name.
    static std::string nameOf(const fs::path& program) {
        return tests::RunningHost({program.native(), "objectForKey", key}).finish().only();
    }

    static void write(const fs::path& contents, const std::string& name) {
        writeInfo(contents / "Info.plist", {{key, textElement(name)}});
    }

private:
    vorlan::testing::TemporaryHome home_;
};

class MainBundleLayoutTest : public MainBundleTest, public ::testing::WithParamInterface<Layout> {};

INSTANTIATE_TEST_SUITE_P(Each, MainBundleLayoutTest,
                         ::testing::Values(Layout::application, Layout::beside, Layout::prefix));

} // namespace

TEST_P(MainBundleLayoutTest, InformationIsFound) {
    const BundledHost host(folder(), GetParam());
    host.write({{key, textElement("Notes")}});
    const auto outcome = host.run({"objectForKey", key, "bundleURL", "executableURL", "hasInfo", "problems"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.answers,
              (std::vector<std::string>{"Notes", urlOf(host.bundle()), urlOf(host.program()), "true", ""}));
}

TEST_P(MainBundleLayoutTest, FolderWithoutInformationIsNone) {
    const BundledHost host(folder(), GetParam());
    fs::create_directories(host.contents());
    const auto outcome = host.run({"bundleURL", "executableURL", "resourceURL", "hasInfo", "resource", "a",
                                   "txt", "localizations", "objectForKey", key, "problems"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.answers, (std::vector<std::string>{"absent", urlOf(host.program()), "absent", "false",
                                                         "absent", "", "absent", ""}));
}

TEST_P(MainBundleLayoutTest, ResourcesAreFound) {
    const BundledHost host(folder(), GetParam());
    host.write({});
    fs::create_directories(host.contents() / "Resources/de.lproj");
    tests::writeText(host.contents() / "Resources/a.txt", "a");
    tests::writeText(host.contents() / "Resources/de.lproj/b.txt", "b");
    const auto outcome =
        host.run({"resourceURL", "resource", "a", "txt", "resource", "b", "txt", "localizations"},
                 {{"LC_ALL", "de_DE.UTF-8"}, {"LANGUAGE", ""}});
    const auto resources = host.contents() / "Resources";
    EXPECT_EQ(outcome.answers, (std::vector<std::string>{urlOf(resources), urlOf(resources / "a.txt"),
                                                         urlOf(resources / "de.lproj/b.txt"), "de,"}));
}

TEST_P(MainBundleLayoutTest, DamagedInformationIsReportedAndTheApplicationRuns) {
    const BundledHost host(folder(), GetParam());
    fs::create_directories(host.contents());
    tests::writeText(host.contents() / "Info.plist", "nonsense");
    const auto outcome = host.run({"hasInfo", "applicationName", "problems"});
    EXPECT_EQ(outcome.status, 0);
    ASSERT_EQ(outcome.answers.size(), 3U);
    EXPECT_EQ(outcome.answers[0], "false");
    EXPECT_EQ(outcome.answers[1], "");
    EXPECT_TRUE(outcome.answers[2].starts_with("VorlanFoundation/Bundle: ")) << outcome.answers[2];
    EXPECT_NE(outcome.answers[2].find(host.contents() / "Info.plist"), std::string::npos)
        << outcome.answers[2];
}

TEST_P(MainBundleLayoutTest, NamesMayHaveBlanks) {
    const BundledHost host(folder() / "my applications", GetParam(), "my notes");
    host.write({{key, textElement("My Notes")}});
    EXPECT_EQ(nameOf(host.program()), "My Notes");
}

TEST_P(MainBundleLayoutTest, ProgramMayBeStartedThroughALink) {
    const BundledHost host(folder(), GetParam());
    host.write({{key, textElement("Notes")}});
    fs::create_symlink(host.program(), folder() / "link");
    EXPECT_EQ(nameOf(folder() / "link"), "Notes");
}

TEST_P(MainBundleLayoutTest, IdentifierNamesTheStandardStore) {
    const BundledHost host(folder(), GetParam());
    EXPECT_EQ(host.ask("storeName"), "notes");
    host.write({{"CFBundleIdentifier", textElement("com.example.notes")}});
    EXPECT_EQ(host.ask("storeName"), "com.example.notes");
}

TEST_F(MainBundleTest, ApplicationFolderComesFirstThenTheOneBesideThenTheShared) {
    const BundledHost host(folder(), Layout::application);
    const auto bin = host.program().parent_path();
    write(host.contents() / "share/notes", "shared");
    EXPECT_EQ(nameOf(host.program()), "shared");
    write(bin / "notes.resources", "beside");
    EXPECT_EQ(nameOf(host.program()), "beside");
    write(host.contents(), "application");
    EXPECT_EQ(nameOf(host.program()), "application");
}

TEST_F(MainBundleTest, ProgramMayBeAnywhereInTheApplicationFolder) {
    const BundledHost host(folder(), Layout::application);
    write(host.contents(), "application");
    for (const auto* place : {"notes", "Linux/notes", "bin/x86_64/release/notes"}) {
        const auto program = host.contents() / place;
        fs::create_directories(program.parent_path());
        fs::copy_file(host.program(), program);
        EXPECT_EQ(nameOf(program), "application") << place;
    }
}

TEST_F(MainBundleTest, OtherFoldersAreNotTheApplications) {
    const BundledHost host(folder(), Layout::prefix);
    write(folder() / "share/other", "of another program");
    write(folder() / "bin/other.resources", "of another program");
    write(folder() / "bin", "no bundle");
    write(folder(), "no bundle");
    EXPECT_EQ(nameOf(host.program()), "absent");
}

TEST_F(MainBundleTest, SharedFolderIsForProgramsInBinOnly) {
    const BundledHost host(folder(), Layout::prefix);
    write(host.contents(), "shared");
    fs::create_directory(folder() / "sbin");
    fs::copy_file(host.program(), folder() / "sbin/notes");
    EXPECT_EQ(nameOf(host.program()), "shared");
    EXPECT_EQ(nameOf(folder() / "sbin/notes"), "absent");
}

TEST_F(MainBundleTest, MainIsTheSameEveryTime) {
    EXPECT_EQ(&Bundle::main(), &Bundle::main());
    EXPECT_EQ(Bundle::main().executableURL()->path(), fs::read_symlink("/proc/self/exe"));
}
