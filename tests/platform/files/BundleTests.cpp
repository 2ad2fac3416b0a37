// SPDX-License-Identifier: Apache-2.0

// Bundles by their folder.

#include <VorlanFoundation/Platform/Bundle.h>
#include <VorlanFoundation/Platform/UserDefaults.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/extensions/BundledHost.h"
#include "tests/logging/LogCase.h"
#include "tests/platform/defaults/ReportedProblems.h"
#include "tests/platform/files/Environment.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

using namespace vorlan;
using tests::Languages;
using tests::ReportedProblems;
using tests::textElement;
using tests::writeInfo;
using tests::writeText;
namespace fs = std::filesystem;

namespace {

class BundleTest : public ::testing::Test {
protected:
    BundleTest() { fs::create_directory(folder()); }

    fs::path folder() const { return home_.path() / "Plug-in.bundle"; }
    fs::path info() const { return folder() / "Info.plist"; }

    std::shared_ptr<const Bundle> bundle() const {
        auto made = Bundle::atURL(FileURL(folder()));
        EXPECT_NE(made, nullptr);
        return made;
    }

    // Makes a resource, with the folders that it is in.
    void add(const fs::path& resource) const {
        fs::create_directories((folder() / resource).parent_path());
        writeText(folder() / resource, resource.native());
    }

    // Where the resource is found, from the bundle's folder on.
    std::string find(std::string_view name, std::string_view extension) const {
        const auto url = bundle()->URLForResource(name, extension);
        return url ? fs::relative(*url, folder()).native() : "absent";
    }

private:
    vorlan::testing::TemporaryHome home_;
};

} // namespace

TEST_F(BundleTest, ThereIsNoneWithoutAFolder) {
    EXPECT_EQ(Bundle::atURL(FileURL(folder() / "missing")), nullptr);
    writeText(folder() / "file", "text");
    EXPECT_EQ(Bundle::atURL(FileURL(folder() / "file")), nullptr);
}

TEST_F(BundleTest, FolderWithoutInformationIsABundle) {
    const ReportedProblems problems;
    const auto found = bundle();
    EXPECT_EQ(found->infoDictionary(), nullptr);
    EXPECT_EQ(found->bundleIdentifier(), std::nullopt);
    EXPECT_TRUE(found->objectForInfoDictionaryKey("CFBundleName").isNull());
    EXPECT_EQ(found->bundleURL(), FileURL(folder()));
    EXPECT_EQ(found->executableURL(), std::nullopt);
    EXPECT_EQ(problems.count(), 0U);
}

TEST_F(BundleTest, InformationIsReadFromTheFolder) {
    writeInfo(info(),
              {{"CFBundleIdentifier", textElement("com.example.plugin")},
               {"Size", "<integer>-5</integer>"},
               {"Ratio", "<real>1.5</real>"},
               {"IsOn", "<true/>"},
               {"Data", "<data>AQID</data>"},
               {"List", "<array><string>a</string><dict><key>b</key><integer>1</integer></dict></array>"}});
    const auto found = bundle();
    EXPECT_EQ(found->bundleIdentifier(), "com.example.plugin");
    EXPECT_EQ(found->objectForInfoDictionaryKey("Size"), Value(-5));
    EXPECT_EQ(found->objectForInfoDictionaryKey("Ratio"), Value(1.5));
    EXPECT_EQ(found->objectForInfoDictionaryKey("IsOn"), Value(true));
    EXPECT_EQ(found->objectForInfoDictionaryKey("Data"),
              Value(Data{std::byte{1}, std::byte{2}, std::byte{3}}));
    EXPECT_EQ(found->objectForInfoDictionaryKey("List"),
              Value(Value::Array{"a", Value::Dictionary{{"b", 1}}}));
    ASSERT_NE(found->infoDictionary(), nullptr);
    EXPECT_EQ(found->infoDictionary()->size(), 6U);
    EXPECT_TRUE(found->objectForInfoDictionaryKey("size").isNull()) << "keys differ by case";
}

TEST_F(BundleTest, InformationOfAnApplicationFolderIsInItsContents) {
    writeInfo(info(), {{"CFBundleIdentifier", textElement("outside")}});
    writeInfo(folder() / "Contents/Info.plist", {{"CFBundleIdentifier", textElement("inside")}});
    EXPECT_EQ(bundle()->bundleIdentifier(), "inside");
    EXPECT_EQ(bundle()->bundleURL(), FileURL(folder()));
}

TEST_F(BundleTest, FolderNamedContentsWithoutInformationIsAnyFolder) {
    fs::create_directory(folder() / "Contents");
    writeInfo(info(), {{"CFBundleIdentifier", textElement("outside")}});
    EXPECT_EQ(bundle()->bundleIdentifier(), "outside");
}

