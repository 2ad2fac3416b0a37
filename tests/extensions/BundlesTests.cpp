// SPDX-License-Identifier: Apache-2.0

// What an application hears of itself.

#include <VorlanFoundation/Extensions/Bundles.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/extensions/BundledHost.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace vorlan;
using tests::BundledHost;
using tests::InfoEntries;
using tests::Layout;
using tests::textElement;

namespace {

class BundlesTest : public ::testing::Test {
protected:
    // What the application answers that has these entries.
    std::string ask(const std::string& command, const InfoEntries& entries) const {
        host_.write(entries);
        return host_.ask(command);
    }

    std::string appVersion(const std::string& version, const std::string& build) const {
        return ask("appVersion", {{"CFBundleShortVersionString", textElement(version)},
                                  {"CFBundleVersion", textElement(build)}});
    }

    std::string appVersion(const std::string& version) const {
        return ask("appVersion", {{"CFBundleShortVersionString", textElement(version)}});
    }

    const BundledHost& host() const { return host_; }
    std::filesystem::path folder() const { return home_.path() / "elsewhere"; }

private:
    vorlan::testing::TemporaryHome home_;
    BundledHost host_{home_.path() / "application", Layout::beside};
};

// The same in a process without an information dictionary: this one.
class BundlesWithoutInfoTest : public ::testing::Test {};

const std::vector<std::string> textsOfEntries = {"appIdentifier", "appMajorVersion", "bundleVersion"};
const std::vector<std::string> keysOfEntries = {"CFBundleIdentifier", "CFBundleShortVersionString",
                                                "CFBundleVersion"};

} // namespace

