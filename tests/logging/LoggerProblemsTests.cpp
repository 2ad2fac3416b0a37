// SPDX-License-Identifier: Apache-2.0

// A host that logs what the library reports.

#include "tests/extensions/BundledHost.h"
#include "tests/logging/LogCase.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace vorlan;
using tests::BundledHost;
using tests::linesOf;
using tests::textOf;
using tests::writeText;
namespace fs = std::filesystem;

namespace {

using Answers = std::vector<std::string>;

class LoggerProblemsTest : public tests::LogCase {
protected:
    LoggerProblemsTest() { fs::create_directories(host_.contents()); }

    fs::path info() const { return host_.contents() / "Info.plist"; }
    fs::path settings() const { return home() / ".config/notes/defaults.plist"; }

    BundledHost host_{home() / "notes", tests::Layout::beside, "notes"};
};

} // namespace

// The handler asks for the very things whose making is reported: the bundle, the store, and the log's switch.
TEST_F(LoggerProblemsTest, DamagedInformationMayBeLogged) {
    ASSERT_EQ(host_.ask("makeLogging"), "ok");
    writeText(info(), "nonsense");
    const auto outcome = host_.run({"logProblems", "log", "text"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.answers, (Answers{"ok", "ok"}));
    const auto lines = linesOf(text());
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_NE(lines[0].find("] cannot use " + info().native()), std::string::npos) << lines[0];
    EXPECT_TRUE(lines[1].ends_with("] text")) << lines[1];
}

TEST_F(LoggerProblemsTest, DamagedInformationMayBeLoggedWhateverIsAskedFirst) {
    writeText(info(), "nonsense");
    for (const std::string first :
         {"applicationName", "storeName", "makeLogging", "applicationDataDirectory"}) {
        const auto outcome = host_.run({"logProblems", first});
        EXPECT_EQ(outcome.status, 0) << first;
        EXPECT_EQ(outcome.answers.size(), 2U) << first;
    }
}

TEST_F(LoggerProblemsTest, DamagedSettingsMayBeLogged) {
    fs::create_directories(settings().parent_path());
    for (const std::string first : {"storeName", "makeLogging", "log"}) {
        writeText(settings(), "nonsense");
        std::vector<std::string> commands{"logProblems", first};
        if (first == "log") commands.emplace_back("text");
        const auto outcome = host_.run(commands);
        EXPECT_EQ(outcome.status, 0) << first;
        EXPECT_EQ(outcome.answers.size(), 2U) << first;
    }
    EXPECT_TRUE(fs::exists(settings().native() + ".damaged-2"));
}
