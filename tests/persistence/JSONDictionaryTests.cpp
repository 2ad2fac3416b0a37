// SPDX-License-Identifier: Apache-2.0

// Dictionaries to JSON, and from dictionaries to values of a host's types.

#include <VorlanFoundation/Persistence/JSONCoding.h>
#include <VorlanFoundation/Platform/JSONSerialization.h>

#include "tests/persistence/CodableHosts.h"
#include "tests/persistence/CodingAnswers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using tests::Answer;
using tests::Appointment;
using tests::asText;
using tests::Profile;
using tests::Stubborn;

namespace outer::inner {

struct Response {
    int number = 0;
};
VORLAN_CODABLE(Response, number)

struct Catalogue {
    struct Item {
        std::string title;
    };
};
VORLAN_CODABLE(Catalogue::Item, title)

template <class T>
struct Page {
    static Page decode(JSONReader& reader) {
        reader.skip();
        return {};
    }
};

} // namespace outer::inner

namespace {

struct Hidden {};
VORLAN_CODABLE(Hidden)

constexpr double infinity = std::numeric_limits<double>::infinity();

// Dictionaries, all of which hold something that JSON does not have.
std::vector<Value::Dictionary> unfit() {
    Value deep;
    for (int level = 0; level < 600; ++level) {
        Value::Array around;
        around.push_back(std::move(deep));
        deep = Value(std::move(around));
    }
    return {{{"when", Date(0)}},
            {{"data", Data()}},
            {{"number", infinity}},
            {{"number", -infinity}},
            {{"number", std::numeric_limits<double>::quiet_NaN()}},
            {{"text", "\xFF"}},
            {{"\xFF", "text"}},
            {{"fit", 1}, {"list", Value::Array{1, Date(0)}}},
            {{"inner", Value::Dictionary{{"when", Value::Array{Value::Dictionary{{"a", Date(0)}}}}}}},
            {{"deep", deep}}};
}

const Value::Dictionary fit{{"text", "a\"\\/\n\x01é👋"},
                            {"yes", true},
                            {"count", std::numeric_limits<std::uint64_t>::max()},
                            {"ratio", 0.1},
                            {"nothing", nullptr},
                            {"list", Value::Array{1, Value::Dictionary{}, Value(Value::Array{})}}};

template <class T>
Answer<T> replyTo(const Value::Dictionary& dictionary, const JSONDecoder& decoder = {}) {
    Answer<T> answer;
    fromJSON<T>(dictionary, decoder, answer.handler());
    return answer;
}

// The domain of the error for a dictionary that is no JSON.
template <class T>
std::string domainFor() {
    const auto reply = replyTo<T>({{"when", Date(0)}});
    return reply.content && !*reply.content ? reply.content->error().domain() : "no error";
}

class Window : public EncodableType {
public:
    explicit Window(Value::Dictionary content) : content_(std::move(content)) {}
    Value::Dictionary dictionaryRepresentation() const override { return content_; }

private:
    Value::Dictionary content_;
};

class Closed : public EncodableType {
public:
    Value::Dictionary dictionaryRepresentation() const override { throw std::logic_error("closed"); }
};

// The one thing that is required of it.
struct Theme {
    explicit Theme(const Value::Dictionary& dictionary) : dark(dictionary.contains("dark")) {}
    bool dark;
};
static_assert(JSONDecodable<Theme>);
static_assert(!JSONDecodable<Profile>);
static_assert(!JSONDecodable<int>);

} // namespace

TEST(JSONDictionary, IsPreparedOnOneLineWithItsKeysInOrder) {
    const Value::Dictionary dictionary{{"b", Value::Array{1, "two", nullptr}}, {"a", true}, {"c", 0.5}};
    EXPECT_EQ(asText(prepareJSONData(dictionary, false)), R"({"a":true,"b":[1,"two",null],"c":0.5})");
    EXPECT_EQ(prepareJSONString(dictionary, false), R"({"a":true,"b":[1,"two",null],"c":0.5})");
    EXPECT_EQ(prepareJSONString({}, false), "{}");
}

TEST(JSONDictionary, IsPreparedOnManyLinesWhenPrettified) {
    const auto text = prepareJSONString(fit, true);
    ASSERT_TRUE(text);
    EXPECT_GT(std::ranges::count(*text, '\n'), 6);
    EXPECT_EQ(asText(prepareJSONData(fit, true)), text);
    EXPECT_EQ(std::ranges::count(prepareJSONString(fit, false).value_or("\n"), '\n'), 0);
}

TEST(JSONDictionary, SaysTheSameInEachForm) {
    for (const bool prettify : {false, true}) {
        const auto data = prepareJSONData(fit, prettify);
        ASSERT_TRUE(data);
        EXPECT_EQ(JSONSerialization::jsonObject(*data), Value(fit));
    }
}

TEST(JSONDictionary, WithAValueThatIsNotJSONIsAbsent) {
    for (const auto& dictionary : unfit())
        for (const bool prettify : {false, true}) {
            EXPECT_EQ(prepareJSONData(dictionary, prettify), std::nullopt);
            EXPECT_EQ(prepareJSONString(dictionary, prettify), std::nullopt);
        }
}

TEST(JSONDictionary, BecomesAValueOfAHostsType) {
    const auto reply = replyTo<Profile>(
        {{"name", "Ada"},
         {"born", 60},
         {"addresses", Value::Array{Value::Dictionary{{"street", "Main Street"}, {"number", 5.0}}}}});
    EXPECT_TRUE(reply.cameOnceOnThisThread());
    ASSERT_TRUE(reply.content && *reply.content);
    EXPECT_EQ(**reply.content, (Profile{"Ada", Date(60), {{"Main Street", 5}}}));
}

