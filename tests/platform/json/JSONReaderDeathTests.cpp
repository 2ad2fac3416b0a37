// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/JSONReader.h>

#include <gtest/gtest.h>

#include <functional>
#include <string_view>

using namespace vorlan;

namespace {

void expectStop(std::string_view text, const std::function<void(JSONReader&)>& read, const char* message) {
    const auto stop = [&] {
        JSONReader reader(text);
        read(reader);
    };
    EXPECT_DEATH(stop(), message);
}

constexpr auto noMember =
    "VorlanFoundation/JSONReader: Fatal error: nextKey has to announce a member before its value";
constexpr auto noElement =
    "VorlanFoundation/JSONReader: Fatal error: nextElement has to announce an element before";

} // namespace

TEST(JSONReaderDeathTest, AValueNeedsItsKeyFirst) {
    expectStop(
        R"({"a": 1})",
        [](JSONReader& reader) {
            reader.enterObject();
            static_cast<void>(reader.readInteger());
        },
        noMember);
}

TEST(JSONReaderDeathTest, AKeyHasOneValue) {
    expectStop(
        R"({"a": 1, "b": 2})",
        [](JSONReader& reader) {
            reader.enterObject();
            static_cast<void>(reader.nextKey());
            static_cast<void>(reader.readInteger());
            static_cast<void>(reader.readInteger());
        },
        noMember);
}

TEST(JSONReaderDeathTest, AnElementHasToBeAnnounced) {
    expectStop(
        "[1]",
        [](JSONReader& reader) {
            reader.enterArray();
            reader.skip();
        },
        noElement);
}

TEST(JSONReaderDeathTest, KeysAreInObjectsOnly) {
    const auto askForKey = [](JSONReader& reader) { static_cast<void>(reader.nextKey()); };
    constexpr auto message = "VorlanFoundation/JSONReader: Fatal error: nextKey outside of an object";
    expectStop("{}", askForKey, message);
    expectStop(
        "[]",
        [&](JSONReader& reader) {
            reader.enterArray();
            askForKey(reader);
        },
        message);
}

TEST(JSONReaderDeathTest, ElementsAreInArraysOnly) {
    const auto askForElement = [](JSONReader& reader) { static_cast<void>(reader.nextElement()); };
    constexpr auto message = "VorlanFoundation/JSONReader: Fatal error: nextElement outside of an array";
    expectStop("[]", askForElement, message);
    expectStop(
        R"({"a": 1})",
        [&](JSONReader& reader) {
            reader.enterObject();
            askForElement(reader);
        },
        message);
}

TEST(JSONReaderDeathTest, NothingIsBehindTheLastValue) {
    expectStop(
        "1 2",
        [](JSONReader& reader) {
            static_cast<void>(reader.readInteger());
            static_cast<void>(reader.readInteger());
        },
        "VorlanFoundation/JSONReader: Fatal error: all of the text was read");
}

TEST(JSONReaderDeathTest, LimitsHaveLimits) {
    EXPECT_DEATH(
        JSONReader("1", {.maximumDepth = 0}),
        "VorlanFoundation/JSONReader: Fatal error: the maximum depth has to be from 1 to 2,000, and is 0");
    EXPECT_DEATH(JSONReader("1", {.maximumDepth = 2'001}), "from 1 to 2,000, and is 2001");
    EXPECT_DEATH(JSONReader("1", {.maximumSize = 4'000'000'001}),
                 "VorlanFoundation/JSONReader: Fatal error: the maximum size has to be at most 4,000,000,000 "
                 "bytes, and "
                 "is 4000000001");
}
