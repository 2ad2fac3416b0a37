// SPDX-License-Identifier: Apache-2.0
// Formats that do not fit their arguments, and what is said of them.

#include <VorlanFoundation/Platform/TextFormat.h>

#include "tests/platform/localization/Gaps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

using namespace vorlan;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using tests::FormatProblems;

namespace {

using Kind = FormatDirective::Kind;

struct Misfit {
    std::string format;
    std::vector<FormatArgument> arguments;
    std::string text;
};

std::string problem(const std::string& format, const std::string& misfit) {
    return "VorlanFoundation/TextFormat: the format \"" + format + "\" does not fit its arguments: " + misfit;
}

} // namespace

TEST(TextFormatMisfitTest, GapsThatCannotBeFilledStandAsTheyAre) {
    FormatProblems problems;
    const std::vector<Misfit> misfits{{"%d", {}, "%d"},
                                      {"%@ and %@", {1}, "1 and %@"},
                                      {"%3$@", {1, 2}, "%3$@"},
                                      {"%", {1}, "%"},
                                      {"100%", {}, "100%"},
                                      {"%y", {1}, "%y"},
                                      {"%n", {1}, "%n"},
                                      {"%5", {1}, "%5"},
                                      {"%5.2", {1}, "%5.2"},
                                      {"%l", {1}, "%l"},
                                      {"%5%d", {1}, "%51"},
                                      {"%ö %d", {1}, "%ö 1"},
                                      {"%0$d", {1}, "%0$d"},
                                      {"%1$", {1}, "%1$"},
                                      {"%1$2$d", {1}, "%1$2$d"},
                                      {"%99999999999$d", {1}, "%99999999999$d"},
                                      {"%18446744073709551617$d", {1}, "%18446744073709551617$d"},
                                      {"%4097d", {1}, "%4097d"},
                                      {"%.999999999d", {1}, "%.999999999d"},
                                      {"%#@name@", {1}, "%#@name@"},
                                      {"%*d", {5}, "%*d"}};
    for (const auto& each : misfits) {
        EXPECT_EQ(formatText(each.format, each.arguments), each.text);
        EXPECT_THAT(problems.take(), SizeIs(1)) << each.format;
    }
}

TEST(TextFormatMisfitTest, ArgumentsOfAnotherKindAreWrittenByTheirOwn) {
    FormatProblems problems;
    const std::vector<Misfit> misfits{
        {"[%d]", {"a"}, "[a]"},          {"[%d ]", {1.5}, "[1.5 ]"},
        {"[%x]", {1.5}, "[1.5]"},        {"[%s]", {3}, "[3]"},
        {"[%S]", {0.5}, "[0.5]"},        {"[%5d]", {"abc"}, "[  abc]"},
        {"[%.1d]", {"abc"}, "[abc]"},    {"[%.1f]", {"abc"}, "[abc]"},
        {"[%c]", {1.5}, "[1.5]"},        {"[%p]", {1.5}, "[1.5]"},
        {"[%*d]", {"a", 7}, "[7]"},      {"[%.*f]", {1.5, 0.5}, "[0.500000]"},
        {"[%*d  ]", {5000, 7}, "[7  ]"}, {"[%*d   ]", {INT64_MIN, 7}, "[7   ]"}};
    for (const auto& each : misfits) {
        EXPECT_EQ(formatText(each.format, each.arguments), each.text);
        EXPECT_THAT(problems.take(), SizeIs(1)) << each.format;
    }
    EXPECT_EQ(tests::in("de", "[%s|%d]", {1234, 1234.5}), "[1.234|1.234,5]");
}

TEST(TextFormatMisfitTest, WhatFitsIsNotReported) {
    FormatProblems problems;
    formatText("%d %i %u %x %X %o %c %C %@ %s %S %p %%",
               {1, -2, 3U, 4, 5, 6, 'c', "C", 1.5, "s", "S", &problems});
    formatText("%f %e %g %a %F %E %G %A", {1.0, 2.0F, 3, 4U, 5, 6, 7, 8});
    formatText("%hhd %hd %ld %lld %qd %jd %zd %td", {1, 2, 3, 4, 5, 6, 7, 8});
    formatText("%-+ #0'9.3d %*.*f %2$d", {1, 2, 3, 4.0});
    EXPECT_THAT(problems.take(), IsEmpty());
}

TEST(TextFormatMisfitTest, EachFormatIsReportedOnce) {
    FormatProblems problems;
    for (int i = 0; i < 3; ++i) formatText("once: %d", {});
    EXPECT_THAT(problems.take(), ElementsAre(problem("once: %d", "\"%d\" has no argument")));
    formatText("once: %d %d", {1});
    formatText("once: %d %y", {"a"});
    EXPECT_THAT(problems.take(),
                ElementsAre(problem("once: %d %d", "\"%d\" has no argument"),
                            problem("once: %d %y", "\"%d\" has an argument of another kind")));
}