TEST(JSONDictionary, ThatIsNotJSONCallsTheHandlerOnceWithAnErrorOfItsOwn) {
    for (const auto& dictionary : unfit()) {
        const auto reply = replyTo<Profile>(dictionary);
        EXPECT_TRUE(reply.cameOnceOnThisThread());
        ASSERT_TRUE(reply.content && !*reply.content);
        const NSError& error = reply.content->error();
        EXPECT_EQ(error.domain(), "Cannot decode response to Profile");
        EXPECT_EQ(error.code(), 100'500);
        EXPECT_TRUE(error.userInfo().empty());
        EXPECT_EQ(reply.content->errorAs<JSONError>(), nullptr);
    }
}

TEST(JSONDictionary, ErrorNamesTheTypeWithoutWhatItStandsIn) {
    struct Local {
        static Local decode(JSONReader& reader) {
            reader.skip();
            return {};
        }
    };
    EXPECT_EQ(domainFor<outer::inner::Response>(), "Cannot decode response to Response");
    EXPECT_EQ(domainFor<outer::inner::Catalogue::Item>(), "Cannot decode response to Item");
    EXPECT_EQ(domainFor<Hidden>(), "Cannot decode response to Hidden");
    EXPECT_EQ(domainFor<Local>(), "Cannot decode response to Local");
    EXPECT_EQ(domainFor<int>(), "Cannot decode response to int");
    EXPECT_THAT(domainFor<outer::inner::Page<Profile>>(), StartsWith("Cannot decode response to Page<"));
    EXPECT_THAT(domainFor<std::vector<Profile>>(), StartsWith("Cannot decode response to vector<"));
}

TEST(JSONDictionary, ThatDoesNotDecodeCallsTheHandlerOnceWithTheDecodersError) {
    const auto reply = replyTo<Profile>({{"name", 5}, {"addresses", Value::Array{}}});
    EXPECT_TRUE(reply.cameOnceOnThisThread());
    ASSERT_TRUE(reply.content && !*reply.content);
    const auto* error = reply.content->errorAs<JSONError>();
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->kind(), JSONError::Kind::typeMismatch);
    EXPECT_EQ(error->path(), "$.name");
    EXPECT_NE(error->code(), 100'500);
}

TEST(JSONDictionary, IsDecodedByADefaultDecoderWhicheverIsGiven) {
    const JSONDecoder strict{.strategies = {.dates = JSONDates::iso8601, .keys = JSONKeys::snakeCase},
                             .unknownMembers = JSONUnknownMembers::refuse,
                             .maximumDepth = 1,
                             .maximumSize = 1};
    const auto number = replyTo<Appointment>(
        {{"title", "Tea"}, {"when", 60}, {"more", Value::Array{Value(Value::Array{})}}}, strict);
    EXPECT_TRUE(number.cameOnceOnThisThread());
    ASSERT_TRUE(number.content && *number.content);
    EXPECT_EQ(**number.content, (Appointment{"Tea", Date(60)}));
    const auto text = replyTo<Appointment>({{"title", "Tea"}, {"when", "2001-01-01T00:01:00Z"}}, strict);
    EXPECT_TRUE(text.cameOnceOnThisThread());
    ASSERT_TRUE(text.content);
    EXPECT_FALSE(*text.content);
}

TEST(JSONDictionary, HandlerIsCalledOnceWhenAHostsOwnDecodingThrows) {
    const auto stubborn = replyTo<Stubborn>(Value::Dictionary{});
    EXPECT_TRUE(stubborn.cameOnceOnThisThread());
    ASSERT_TRUE(stubborn.content && !*stubborn.content);
    EXPECT_THAT(stubborn.content->error().what(), HasSubstr("no such form"));
}

TEST(EncodableType, IsTheJSONOfItsDictionaryOnOneLine) {
    const Window window({{"width", 800}, {"recent", Value::Array{"a", "b"}}});
    EXPECT_EQ(asText(window.toJSONData()), R"({"recent":["a","b"],"width":800})");
    EXPECT_EQ(window.toJSONString(), R"({"recent":["a","b"],"width":800})");
    EXPECT_EQ(Window({}).toJSONString(), "{}");
    EXPECT_EQ(Window(fit).toJSONString(), prepareJSONString(fit, false));
}

TEST(EncodableType, WithAValueThatIsNotJSONIsAbsent) {
    for (const auto& dictionary : unfit()) {
        EXPECT_EQ(Window(dictionary).toJSONData(), std::nullopt);
        EXPECT_EQ(Window(dictionary).toJSONString(), std::nullopt);
    }
}

TEST(EncodableType, ExceptionOfAHostsOwnRepresentationPasses) {
    EXPECT_THROW(Closed().toJSONData(), std::logic_error);
    EXPECT_THROW(Closed().toJSONString(), std::logic_error);
}

TEST(EncodableType, IsReachedThroughItsBase) {
    const std::unique_ptr<const EncodableType> window = std::make_unique<Window>(Value::Dictionary{{"a", 1}});
    EXPECT_EQ(window->toJSONString(), R"({"a":1})");
    EXPECT_EQ(window->dictionaryRepresentation(), (Value::Dictionary{{"a", 1}}));
}
