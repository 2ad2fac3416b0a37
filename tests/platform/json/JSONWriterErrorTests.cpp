// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/JSONWriter.h>

#include <VorlanFoundation/Platform/FunctionRef.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <utility>

using namespace vorlan;

namespace {

using Kind = JSONError::Kind;

JSONError failure(FunctionRef<void(JSONWriter&)> write, const JSONWriting& writing = {}) {
    try {
        JSONWriter writer(writing);
        write(writer);
    } catch (const JSONError& error) {
        return error;
    }
    return {Kind::host, "did not fail", "nowhere"};
}

// {"items":[0,{"unit price":
void beginMember(JSONWriter& writer) {
    writer.beginObject();
    writer.key("before");
    writer.writeNull();
    writer.key("items");
    writer.beginArray();
    writer.writeInteger(0);
    writer.beginObject();
    writer.key("before");
    writer.writeNull();
    writer.key("unit price");
}

} // namespace

TEST(JSONWriterErrors, TellTheValueThatCannotBeWritten) {
    const auto error =
        failure([](JSONWriter& writer) { beginMember(writer), writer.writeNumber(std::nan("")); });
    EXPECT_EQ(error.kind(), Kind::nonFinite);
    EXPECT_EQ(error.path(), R"($.items[1]["unit price"])");
    EXPECT_EQ(error.message(), "JSON has no NaN");
    EXPECT_EQ(error.byteOffset(), std::nullopt);
    EXPECT_STREQ(error.what(), R"($.items[1]["unit price"]: JSON has no NaN)");
}

TEST(JSONWriterErrors, TellTheElementCountedFromZero) {
    for (int before = 0; before < 3; ++before) {
        const auto error = failure([&](JSONWriter& writer) {
            writer.beginArray();
            for (int index = 0; index < before; ++index) writer.writeText("well");
            writer.writeText("\xFF");
        });
        EXPECT_EQ(error.kind(), Kind::illFormedText);
        EXPECT_EQ(error.path(), "$[" + std::to_string(before) + "]");
        EXPECT_EQ(error.message(), "the text is not well-formed UTF-8");
    }
}

TEST(JSONWriterErrors, OfTheWholeHaveNoMore) {
    EXPECT_EQ(failure([](JSONWriter& writer) { writer.writeText("\xC3"); }).path(), "$");
    EXPECT_EQ(failure([](JSONWriter& writer) { writer.writeFloat(INFINITY); }).path(), "$");
    EXPECT_EQ(failure([](JSONWriter& writer) { writer.fail("no"); }).path(), "$");
}

TEST(JSONWriterErrors, TellNamesWithoutTheirEscapes) {
    const auto error = failure([](JSONWriter& writer) {
        writer.beginObject();
        writer.key("a\"b\\c\x01");
        writer.beginArray();
        writer.writeText("\xFF");
    });
    EXPECT_EQ(error.path(), "$[\"a\"b\\c\x01\"][0]");
}

TEST(JSONWriterErrors, TellTheMemberWhoseNameIsIllFormed) {
    const auto error = failure([](JSONWriter& writer) {
        writer.beginObject();
        writer.key("well");
        writer.beginObject();
        writer.key("ill\xFF");
    });
    EXPECT_EQ(error.kind(), Kind::illFormedText);
    EXPECT_EQ(error.path(), "$.well[\"ill\uFFFD\"]");
    EXPECT_EQ(error.message(), "the name is not well-formed UTF-8");
}