TEST(TextFormatMisfitTest, ReportsQuoteTheBeginningOfLongFormats) {
    FormatProblems problems;
    std::string format = "%d";
    for (int i = 0; i < 1000; ++i) format += "ä";
    formatText(format, {});
    // 118 bytes are left after the gap, of which each letter takes two.
    EXPECT_THAT(problems.take(),
                ElementsAre(problem(format.substr(0, 120) + "...", "\"%d\" has no argument")));
    formatText("x" + format, {});
    EXPECT_THAT(problems.take(),
                ElementsAre(problem("x" + format.substr(0, 118) + "...", "\"%d\" has no argument")));
}

TEST(TextFormatMisfitTest, FormatsAreReportedHoweverMany) {
    FormatProblems problems;
    for (int i = 0; i < 2000; ++i) formatText(std::to_string(i) + "%d is without", {});
    EXPECT_THAT(problems.take(), SizeIs(2000));
}

TEST(TextFormatMisfitTest, HandlerMayFillTheSameFormat) {
    static std::atomic<int> runs = 0; // formats are known to the process
    const auto format = "again and again " + std::to_string(++runs) + ": %d";
    std::atomic<int> calls = 0;
    setProblemHandler([&](std::string_view, std::string_view) {
        ++calls;
        EXPECT_EQ(formatText(format, {}), format);
    });
    formatText(format, {});
    setProblemHandler(nullptr);
    EXPECT_EQ(calls, 1);
}

TEST(TextFormatMisfitTest, IllFormedBytesBecomeReplacementCharacters) {
    const FormatProblems problems;
    EXPECT_EQ(formatText("a\xFF", {}), "a\uFFFD");
    EXPECT_EQ(formatText("\xE2\x82%d\xFF", {1}), "\uFFFD1\uFFFD");
    EXPECT_EQ(formatText("%@|%s|%c", {"\xFF", "a\xC3", "\xFF"}), "\uFFFD|a\uFFFD|\uFFFD");
    EXPECT_EQ(formatText("[%3s][%.1s]", {"\xFF", "\xFF\xFF"}), "[  \uFFFD][\uFFFD]");
    EXPECT_EQ(formatText("%\xFF", {1}), "%\uFFFD");
    EXPECT_EQ(formatText("%#@\xFF@", {1}), "%#@\uFFFD@");
    EXPECT_EQ(tests::in("de", "\xFF%d", {1234}), "\uFFFD1.234");
    EXPECT_EQ(formatText("%c", {'\xFF'}), "\uFFFD");
}

TEST(TextFormatMisfitTest, DirectivesSayWhatTheyTake) {
    EXPECT_THAT(formatDirectives("nothing"), IsEmpty());
    EXPECT_THAT(formatDirectives("%@ %5d%%%.2f"),
                ElementsAre(FormatDirective{.offset = 0, .length = 2, .kind = Kind::anything, .argument = 1},
                            FormatDirective{.offset = 3, .length = 3, .kind = Kind::integer, .argument = 2},
                            FormatDirective{.offset = 6, .length = 2, .kind = Kind::percent},
                            FormatDirective{.offset = 8, .length = 4, .kind = Kind::number, .argument = 3}));
    EXPECT_THAT(formatDirectives("%*.*f%2$s"),
                ElementsAre(FormatDirective{.offset = 1, .length = 1, .kind = Kind::integer, .argument = 1},
                            FormatDirective{.offset = 3, .length = 1, .kind = Kind::integer, .argument = 2},
                            FormatDirective{.offset = 0, .length = 5, .kind = Kind::number, .argument = 3},
                            FormatDirective{.offset = 5, .length = 4, .kind = Kind::text, .argument = 2}));
    EXPECT_THAT(formatDirectives("%3$*2$d"),
                ElementsAre(FormatDirective{.offset = 3, .length = 3, .kind = Kind::integer, .argument = 2},
                            FormatDirective{.offset = 0, .length = 7, .kind = Kind::integer, .argument = 3}));
}

TEST(TextFormatMisfitTest, DirectivesNameVariablesAndWhatIsNone) {
    EXPECT_THAT(
        formatDirectives("%#@files@ %2$#@folders@"),
        ElementsAre(
            FormatDirective{.offset = 0, .length = 9, .kind = Kind::variable, .argument = 1, .name = "files"},
            FormatDirective{
                .offset = 10, .length = 13, .kind = Kind::variable, .argument = 2, .name = "folders"}));
    EXPECT_THAT(formatDirectives("%#@ %y %*y %5000d %"),
                ElementsAre(FormatDirective{.offset = 0, .length = 3, .kind = Kind::anything, .argument = 1},
                            FormatDirective{.offset = 4, .length = 2, .kind = Kind::unknown},
                            FormatDirective{.offset = 7, .length = 3, .kind = Kind::unknown},
                            FormatDirective{.offset = 11, .length = 6, .kind = Kind::unknown},
                            FormatDirective{.offset = 18, .length = 1, .kind = Kind::unknown}));
    EXPECT_THAT(formatDirectives("%c%C%p%S"), SizeIs(4));
    EXPECT_EQ(formatDirectives("%p")[0].kind, Kind::anything);
    EXPECT_EQ(formatDirectives("%c")[0].kind, Kind::integer);
}
