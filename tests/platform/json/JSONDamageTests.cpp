// SPDX-License-Identifier: Apache-2.0
// Texts that were damaged on their way end with an error or a value, and are judged as the grammar judges them.

#include "tests/platform/json/JSONRandomValues.h"
#include "tests/platform/json/JSONRecogniser.h"

#include <VorlanFoundation/Platform/JSONDecoder.h>
#include <VorlanFoundation/Platform/JSONEncoder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

using namespace vorlan;
using Kind = JSONError::Kind;

namespace {

struct Item {
    std::string name;
    std::optional<double> price;
    std::tuple<int, bool> size;
};
VORLAN_CODABLE(Item, name, price, size)

struct Order {
    std::uint32_t id = 0;
    Date at{0};
    Data receipt;
    std::vector<Item> items;
    std::map<std::string, std::vector<float>> measures;
    std::unique_ptr<Order> next;
};
VORLAN_CODABLE(Order, id, at, receipt, items, measures, next)

struct Stranger {};
VORLAN_CODABLE(Stranger)

constexpr std::string_view whole = R"({"id": 4294967295, "at": -731340429.25, "receipt": "bGlnaHQgd28=",
    "items": [{"name": "caf\u00e9 \uD83D\uDE00 \"é€😀\"\\\n", "price": 1.5e-3, "size": [-1, true]},
              {"name": "", "price": null, "size": [0, false]}, {"size": [1e2, true], "name": "x"}],
    "measures": {"a b": [0.1, -0, 3E+2], "": []}, "unknown": [{"deep": [[], {}, [null]]}, 12.50, "\/\b"],
    "next": {"id": 1, "at": 0, "receipt": "", "items": [], "measures": {}, "next": null}})";

// A piece that matters to the grammar.
std::string_view piece(tests::JSONRandomValues& random) {
    static constexpr std::string_view pieces[] = {"{",
                                                  "}",
                                                  "[",
                                                  "]",
                                                  ",",
                                                  ":",
                                                  "\"",
                                                  "\\",
                                                  "\\u",
                                                  "\\uD800",
                                                  "\\u12",
                                                  "0",
                                                  "-",
                                                  ".",
                                                  "e",
                                                  "E+",
                                                  "1e999",
                                                  "true",
                                                  "nul",
                                                  "null",
                                                  " ",
                                                  "\n",
                                                  "\t",
                                                  "\x01",
                                                  "\x7F",
                                                  "\xC3",
                                                  "\xED\xA0\x80",
                                                  "\xFF",
                                                  "\xEF\xBB\xBF",
                                                  "/",
                                                  "/**/",
                                                  "'",
                                                  "99999999999999999999",
                                                  "\\\\",
                                                  "\\\"",
                                                  "[[[[",
                                                  "{\"a\":",
                                                  "]]",
                                                  "é",
                                                  "😀"};
    return pieces[random.below(std::size(pieces))];
}

void damage(std::string& text, tests::JSONRandomValues& random) {
    const std::size_t at = random.below(text.size() + 1);
    const std::size_t length = random.below(std::min<std::size_t>(text.size() - at, 24) + 1);
    switch (random.below(7)) {
    case 0: text.erase(at, length); break;
    case 1: text.insert(at, piece(random)); break;
    case 2: text.replace(at, length, piece(random)); break;
    case 3: text.insert(random.below(text.size() + 1), text.substr(at, length)); break;
    case 4: text.resize(at); break;
    case 5:
        text.replace(at, std::min<std::size_t>(length, 1), 1, static_cast<char>(random.below(256)));
        break;
    default: text.insert(at, 1, static_cast<char>(random.below(256))); break;
    }
}

std::string damaged(std::string_view text, tests::JSONRandomValues& random) {
    std::string copy(text);
    for (auto times = 1 + random.below(3); times > 0; --times) damage(copy, random);
    return copy;
}

template <class T>
std::optional<Kind> kindOf(const std::string& text) {
    try {
        static_cast<void>(JSONDecoder().decode<T>(text));
        return std::nullopt;
    } catch (const JSONError& error) {
        EXPECT_TRUE(error.byteOffset().has_value()) << error.what();
        EXPECT_LE(error.byteOffset().value_or(0), text.size()) << error.what();
        return error.kind();
    }
}

// What is skipped is judged by the grammar alone; what is read may, before that is known, be beyond all numbers.
void expectTheGrammarsJudgement(const std::string& text) {
    const bool isJSON = tests::judgementOf(text) == tests::Judgement::json;
    const auto asValue = kindOf<Value>(text);
    if (asValue != Kind::outOfRange) {
        EXPECT_EQ(isJSON, !asValue);
    }
    const auto skipped = kindOf<Stranger>(R"({"x":)" + text + "}");
    EXPECT_EQ(tests::judgementOf(R"({"x":)" + text + "}") == tests::Judgement::json, !skipped);
    EXPECT_TRUE(isJSON || kindOf<Order>(text));
}

} // namespace

TEST(JSONDamage, WholeTextIsRead) {
    const auto order = JSONDecoder().decode<Order>(whole);
    EXPECT_EQ(order.items.at(0).name, "café 😀 \"é€😀\"\\\n");
    EXPECT_EQ(order.next->id, 1U);
    EXPECT_EQ(tests::judgementOf(whole), tests::Judgement::json);
}

TEST(JSONDamage, EndsWithAnErrorOrAValue) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    tests::JSONRandomValues random(seed);
    for (int i = 0; i < 2000; ++i) {
        const std::string text = damaged(whole, random);
        SCOPED_TRACE(text);
        ASSERT_NO_FATAL_FAILURE(expectTheGrammarsJudgement(text));
        if (HasFailure()) return;
    }
}

TEST(JSONDamage, OfSmallTextsEndsWithAnErrorOrAValue) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    tests::JSONRandomValues random(seed);
    for (int i = 0; i < 5000; ++i) {
        const std::string text = damaged(JSONEncoder().encodeText(random.document(3)), random);
        SCOPED_TRACE(text);
        ASSERT_NO_FATAL_FAILURE(expectTheGrammarsJudgement(text));
        if (HasFailure()) return;
    }
}

TEST(JSONDamage, EveryBeginningOfATextIsNone) {
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::string text(whole.substr(0, size));
        ASSERT_EQ(kindOf<Order>(text), Kind::malformed) << text;
        ASSERT_EQ(kindOf<Value>(text), Kind::malformed) << text;
        ASSERT_EQ(kindOf<Stranger>(text), Kind::malformed) << text;
    }
}

TEST(JSONDamage, EveryByteInPlaceOfAnyOtherIsJudgedByTheGrammar) {
    constexpr std::string_view text = R"({"a":[1.5e3,"\u00e9\n"],"b":null})";
    for (std::size_t at = 0; at < text.size(); ++at)
        for (int byte = 0; byte < 256; ++byte) {
            std::string other(text);
            other[at] = static_cast<char>(byte);
            ASSERT_EQ(tests::judgementOf(other) == tests::Judgement::json, !kindOf<Value>(other)) << other;
            ASSERT_EQ(tests::judgementOf(other) == tests::Judgement::json, !kindOf<Stranger>(other)) << other;
        }
}
