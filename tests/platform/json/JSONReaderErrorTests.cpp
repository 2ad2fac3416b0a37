// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONReaderSupport.h"

#include <VorlanFoundation/Platform/JSONReader.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace jsontests;
using Kind = JSONError::Kind;

namespace {

const std::vector<std::pair<std::string, std::string>>& examples() {
    static const std::vector<std::pair<std::string, std::string>> all{
        {"an object", R"({"a": [1]})"}, {"an array", "[[], {}]"}, {"a string", R"("1")"}, {"a number", "1"},
        {"a boolean", "true"},          {"null", "null"}};
    return all;
}

void expectMismatches(std::string_view expected, const std::function<void(JSONReader&)>& read) {
    for (const auto& [found, text] : examples()) {
        if (found == expected) continue;
        const auto readMember = [&](JSONReader& reader) {
            reader.enterObject();
            static_cast<void>(reader.nextKey());
            read(reader);
        };
        expectError(errorOf(R"({"it": )" + text + "}", readMember), Kind::typeMismatch,
                    "expected " + std::string(expected) + ", found " + found, "$.it", 7);
    }
}

} // namespace

TEST(JSONReader, SaysWhatItExpectedAndWhatItFound) {
    expectMismatches("an object", [](JSONReader& reader) { reader.enterObject(); });
    expectMismatches("an array", [](JSONReader& reader) { reader.enterArray(); });
    expectMismatches("a string", [](JSONReader& reader) { static_cast<void>(reader.readText()); });
    expectMismatches("a number", [](JSONReader& reader) { static_cast<void>(reader.readNumber()); });
    expectMismatches("a number", [](JSONReader& reader) { static_cast<void>(reader.readFloat()); });
    expectMismatches("a number", [](JSONReader& reader) { static_cast<void>(reader.readInteger()); });
    expectMismatches("a number", [](JSONReader& reader) { static_cast<void>(reader.readUnsigned()); });
    expectMismatches("a boolean", [](JSONReader& reader) { static_cast<void>(reader.readBoolean()); });
}

TEST(JSONReader, WhatIsNoJSONIsNoMismatch) {
    const auto readNumber = [](JSONReader& reader) { static_cast<void>(reader.readNumber()); };
    expectError(errorOf("trux", readNumber), Kind::malformed, "expected a value", "$", 3);
    expectError(errorOf("[1,", readNumber), Kind::malformed, "the text ends too early", "$[1]", 3);
    expectError(errorOf("[1 2]", readNumber), Kind::malformed, "expected a comma or the end of the array",
                "$", 3);
}

TEST(JSONReader, ErrorsNameTheirPlace) {
    const auto error = errorOf(R"({"items": [{}, {"unit price": [[0, x]]}]})", readAnything);
    expectError(error, Kind::malformed, "expected a value", R"($.items[1]["unit price"][0][1])", 35);
    EXPECT_STREQ(error.what(), R"($.items[1]["unit price"][0][1]: expected a value (at byte 35))");
    // Of names with escapes, too; and while skipping.
    EXPECT_EQ(errorOf(R"({"\u0061": {"": tru}})", skipIt).path(), R"($.a[""])");
}

TEST(JSONReader, SaysWhereATextCeasesToBeJSON) {
    const struct {
        std::string text;
        std::string message;
        std::string path;
        std::size_t offset;
    } cases[] = {
        {"", "the text ends too early", "$", 0},
        {" \n\t\r ", "the text ends too early", "$", 5},
        {"[", "the text ends too early", "$[0]", 1},
        {"[1", "the text ends too early", "$", 2},
        {"[1,]", "expected a value", "$[1]", 3},
        {"[,1]", "expected a value", "$[0]", 1},
        {"[1 2]", "expected a comma or the end of the array", "$", 3},
        {"[1}", "expected a comma or the end of the array", "$", 2},
        {"[}", "expected a value", "$[0]", 1},
        {"{", "the text ends too early", "$", 1},
        {"{1:2}", "expected the name of a member", "$", 1},
        {"{\"a\" 1}", "expected a colon", "$.a", 5},
        {"{\"a\"}", "expected a colon", "$.a", 4},
        {"{\"a\":}", "expected a value", "$.a", 5},
        {"{\"a\":1,}", "expected the name of a member", "$", 7},
        {"{\"a\":1 \"b\":2}", "expected a comma or the end of the object", "$", 7},
        {"{\"a\":1]", "expected a comma or the end of the object", "$", 6},
        {"{\"a\":1,,}", "expected the name of a member", "$", 7},
        {"{'a':1}", "expected the name of a member", "$", 1},
        {"[1]]", "expected the end of the text", "$", 3},
        {"tru", "the text ends too early", "$", 3},
        {"nulL", "expected a value", "$", 3},
        {"True", "expected a value", "$", 0},
        {"[falsee]", "expected a comma or the end of the array", "$", 6},
        {"[1]//", "expected the end of the text", "$", 3},
        {"/**/1", "expected a value", "$", 0},
        {std::string("[1\0]", 4), "expected a comma or the end of the array", "$", 2},
        {"[1\f]", "expected a comma or the end of the array", "$", 2},
        {"\xC2\xA0[1]", "expected a value", "$", 0},
    };
    for (const auto& [text, message, path, offset] : cases) {
        SCOPED_TRACE(text);
        expectError(errorOf(text, readAnything), Kind::malformed, message, path, offset);
        expectError(errorOf(text, skipIt), Kind::malformed, message, path, offset);
    }
}