TEST_F(BundlesTest, EntriesAreReadFromTheInformationDictionary) {
    host().write({{"CFBundleIdentifier", textElement("com.example.notes")},
                  {"CFBundleShortVersionString", textElement("2.0.1")},
                  {"CFBundleVersion", textElement("7")}});
    const auto outcome = host().run({"appIdentifier", "appMajorVersion", "bundleVersion"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.answers, (std::vector<std::string>{"com.example.notes", "2.0.1", "7"}));
}

TEST_F(BundlesTest, MissingEntryIsAbsent) {
    host().write({});
    const auto outcome = host().run(textsOfEntries);
    EXPECT_EQ(outcome.answers, (std::vector<std::string>{"absent", "absent", "absent"}));
}

TEST_F(BundlesTest, EntryThatIsNoTextIsAbsent) {
    InfoEntries entries;
    for (const auto& key : keysOfEntries) entries[key] = "<integer>5</integer>";
    host().write(entries);
    const auto outcome = host().run(textsOfEntries);
    EXPECT_EQ(outcome.answers, (std::vector<std::string>{"absent", "absent", "absent"}));
}

TEST_F(BundlesTest, EmptyTextIsNotAbsent) {
    InfoEntries entries;
    for (const auto& key : keysOfEntries) entries[key] = textElement("");
    host().write(entries);
    const auto outcome = host().run(textsOfEntries);
    EXPECT_EQ(outcome.answers, (std::vector<std::string>{"", "", ""}));
}

TEST_F(BundlesTest, VersionStringIsBehindItsLabel) {
    EXPECT_EQ(ask("facebookAppVersionString", {{"CFBundleShortVersionString", textElement("1.2")}}),
              "Version: 1.2");
}

TEST_F(BundlesTest, VersionStringWithoutAVersionIsTheLabelAlone) {
    EXPECT_EQ(ask("facebookAppVersionString", {}), "Version: ");
    EXPECT_EQ(ask("facebookAppVersionString", {{"CFBundleShortVersionString", "<real>1.5</real>"}}),
              "Version: ");
}

TEST_F(BundlesTest, NameForDisplayComesFirst) {
    EXPECT_EQ(ask("applicationName",
                  {{"CFBundleDisplayName", textElement("Notes")}, {"CFBundleName", textElement("notes")}}),
              "Notes");
}

TEST_F(BundlesTest, ShortNameServesWhereThereIsNoNameForDisplay) {
    EXPECT_EQ(ask("applicationName", {{"CFBundleName", textElement("notes")}}), "notes");
    EXPECT_EQ(
        ask("applicationName", {{"CFBundleDisplayName", "<true/>"}, {"CFBundleName", textElement("notes")}}),
        "notes");
}

TEST_F(BundlesTest, EmptyNameForDisplayIsAName) {
    EXPECT_EQ(ask("applicationName",
                  {{"CFBundleDisplayName", textElement("")}, {"CFBundleName", textElement("notes")}}),
              "");
}

TEST_F(BundlesTest, ApplicationWithoutNamesHasTheEmptyName) {
    EXPECT_EQ(ask("applicationName", {}), "");
    EXPECT_EQ(ask("applicationName", {{"CFBundleName", "<integer>1</integer>"}}), "");
}

TEST_F(BundlesTest, NamesMayBeInAnyScript) {
    EXPECT_EQ(ask("applicationName", {{"CFBundleDisplayName", textElement("Заметки &amp; 日本")}}),
              "Заметки & 日本");
}

TEST_F(BundlesTest, VersionPacksVersionAndBuild) {
    EXPECT_EQ(appVersion("2.0.1", "7"), "2017");
    EXPECT_EQ(appVersion("1.2", "15"), "135");
    EXPECT_EQ(appVersion("1.3", "5"), "135") << "this overlap is known";
    EXPECT_EQ(appVersion("1.2.3", "4.5.6"), "1686");
}

TEST_F(BundlesTest, VersionWithoutBuildIsTenfold) {
    EXPECT_EQ(appVersion("1.0"), "100");
}

TEST_F(BundlesTest, BuildWithoutVersionIsItself) {
    EXPECT_EQ(ask("appVersion", {{"CFBundleVersion", textElement("42")}}), "42");
}

TEST_F(BundlesTest, NeitherVersionNorBuildIsZero) {
    EXPECT_EQ(ask("appVersion", {}), "0");
    EXPECT_EQ(appVersion("", ""), "0");
    EXPECT_EQ(appVersion("...", "."), "0");
}

TEST_F(BundlesTest, VersionThatIsNoNumberCountsAsZero) {
    EXPECT_EQ(appVersion("1.0b", "7"), "7");
    EXPECT_EQ(appVersion("1 0", "7"), "7");
    EXPECT_EQ(appVersion("1.0", "7a"), "100");
    EXPECT_EQ(appVersion("0x10", "7"), "7");
    EXPECT_EQ(appVersion("1,0", "7"), "7");
    EXPECT_EQ(appVersion("١٢", "7"), "7") << "only these ten digits are read";
    EXPECT_EQ(appVersion("1-2", "7"), "7");
    EXPECT_EQ(appVersion("-", "+"), "0");
    EXPECT_EQ(appVersion("+-1", "7"), "7");
}

TEST_F(BundlesTest, EntryThatIsNoTextCountsAsZero) {
    EXPECT_EQ(ask("appVersion", {{"CFBundleShortVersionString", "<integer>3</integer>"},
                                 {"CFBundleVersion", textElement("7")}}),
              "7");
    EXPECT_EQ(ask("appVersion",
                  {{"CFBundleShortVersionString", textElement("3")}, {"CFBundleVersion", "<real>7</real>"}}),
              "30");
}

TEST_F(BundlesTest, NumbersMayHaveASignAndZerosBefore) {
    EXPECT_EQ(appVersion("-1.2", "7"), "-113");
    EXPECT_EQ(appVersion("+1.2", "7"), "127");
    EXPECT_EQ(appVersion("0.0.1", "007"), "17");
}

TEST_F(BundlesTest, NumberBeyond64BitsCountsAsZero) {
    EXPECT_EQ(appVersion("9223372036854775808", "7"), "7");
    EXPECT_EQ(appVersion("1.0", "-9223372036854775809"), "100");
}

TEST_F(BundlesTest, LargestAndSmallestVersionsFit) {
    EXPECT_EQ(appVersion("922337203685477580", "7"), "9223372036854775807");
    EXPECT_EQ(appVersion("-922337203685477580", "-8"), "-9223372036854775808");
    EXPECT_EQ(appVersion("0", "9223372036854775807"), "9223372036854775807");
}

TEST_F(BundlesTest, AnswersAreOfTheApplicationWhateverBundleIsAsked) {
    host().write({{"CFBundleIdentifier", textElement("com.example.notes")},
                  {"CFBundleDisplayName", textElement("Notes")},
                  {"CFBundleShortVersionString", textElement("2.0.1")},
                  {"CFBundleVersion", textElement("7")}});
    tests::writeInfo(folder() / "Info.plist", {{"CFBundleIdentifier", textElement("com.example.plugin")},
                                               {"CFBundleDisplayName", textElement("Plug-in")},
                                               {"CFBundleShortVersionString", textElement("9.9")},
                                               {"CFBundleVersion", textElement("9")}});
    EXPECT_EQ(host().run({"aboutAnother", folder()}).only(),
              "Notes 2017 com.example.notes 2.0.1 7 Version: 2.0.1");
}

TEST_F(BundlesTest, ApplicationWithoutInformationDictionaryHasNoEntries) {
    const auto outcome = host().run({"hasInfo", "appIdentifier", "appMajorVersion", "bundleVersion",
                                     "facebookAppVersionString", "applicationName", "appVersion"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.answers,
              (std::vector<std::string>{"false", "absent", "absent", "absent", "Version: ", "", "0"}));
}

TEST_F(BundlesWithoutInfoTest, EverythingIsAbsentHereToo) {
    EXPECT_EQ(bundle::appIdentifier(), std::nullopt);
    EXPECT_EQ(bundle::facebookAppVersionString(), "Version: ");
    EXPECT_EQ(bundle::applicationName(), "");
    EXPECT_EQ(bundle::appVersion(), 0);
}

TEST_F(BundlesTest, LanguageIsThatOfTheUser) {
    const auto languageIn = [&](const std::string& locale) {
        return host().ask("currentLanguageCode", {{"LC_ALL", locale}});
    };
    EXPECT_EQ(languageIn("de_CH.UTF-8"), "de");
    EXPECT_EQ(languageIn("pt_BR"), "pt");
    EXPECT_EQ(languageIn("fil_PH.UTF-8"), "fil");
}

TEST_F(BundlesTest, LanguageIsEnglishWhereTheLocaleHasNone) {
    for (const auto* locale : {"C", "POSIX", "C.UTF-8", "_CH"})
        EXPECT_EQ(host().ask("currentLanguageCode", {{"LC_ALL", locale}}), "en") << locale;
    EXPECT_EQ(host().ask("currentLanguageCode", {{"LC_ALL", ""}, {"LC_MESSAGES", ""}, {"LANG", ""}}), "en");
}