TEST_F(BundleTest, InformationMayBeInBinaryForm) {
    const UserDefaults store("com.example.template");
    const_cast<UserDefaults&>(store).setObject("com.example.binary", "CFBundleIdentifier"); // NOLINT
    ASSERT_TRUE(store.synchronize());
    fs::copy_file(store.fileURL(), info());
    EXPECT_EQ(bundle()->bundleIdentifier(), "com.example.binary");
}

TEST_F(BundleTest, IdentifierThatIsNoTextIsAbsent) {
    writeInfo(info(), {{"CFBundleIdentifier", "<integer>5</integer>"}});
    EXPECT_EQ(bundle()->bundleIdentifier(), std::nullopt);
    EXPECT_NE(bundle()->infoDictionary(), nullptr);
}

TEST_F(BundleTest, EmptyInformationIsNotMissing) {
    writeInfo(info(), {});
    ASSERT_NE(bundle()->infoDictionary(), nullptr);
    EXPECT_TRUE(bundle()->infoDictionary()->empty());
}

TEST_F(BundleTest, DamagedInformationIsReportedAndCountsAsMissing) {
    for (const std::string text :
         {"", "nonsense", "<plist", "<plist version=\"1.0\"><dict><key>a</key>", "<html></html>",
          "<plist version=\"1.0\"><array/></plist>", "<plist version=\"1.0\"><string>a</string></plist>",
          "bplist00", "bplist00 and then nonsense that goes on for a while, which is no table"}) {
        writeText(info(), text);
        ReportedProblems problems;
        const auto found = bundle();
        EXPECT_EQ(found->infoDictionary(), nullptr) << text;
        EXPECT_EQ(found->bundleIdentifier(), std::nullopt) << text;
        ASSERT_EQ(problems.count(), 1U) << text;
        const auto problem = problems.take();
        EXPECT_TRUE(problem.starts_with("VorlanFoundation/Bundle: ")) << problem;
        EXPECT_NE(problem.find(info().native()), std::string::npos) << problem;
    }
}

TEST_F(BundleTest, InformationThatIsNoFileIsReported) {
    fs::create_directory(info());
    const ReportedProblems problems;
    EXPECT_EQ(bundle()->infoDictionary(), nullptr);
    EXPECT_EQ(problems.count(), 1U);
}

// A pipe that nobody writes would keep whoever reads it waiting.
TEST_F(BundleTest, InformationThatIsAPipeDoesNotMakeTheCallerWait) {
    ASSERT_EQ(mkfifo(info().c_str(), 0600), 0);
    const ReportedProblems problems;
    EXPECT_EQ(bundle()->infoDictionary(), nullptr);
    EXPECT_EQ(problems.count(), 1U);
}

TEST_F(BundleTest, ChangesOfTheFileAreNotSeen) {
    writeInfo(info(), {{"CFBundleName", textElement("before")}});
    const auto found = bundle();
    writeInfo(info(), {{"CFBundleName", textElement("after")}});
    EXPECT_EQ(found->objectForInfoDictionaryKey("CFBundleName"), Value("before"));
    EXPECT_EQ(bundle()->objectForInfoDictionaryKey("CFBundleName"), Value("after"));
}

TEST_F(BundleTest, ResourcesAreInTheFolderOfThatName) {
    EXPECT_EQ(bundle()->resourceURL(), FileURL(folder()));
    fs::create_directory(folder() / "Resources");
    EXPECT_EQ(bundle()->resourceURL(), FileURL(folder() / "Resources"));
    writeInfo(folder() / "Contents/Info.plist", {});
    EXPECT_EQ(bundle()->resourceURL(), FileURL(folder() / "Contents"));
    fs::create_directory(folder() / "Contents/Resources");
    EXPECT_EQ(bundle()->resourceURL(), FileURL(folder() / "Contents/Resources"));
}

TEST_F(BundleTest, ResourceIsFoundByNameAndExtension) {
    const Languages none("C");
    add("Resources/welcome.html");
    add("Resources/README");
    add("Resources/my picture.v2.png");
    EXPECT_EQ(find("welcome", "html"), "Resources/welcome.html");
    EXPECT_EQ(find("README", ""), "Resources/README");
    EXPECT_EQ(find("my picture.v2", "png"), "Resources/my picture.v2.png");
    EXPECT_EQ(find("welcome.html", ""), "Resources/welcome.html");
    EXPECT_EQ(find("welcome", "txt"), "absent");
    EXPECT_EQ(find("Welcome", "html"), "absent") << "names differ by case";
    EXPECT_EQ(find("html", ""), "absent");
}

TEST_F(BundleTest, ResourceOutsideOfTheResourcesIsNotFound) {
    const Languages none("C");
    add("welcome.html");
    EXPECT_EQ(find("welcome", "html"), "welcome.html");
    fs::create_directory(folder() / "Resources");
    EXPECT_EQ(find("welcome", "html"), "absent");
}