TEST(JSONReader, WhatIsSkippedIsHeldToTheGrammar) {
    const auto readLast = [](JSONReader& reader) {
        reader.enterObject();
        while (reader.nextKey()) {}
    };
    for (const char* inner : {"01", "[1,]", "\"\\x\"", "{\"a\":}", "nul", "\"\\ud800\"", "[[[}]]"}) {
        SCOPED_TRACE(inner);
        EXPECT_EQ(errorOf(R"({"skipped":)" + std::string(inner) + "}", readLast).kind(), Kind::malformed);
    }
}

TEST(JSONReader, ThrowsTheSameErrorFromThenOn) {
    JSONReader reader(R"({"a": [1, "two"]})");
    reader.enterObject();
    ASSERT_TRUE(reader.nextKey());
    reader.enterArray();
    ASSERT_TRUE(reader.nextElement());
    ASSERT_TRUE(reader.nextElement());
    EXPECT_THROW(static_cast<void>(reader.readNumber()), JSONError);
    const std::vector<std::function<void()>> operations{[&] { static_cast<void>(reader.nextKind()); },
                                                        [&] { static_cast<void>(reader.readNull()); },
                                                        [&] { static_cast<void>(reader.readBoolean()); },
                                                        [&] { static_cast<void>(reader.readInteger()); },
                                                        [&] { static_cast<void>(reader.readUnsigned()); },
                                                        [&] { static_cast<void>(reader.readNumber()); },
                                                        [&] { static_cast<void>(reader.readFloat()); },
                                                        [&] { static_cast<void>(reader.readText()); },
                                                        [&] { static_cast<void>(reader.readDate()); },
                                                        [&] { static_cast<void>(reader.readData()); },
                                                        [&] { static_cast<void>(reader.readValue()); },
                                                        [&] { reader.enterObject(); },
                                                        [&] { static_cast<void>(reader.nextKey()); },
                                                        [&] { reader.enterArray(); },
                                                        [&] { static_cast<void>(reader.nextElement()); },
                                                        [&] { reader.skip(); },
                                                        [&] { reader.finish(); }};
    for (const auto& operation : operations) {
        try {
            operation();
            ADD_FAILURE() << "went on";
        } catch (const JSONError& error) {
            expectError(error, Kind::typeMismatch, "expected a number, found a string", "$.a[1]", 10);
        }
    }
}

TEST(JSONReader, AHostFailsAboutWhatWasAnnouncedOrReadLast) {
    const auto failOf = [](std::string_view text, auto read) {
        return errorOf(text, [&](JSONReader& reader) {
            read(reader);
            reader.fail("no good");
        });
    };
    constexpr auto text = R"( {"a": [1, {"b": 2}], "c": 3})";
    const auto expectHost = [&](const JSONError& error, std::string_view path, std::size_t offset) {
        expectError(error, Kind::host, "no good", path, offset);
    };
    expectHost(failOf(text, [](JSONReader&) {}), "$", 1);
    expectHost(failOf(text, [](JSONReader& reader) { reader.enterObject(); }), "$", 1);
    const auto toElement = [](JSONReader& reader) {
        reader.enterObject();
        static_cast<void>(reader.nextKey());
        reader.enterArray();
        static_cast<void>(reader.nextElement());
    };
    expectHost(failOf(text, toElement), "$.a[0]", 8);
    const auto readIt = [&](JSONReader& reader) {
        toElement(reader);
        static_cast<void>(reader.readInteger());
    };
    expectHost(failOf(text, readIt), "$.a[0]", 8);
    const auto skipToNext = [&](JSONReader& reader) {
        toElement(reader);
        static_cast<void>(reader.nextElement());
        reader.skip();
    };
    expectHost(failOf(text, skipToNext), "$.a[1]", 11);
    const auto leave = [&](JSONReader& reader) {
        skipToNext(reader);
        static_cast<void>(reader.nextElement());
    };
    expectHost(failOf(text, leave), "$.a", 7);
    const auto all = [](JSONReader& reader) { reader.skip(); };
    expectHost(failOf(text, all), "$", 1);
}

