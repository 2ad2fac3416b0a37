// SPDX-License-Identifier: Apache-2.0
// What RFC 8259 says is JSON is read, and nothing else; whichever way it is read.

#include "tests/platform/json/JSONCorpus.h"
#include "tests/platform/json/JSONRecogniser.h"

#include <VorlanFoundation/Platform/JSONDecoder.h>
#include <VorlanFoundation/Platform/JSONEncoder.h>
#include <VorlanFoundation/Platform/JSONReader.h>

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <string_view>

using namespace vorlan;
using tests::JSONText;
using tests::JSONTopic;
using tests::Outcome;
using tests::Verdict;

namespace {

// Has none of the members of the texts in this file.
struct Stranger {};
VORLAN_CODABLE(Stranger)

Outcome outcomeOf(JSONError::Kind kind) {
    EXPECT_TRUE(kind == JSONError::Kind::malformed || kind == JSONError::Kind::outOfRange ||
                kind == JSONError::Kind::tooDeep)
        << "an error of kind " << static_cast<int>(kind);
    if (kind == JSONError::Kind::outOfRange) return Outcome::outOfRange;
    return kind == JSONError::Kind::tooDeep ? Outcome::tooDeep : Outcome::malformed;
}

Outcome outcomeOf(std::string_view text, const std::function<void()>& work) {
    try {
        work();
        return Outcome::value;
    } catch (const JSONError& error) {
        EXPECT_TRUE(error.byteOffset().has_value()) << error.what();
        EXPECT_LE(error.byteOffset().value_or(0), text.size()) << error.what();
        EXPECT_EQ(error.path().substr(0, 1), "$");
        EXPECT_FALSE(error.message().empty());
        return outcomeOf(error.kind());
    }
}

Outcome afterReading(std::string_view text) {
    return outcomeOf(text, [&] {
        JSONReader reader(text);
        static_cast<void>(reader.readValue());
        reader.finish();
    });
}

Outcome afterSkipping(std::string_view text) {
    return outcomeOf(text, [&] {
        JSONReader reader(text);
        reader.skip();
        reader.finish();
    });
}

template <class T>
Outcome afterDecoding(std::string_view text) {
    return outcomeOf(text, [&] { static_cast<void>(JSONDecoder().decode<T>(text)); });
}

// What is skipped is held to the grammar only.
Outcome whenSkipped(const JSONText& text) {
    return text.outcome == Outcome::outOfRange ? Outcome::value : text.outcome;
}

std::string compact(const Value& value) {
    return JSONEncoder{.sortedKeys = true}.encodeText(value);
}

void expectOneOutcomeAlone(const JSONText& text) {
    EXPECT_EQ(afterReading(text.text), text.outcome);
    EXPECT_EQ(afterSkipping(text.text), whenSkipped(text));
    EXPECT_EQ(afterDecoding<Value>(text.text), text.outcome);
}

void expectOneOutcomeWithinOthers(const JSONText& text) {
    const std::string array = "[0," + text.text + ",1]";
    EXPECT_EQ(afterReading(array), text.outcome);
    EXPECT_EQ(afterSkipping(array), whenSkipped(text));
    EXPECT_EQ(afterDecoding<Value>(array), text.outcome);
    const std::string object = R"({"x":)" + text.text + R"(,"y":1})";
    EXPECT_EQ(afterReading(object), text.outcome);
    EXPECT_EQ(afterDecoding<Stranger>(object), whenSkipped(text));
}

void expectTheWayBack(const JSONText& text) {
    const auto value = JSONDecoder().decode<Value>(text.text);
    const std::string written = compact(value);
    if (text.value) {
        EXPECT_EQ(value, *text.value);
        EXPECT_EQ(written, compact(*text.value)); // 0.0 equals -0.0, and they are written differently
    }
    EXPECT_EQ(JSONDecoder().decode<Value>(written), value);
    EXPECT_EQ(compact(JSONDecoder().decode<Value>(written)), written);
    EXPECT_EQ(tests::judgementOf(written), tests::Judgement::json);
}

// By topic and not by text: a process for each of them would take longer than all that they show.
class JSONConformance : public ::testing::TestWithParam<JSONTopic> {};

} // namespace

TEST_P(JSONConformance, IsTheSameWhicheverWayATextIsRead) {
    const auto texts = GetParam().texts();
    EXPECT_FALSE(texts.empty());
    for (const JSONText& text : texts) {
        SCOPED_TRACE(text.name);
        expectOneOutcomeAlone(text);
        if (text.standsWithinOthers) expectOneOutcomeWithinOthers(text);
        if (text.outcome == Outcome::value) expectTheWayBack(text);
    }
}

INSTANTIATE_TEST_SUITE_P(RFC8259, JSONConformance, ::testing::ValuesIn(tests::jsonTopics()),
                         [](const auto& topic) { return topic.param.name; });

TEST(JSONCorpus, AgreesWithTheGrammar) {
    for (const JSONText& text : tests::jsonCorpus()) {
        SCOPED_TRACE(text.name);
        const auto judgement = tests::judgementOf(text.text);
        EXPECT_EQ(judgement == tests::Judgement::noJSON, text.outcome == Outcome::malformed);
        EXPECT_EQ(judgement == tests::Judgement::tooDeep, text.outcome == Outcome::tooDeep);
        if (!text.standsWithinOthers) continue;
        EXPECT_EQ(tests::judgementOf("[0," + text.text + ",1]"), judgement);
        EXPECT_EQ(tests::judgementOf(R"({"x":)" + text.text + R"(,"y":1})"), judgement);
    }
}

TEST(JSONCorpus, HasEachTextOnce) {
    std::set<std::string> names;
    std::set<std::string> texts;
    for (const JSONText& text : tests::jsonCorpus()) {
        EXPECT_TRUE(names.insert(text.name).second) << text.name;
        EXPECT_TRUE(texts.insert(text.text).second) << text.name;
        EXPECT_EQ(text.verdict == Verdict::accept,
                  text.verdict != Verdict::either && text.outcome == Outcome::value)
            << text.name;
    }
    EXPECT_GE(names.size(), 320U);
}