TEST_F(BundleTest, ResourceOfTheUsersLanguageComesFirst) {
    add("Resources/welcome.html");
    add("Resources/de.lproj/welcome.html");
    add("Resources/fr.lproj/welcome.html");
    add("Resources/Base.lproj/welcome.html");
    const auto findIn = [this](const std::string& lang, const std::string& language = "") {
        const Languages user(lang, language);
        return find("welcome", "html");
    };
    EXPECT_EQ(findIn("de_CH.UTF-8"), "Resources/de.lproj/welcome.html");
    EXPECT_EQ(findIn("fr_FR"), "Resources/fr.lproj/welcome.html");
    EXPECT_EQ(findIn("it_IT"), "Resources/welcome.html");
    EXPECT_EQ(findIn("it_IT", "pt:fr:de"), "Resources/fr.lproj/welcome.html");
    EXPECT_EQ(findIn("de_DE", "fr"), "Resources/fr.lproj/welcome.html");
    EXPECT_EQ(findIn("C", "fr"), "Resources/welcome.html");
}

TEST_F(BundleTest, VariableForAllCategoriesComesBeforeTheOthers) {
    add("Resources/de.lproj/welcome.html");
    add("Resources/fr.lproj/welcome.html");
    add("Resources/it.lproj/welcome.html");
    const Languages user("de_DE");
    EXPECT_EQ(find("welcome", "html"), "Resources/de.lproj/welcome.html");
    const Languages messages(tests::Environment::Variables{{"LC_MESSAGES", "it_IT"}});
    EXPECT_EQ(find("welcome", "html"), "Resources/it.lproj/welcome.html");
    const Languages all(tests::Environment::Variables{{"LC_ALL", "fr_FR"}});
    EXPECT_EQ(find("welcome", "html"), "Resources/fr.lproj/welcome.html");
}

TEST_F(BundleTest, ResourceOfTheRegionComesBeforeThatOfTheLanguage) {
    add("Resources/de.lproj/a.txt");
    add("Resources/de_CH.lproj/a.txt");
    add("Resources/pt.lproj/a.txt");
    add("Resources/pt-BR.lproj/a.txt");
    const auto findIn = [this](const std::string& lang) {
        const Languages user(lang);
        return find("a", "txt");
    };
    EXPECT_EQ(findIn("de_CH.UTF-8"), "Resources/de_CH.lproj/a.txt");
    EXPECT_EQ(findIn("de_AT.UTF-8"), "Resources/de.lproj/a.txt");
    EXPECT_EQ(findIn("pt_BR.UTF-8"), "Resources/pt-BR.lproj/a.txt");
    EXPECT_EQ(findIn("pt_PT.UTF-8"), "Resources/pt.lproj/a.txt");
}

TEST_F(BundleTest, EachResourceIsLookedForOnItsOwn) {
    add("Resources/de.lproj/only-german.txt");
    add("Resources/fr.lproj/only-french.txt");
    const Languages user("en_GB", "de:fr");
    EXPECT_EQ(find("only-german", "txt"), "Resources/de.lproj/only-german.txt");
    EXPECT_EQ(find("only-french", "txt"), "Resources/fr.lproj/only-french.txt");
}

TEST_F(BundleTest, BaseResourceIsTheLast) {
    add("Resources/Base.lproj/welcome.html");
    const Languages user("de_DE");
    EXPECT_EQ(find("welcome", "html"), "Resources/Base.lproj/welcome.html");
    add("Resources/welcome.html");
    EXPECT_EQ(find("welcome", "html"), "Resources/welcome.html");
}

TEST_F(BundleTest, LocalizationsAreTheFoldersOfLanguages) {
    EXPECT_EQ(bundle()->localizations(), std::vector<std::string>());
    for (const auto* name : {"fr", "de", "Base", "pt-BR"})
        fs::create_directories(folder() / "Resources" / (std::string(name) + ".lproj"));
    add("Resources/file.lproj");
    fs::create_directories(folder() / "Resources/.lproj");
    fs::create_directories(folder() / "Resources/other");
    EXPECT_EQ(bundle()->localizations(), (std::vector<std::string>{"Base", "de", "fr", "pt-BR"}));
}

TEST_F(BundleTest, LocalizationIsFoundByItsLanguage) {
    fs::create_directories(folder() / "Resources/de.lproj");
    add("Resources/file.lproj");
    EXPECT_EQ(bundle()->URLForLocalization("de"), FileURL(folder() / "Resources/de.lproj"));
    for (const auto* language : {"fr", "file", "", "DE"})
        EXPECT_EQ(bundle()->URLForLocalization(language), std::nullopt) << language;
}