TEST(JSONReader, AHostNamesTheKindOfItsError) {
    const auto error = errorOf("[5]", [](JSONReader& reader) {
        reader.enterArray();
        static_cast<void>(reader.nextElement());
        reader.fail("only 4 are allowed", Kind::outOfRange);
    });
    expectError(error, Kind::outOfRange, "only 4 are allowed", "$[0]", 1);
}

TEST(JSONReader, NothingMoreIsReadAfterAHostFailed) {
    JSONReader reader("[1, 2]");
    reader.enterArray();
    EXPECT_THROW(reader.fail("first"), JSONError);
    try {
        static_cast<void>(reader.nextElement());
        ADD_FAILURE() << "went on";
    } catch (const JSONError& error) {
        EXPECT_EQ(error.message(), "first");
    }
    // What a host says itself is said, though.
    try {
        reader.fail("second");
    } catch (const JSONError& error) {
        EXPECT_EQ(error.message(), "second");
        EXPECT_EQ(error.path(), "$");
    }
}

TEST(JSONReader, LimitsDepth) {
    const JSONReading shallow{.maximumDepth = 2};
    EXPECT_EQ(readWhole(
                  "[[1], {\"a\": 2}]", [](JSONReader& reader) { return reader.readValue(); }, shallow),
              Value(Value::Array{Value(Value::Array{1}), Value::Dictionary{{"a", 2}}}));
    const auto message = "more than 2 arrays and objects within one another";
    for (const auto& error :
         {errorOf(R"({"a": [0, []]})", readAnything, shallow), errorOf(R"({"a": [0, {}]})", skipIt, shallow)})
        expectError(error, Kind::tooDeep, message, "$.a[1]", 10);
    const auto enterAll = [](JSONReader& reader) {
        for (int count = 0; count < 3; ++count) {
            reader.enterArray();
            static_cast<void>(reader.nextElement());
        }
    };
    expectError(errorOf("[[[1]]]", enterAll, shallow), Kind::tooDeep, message, "$[0][0]", 2);
    // Not met by what is beside one another.
    EXPECT_EQ(errorOf("[[],[],[x]]", readAnything, shallow).kind(), Kind::malformed);
}

TEST(JSONReader, GoesAsDeepAsAsked) {
    for (const std::size_t depth : {std::size_t{1}, std::size_t{512}, std::size_t{2'000}}) {
        const JSONReading reading{.maximumDepth = depth};
        const auto nested = [](std::size_t levels) {
            return std::string(levels, '[') + std::string(levels, ']');
        };
        JSONReader(nested(depth), reading).skip();
        JSONReader reader(nested(depth), reading);
        for (std::size_t level = 0; level + 1 < depth; ++level) {
            reader.enterArray();
            ASSERT_TRUE(reader.nextElement());
        }
        reader.enterArray();
        for (std::size_t level = 0; level < depth; ++level) ASSERT_FALSE(reader.nextElement());
        reader.finish();
        EXPECT_EQ(errorOf(nested(depth + 1), skipIt, reading).kind(), Kind::tooDeep);
        EXPECT_EQ(errorOf(nested(depth + 1), readAnything, reading).byteOffset(), depth);
    }
    EXPECT_EQ(JSONReading().maximumDepth, 512U);
}

TEST(JSONReader, LimitsSize) {
    const JSONReading small{.maximumSize = 5};
    EXPECT_EQ(readWhole(
                  "[1,2]", [](JSONReader& reader) { return reader.readValue(); }, small),
              Value(Value::Array{1, 2}));
    expectError(errorOf("[1,2] ", readAnything, small), Kind::tooLarge,
                "a text of 6 bytes, of which at most 5 are allowed", "$", 0);
    EXPECT_EQ(errorOf("1", skipIt, {.maximumSize = 0}).kind(), Kind::tooLarge);
}
