// SPDX-License-Identifier: Apache-2.0

// What is in the log file after what calls.

#include <VorlanFoundation/Logging/Logger.h>

#include "tests/logging/LogCase.h"

#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <regex>
#include <string>
#include <vector>

using namespace vorlan;
using tests::linesOf;
using tests::textOf;
using tests::writeText;
namespace fs = std::filesystem;

namespace {

// "[2026-03-05 14:07:09 +0000 ] ": the test program has no bundle, and so no name.
constexpr std::size_t prefixLength = 29;

class LoggerTest : public tests::LogCase {};

// Counts how often somebody asks what it is.
struct Witness {
    std::string description() const {
        ++*asked;
        return "witness";
    }
    std::shared_ptr<int> asked = std::make_shared<int>(0);
};

// The second of now in UTC, by the C library.
std::string utcNow() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::string text(64, '\0');
    text.resize(std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S +0000", &parts));
    return text;
}

std::string withoutPrefix(const std::string& line) {
    static const std::regex prefix(R"(^\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \+0000 \] )");
    return std::regex_search(line, prefix) ? line.substr(prefixLength) : "no prefix: " + line;
}

std::vector<std::string> textsIn(const std::string& log) {
    std::vector<std::string> texts;
    for (const auto& line : linesOf(log)) texts.push_back(withoutPrefix(line));
    return texts;
}

using Texts = std::vector<std::string>;

} // namespace

TEST_F(LoggerTest, EachValueIsALineBehindThePrefix) {
    Logger::makeLogging(true);
    Logger::log("a", 5);
    EXPECT_TRUE(text().ends_with("\n"));
    EXPECT_EQ(textsIn(text()), (Texts{"a", "5"}));
}

TEST_F(LoggerTest, FollowingCallsAppend) {
    Logger::makeLogging(true);
    Logger::log("first");
    Logger::log("second");
    EXPECT_EQ(textsIn(text()), (Texts{"first", "second"}));
}

TEST_F(LoggerTest, PrefixIsTheDateInUTCAndTheName) {
    Logger::makeLogging(true);
    const auto before = utcNow();
    Logger::log("text");
    const auto after = utcNow();
    const auto log = text();
    const std::regex form(R"(\[(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \+0000) \] text\n)");
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(log, parts, form)) << log;
    EXPECT_LE(before, parts[1].str());
    EXPECT_LE(parts[1].str(), after);
}

TEST_F(LoggerTest, ValuesOfAllTypesAreLoggedByTheirDescription) {
    Logger::makeLogging(true);
    Logger::log(2.5, 3.0, true, std::optional<int>(), std::optional(7), std::string("text"), Witness());
    EXPECT_EQ(textsIn(text()), (Texts{"2.5", "3.0", "true", "nil", "7", "text", "witness"}));
}