TEST(JSONWriterErrors, TooManyWithinOneAnotherFailAtTheOneTooMany) {
    const auto nest = [](JSONWriter& writer, std::size_t levels) {
        for (std::size_t level = 0; level < levels; ++level) {
            if (level % 2 == 0) {
                writer.beginArray();
            } else {
                writer.beginObject();
                writer.key("in");
            }
        }
    };
    const auto error = failure([&](JSONWriter& writer) { nest(writer, 4); }, {.maximumDepth = 3});
    EXPECT_EQ(error.kind(), Kind::tooDeep);
    EXPECT_EQ(error.path(), "$[0].in[0]");
    EXPECT_EQ(error.message(), "more than 3 arrays and objects within one another");
    EXPECT_EQ(failure([&](JSONWriter& writer) { nest(writer, 3); }, {.maximumDepth = 3}).path(), "nowhere");
    EXPECT_EQ(failure([&](JSONWriter& writer) { nest(writer, 2); }, {.maximumDepth = 1}).path(), "$[0]");
    EXPECT_EQ(failure([&](JSONWriter& writer) { nest(writer, 512); }).path(), "nowhere");
    EXPECT_EQ(failure([&](JSONWriter& writer) { nest(writer, 513); }).kind(), Kind::tooDeep);
    EXPECT_EQ(failure([&](JSONWriter& writer) { nest(writer, 2'000); }, {.maximumDepth = 2'000}).path(),
              "nowhere");
    EXPECT_EQ(failure([&](JSONWriter& writer) { nest(writer, 2'001); }, {.maximumDepth = 2'000}).kind(),
              Kind::tooDeep);
}

TEST(JSONWriterErrors, ArraysBesideOneAnotherAreNotDeep) {
    JSONWriter writer({.maximumDepth = 2});
    writer.beginArray();
    for (int count = 0; count < 5; ++count) writer.beginArray(), writer.endArray();
    writer.endArray();
    EXPECT_EQ(std::move(writer).takeText(), "[[],[],[],[],[]]");
}

TEST(JSONWriterErrors, ValuesTellThePathWithinThem) {
    const Value value(Value::Dictionary{{"a", Value::Array{1, Value::Dictionary{{"b", std::nan("")}}}}});
    EXPECT_EQ(failure([&](JSONWriter& writer) { writer.writeValue(value); }).path(), "$.a[1].b");
    EXPECT_EQ(failure([&](JSONWriter& writer) { writer.writeValue(value); }, {.maximumDepth = 2}).path(),
              "$.a[1]");
}

TEST(JSONWriterErrors, HostsFailAtTheValueThatIsNext) {
    const auto member = failure([](JSONWriter& writer) { beginMember(writer), writer.fail("no price"); });
    EXPECT_EQ(member.kind(), Kind::host);
    EXPECT_EQ(member.path(), R"($.items[1]["unit price"])");
    EXPECT_EQ(member.message(), "no price");
    const auto object = failure([](JSONWriter& writer) {
        beginMember(writer);
        writer.writeNull();
        writer.fail("no price", Kind::invalidValue);
    });
    EXPECT_EQ(object.kind(), Kind::invalidValue);
    EXPECT_EQ(object.path(), "$.items[1]");
    const auto element = failure([](JSONWriter& writer) {
        beginMember(writer);
        writer.writeNull();
        writer.endObject();
        writer.fail("no more");
    });
    EXPECT_EQ(element.path(), "$.items[2]");
}

TEST(JSONWriterErrors, HostThatFailsAndThinksBetterOfItMayGoOn) {
    JSONWriter writer;
    writer.beginArray();
    EXPECT_THROW(writer.fail("not yet"), JSONError);
    writer.writeInteger(1);
    writer.endArray();
    EXPECT_EQ(std::move(writer).takeText(), "[1]");
}

TEST(JSONWriterErrors, LoseTheTextSoThatAllThatFollowsFailsAlike) {
    JSONWriter writer;
    writer.beginObject();
    writer.key("ill");
    EXPECT_THROW(writer.writeText("\xFF"), JSONError);
    const auto expectFailure = [&](FunctionRef<void()> call) {
        try {
            call();
            ADD_FAILURE() << "did not fail";
        } catch (const JSONError& error) {
            EXPECT_EQ(error.kind(), Kind::illFormedText);
            EXPECT_EQ(error.path(), "$.ill");
        }
    };
    expectFailure([&] { writer.writeNull(); });
    expectFailure([&] { writer.writeText("well"); });
    expectFailure([&] { writer.writeNumber(std::nan("")); });
    expectFailure([&] { writer.writeValue(Value::Dictionary()); });
    expectFailure([&] { writer.key("another"); });
    expectFailure([&] { writer.beginArray(); });
    expectFailure([&] { writer.endObject(); });
    expectFailure([&] { writer.fail("another"); });
    expectFailure([&] { static_cast<void>(std::move(writer).takeData()); });
}

TEST(JSONWriterErrors, LeaveTheNextWriterAlone) {
    for (int count = 0; count < 3; ++count) {
        EXPECT_EQ(failure([](JSONWriter& writer) { beginMember(writer), writer.writeText("\xFF"); }).path(),
                  R"($.items[1]["unit price"])");
        JSONWriter writer({.sortedKeys = true});
        writer.writeValue(Value::Dictionary{{"a", 1}});
        EXPECT_EQ(std::move(writer).takeText(), R"({"a":1})");
    }
}