TEST_F(LoggerTest, CallWithoutValuesWritesNothing) {
    Logger::makeLogging(true);
    Logger::log();
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(LoggerTest, TextOfSeveralLinesHasOnePrefix) {
    Logger::makeLogging(true);
    Logger::log("one\ntwo\n");
    ASSERT_GT(text().size(), prefixLength);
    EXPECT_EQ(text().substr(prefixLength), "one\ntwo\n\n");
    EXPECT_EQ(withoutPrefix(linesOf(text())[0]), "one");
}

TEST_F(LoggerTest, BlankTextsHaveNoPrefix) {
    Logger::makeLogging(true);
    Logger::log("", "   ", "\n\t\r ");
    EXPECT_EQ(text(), "\n   \n\n\t\r \n");
}

TEST_F(LoggerTest, BlanksOfAllScriptsHaveNoPrefix) {
    Logger::makeLogging(true);
    // No-break space, em space, line separator, ideographic space, next line.
    Logger::log("\u00A0", "\u2003\u2028", "\u3000\u0085");
    EXPECT_EQ(text(), "\u00A0\n\u2003\u2028\n\u3000\u0085\n");
}

TEST_F(LoggerTest, BlanksAroundATextAreKept) {
    Logger::makeLogging(true);
    Logger::log("  \u3000a ");
    EXPECT_EQ(textsIn(text()), (Texts{"  \u3000a "}));
}

TEST_F(LoggerTest, IllFormedTextIsRepaired) {
    Logger::makeLogging(true);
    Logger::log("a\xFFz", std::string("\xC3"), "\xED\xA0\x80");
    const auto texts = textsIn(text());
    ASSERT_EQ(texts.size(), 3U);
    EXPECT_EQ(texts[0], "a\uFFFDz");
    EXPECT_EQ(texts[1], "\uFFFD");
    EXPECT_EQ(texts[2], "\uFFFD\uFFFD\uFFFD");
}

TEST_F(LoggerTest, TextsBeyondAsciiAreWrittenInUTF8) {
    Logger::makeLogging(true);
    Logger::log("Grüße, 日本 \U0001F600");
    EXPECT_EQ(textsIn(text()), (Texts{"Grüße, 日本 \U0001F600"}));
}

TEST_F(LoggerTest, TextKeepsItsNulCharacters) {
    Logger::makeLogging(true);
    const std::string value("a\0b", 3);
    Logger::log(value);
    EXPECT_EQ(textsIn(text()), (Texts{value}));
}

TEST_F(LoggerTest, NewNameCountsFromTheNextLineAndTheOldFileStays) {
    Logger::makeLogging(true);
    Logger::log("old");
    Logger::changeFileName("my notes.log");
    EXPECT_FALSE(fs::exists(folder() / "my notes.log"));
    Logger::log("new");
    EXPECT_EQ(textsIn(text()), (Texts{"old"}));
    EXPECT_EQ(textsIn(textOf(folder() / "my notes.log")), (Texts{"new"}));
}

TEST_F(LoggerTest, NameIsKeptWhileTheLogIsOff) {
    Logger::changeFileName("other.log");
    Logger::makeLogging(true);
    Logger::makeLogging(false);
    Logger::makeLogging(true);
    Logger::log("text");
    EXPECT_EQ(textsIn(textOf(folder() / "other.log")), (Texts{"text"}));
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(LoggerTest, CleanEmptiesTheFile) {
    Logger::makeLogging(true);
    Logger::log("text");
    ASSERT_GT(fs::file_size(file()), 0U);
    Logger::clean();
    EXPECT_EQ(fs::file_size(file()), 0U);
    Logger::log("next");
    EXPECT_EQ(textsIn(text()), (Texts{"next"}));
}

TEST_F(LoggerTest, CleanMakesAnEmptyFileWhereThereIsNone) {
    Logger::makeLogging(true);
    Logger::clean();
    ASSERT_TRUE(fs::exists(file()));
    EXPECT_EQ(fs::file_size(file()), 0U);
}

TEST_F(LoggerTest, CleanWorksWhileTheLogIsOff) {
    writeText(file(), "something");
    Logger::clean();
    ASSERT_TRUE(fs::exists(file()));
    EXPECT_EQ(fs::file_size(file()), 0U);
}

TEST_F(LoggerTest, FileOfExactlyTheLimitIsAppendedTo) {
    Logger::makeLogging(true);
    Logger::changeFileSizeLimit(100);
    writeText(file(), std::string(100, 'x'));
    Logger::log("");
    EXPECT_EQ(text(), std::string(100, 'x') + "\n");
}

TEST_F(LoggerTest, TextMayFillTheFileToTheLimit) {
    Logger::makeLogging(true);
    Logger::changeFileSizeLimit(200);
    writeText(file(), std::string(200 - prefixLength - 4, 'x'));
    Logger::log("text");
    EXPECT_EQ(fs::file_size(file()), 201U);
    EXPECT_TRUE(text().starts_with("xxx"));
    EXPECT_TRUE(text().ends_with("] text\n"));
}

TEST_F(LoggerTest, EndOfTheLineFindsTheFileTooLargeAsAnyWriteDoes) {
    Logger::makeLogging(true);
    Logger::changeFileSizeLimit(100);
    writeText(file(), std::string(100, 'x'));
    Logger::log(" ");
    EXPECT_EQ(text(), "\n");
}

TEST_F(LoggerTest, FileThatIsOneByteTooLargeIsEmptiedBefore) {
    Logger::makeLogging(true);
    Logger::changeFileSizeLimit(100);
    writeText(file(), std::string(101, 'x'));
    Logger::log("new");
    EXPECT_EQ(textsIn(text()), (Texts{"new"}));
}

TEST_F(LoggerTest, TextThatBringsTheFileOverTheLimitIsGoneWithItsEndOfLine) {
    Logger::makeLogging(true);
    Logger::changeFileSizeLimit(prefixLength + 3);
    Logger::log("abc"); // as large as may be; the end of the line is the byte too much
    EXPECT_EQ(textsIn(text()), (Texts{"abc"}));
    EXPECT_EQ(fs::file_size(file()), prefixLength + 4);
    Logger::log("abcd");
    EXPECT_EQ(text(), "\n");
    Logger::log("ab");
    ASSERT_EQ(linesOf(text()).size(), 2U) << "the end of the line before is there still";
    EXPECT_EQ(withoutPrefix(linesOf(text())[1]), "ab");
}

TEST_F(LoggerTest, NegativeLimitEmptiesTheFileBeforeEveryWrite) {
    Logger::makeLogging(true);
    Logger::log("before");
    Logger::changeFileSizeLimit(-1);
    Logger::log("a");
    EXPECT_EQ(text(), "\n");
    Logger::log("b", "c");
    EXPECT_EQ(text(), "\n");
}

TEST_F(LoggerTest, LimitOfZeroLeavesTheEndOfTheLine) {
    Logger::makeLogging(true);
    Logger::changeFileSizeLimit(0);
    Logger::log("a");
    EXPECT_EQ(text(), "\n");
    Logger::log("a");
    EXPECT_EQ(text(), "\n");
}

TEST_F(LoggerTest, LargestLimitIsNeverReached) {
    Logger::makeLogging(true);
    Logger::changeFileSizeLimit(std::numeric_limits<std::int64_t>::max());
    Logger::log("a", "b");
    EXPECT_EQ(textsIn(text()), (Texts{"a", "b"}));
}

TEST_F(LoggerTest, FirstLimitIsTenMebibytes) {
    Logger::makeLogging(true);
    writeText(file(), "");
    fs::resize_file(file(), 10'485'760 - prefixLength - 4);
    Logger::log("text");
    EXPECT_EQ(fs::file_size(file()), 10'485'761U) << "exactly at the limit before the end of the line";
    Logger::log("next");
    EXPECT_EQ(textsIn(text()), (Texts{"next"}));
}

TEST_F(LoggerTest, DisabledCallDescribesNothingAndMakesNoFile) {
    Logger::makeLogging(false);
    const Witness witness;
    Logger::log(witness, "text");
    EXPECT_EQ(*witness.asked, 0);
    EXPECT_FALSE(fs::exists(file()));
    EXPECT_TRUE(fs::is_empty(folder()));
    Logger::makeLogging(true);
    Logger::log(witness);
    EXPECT_EQ(*witness.asked, 1);
}
