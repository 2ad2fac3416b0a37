// SPDX-License-Identifier: Apache-2.0

// Values of a host's types to and from JSON, where what fails is an absent result or a call of a handler.

#include <VorlanFoundation/Persistence/JSONCoding.h>

#include "tests/persistence/CodableHosts.h"
#include "tests/persistence/CodingAnswers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <latch>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using ::testing::HasSubstr;
using tests::Answer;
using tests::Appointment;
using tests::asText;
using tests::Measurement;
using tests::Profile;
using tests::Stubborn;
using tests::Unruly;

namespace {

const JSONStrategies iso{.dates = JSONDates::iso8601};

Data bytes(std::string_view text) {
    return dataFromText(text);
}

// Which handlers of an encoding were called.
struct EncodingAnswer {
    std::vector<std::string> calls;
    std::string text;
    std::optional<JSONError::Kind> kind;

    template <class T>
    static EncodingAnswer of(const T& value, const JSONEncoder& encoder = {}) {
        EncodingAnswer answer;
        const auto here = std::this_thread::get_id();
        toJSONData(
            value, encoder,
            [&](const Data& data) {
                answer.calls.emplace_back(here == std::this_thread::get_id() ? "success" : "elsewhere");
                answer.text = textFromData(data);
            },
            [&](const NSError& error) {
                answer.calls.emplace_back(here == std::this_thread::get_id() ? "failure" : "elsewhere");
                answer.text = error.domain();
                if (const auto* ours = dynamic_cast<const JSONError*>(&error)) answer.kind = ours->kind();
            });
        return answer;
    }
};

} // namespace

TEST(JSONCoding, ValueIsTheSameAfterAWayThroughJSON) {
    const auto ada = tests::ada();
    const auto json = toJSONData(ada, JSONEncoder());
    ASSERT_TRUE(json);
    EXPECT_EQ(fromJSONData<Profile>(*json, JSONDecoder()), ada);
}

TEST(JSONCoding, MembersAreWrittenInTheirOrderAndDatesInSecondsSinceTheReferenceDate) {
    const Profile profile{"Ada", Date(60.5), {{"Main Street", 5}}};
    EXPECT_EQ(asText(toJSONData(profile, JSONEncoder())),
              R"({"name":"Ada","born":60.5,"addresses":[{"street":"Main Street","number":5}]})");
    EXPECT_EQ(asText(toJSONData(Profile{"Bo", std::nullopt, {}}, JSONEncoder())),
              R"({"name":"Bo","addresses":[]})");
}

TEST(JSONCoding, StandardTypesAreCodedToo) {
    EXPECT_EQ(asText(toJSONData(std::vector<int>{1, 2}, JSONEncoder())), "[1,2]");
    EXPECT_EQ(asText(toJSONData(std::string("a"), JSONEncoder())), "\"a\"");
    EXPECT_EQ(asText(toJSONData(true, JSONEncoder())), "true");
    EXPECT_EQ(fromJSONData<std::vector<int>>(bytes("[1,2]"), JSONDecoder()), (std::vector<int>{1, 2}));
    EXPECT_EQ(fromJSONData<int>(bytes("7"), JSONDecoder()), 7);
    EXPECT_EQ((fromJSONData<std::map<std::string, bool>>(bytes(R"({"a":true})"), JSONDecoder())),
              (std::map<std::string, bool>{{"a", true}}));
}

TEST(JSONCoding, DataIsDecodedWithTheDecoderThatIsGiven) {
    const auto json = bytes(R"({"title":"Tea","when":"2001-01-01T00:01:00Z"})");
    EXPECT_EQ(fromJSONData<Appointment>(json, {.strategies = iso}), (Appointment{"Tea", Date(60)}));
    EXPECT_EQ(fromJSONData<Appointment>(json, JSONDecoder()), std::nullopt);
    Answer<Appointment> answer;
    fromJSONData<Appointment>(json, JSONDecoder{.strategies = iso}, answer.handler());
    ASSERT_TRUE(answer.content && *answer.content);
    EXPECT_EQ(**answer.content, (Appointment{"Tea", Date(60)}));
}

TEST(JSONCoding, ValueIsEncodedWithTheEncoderThatIsGiven) {
    const Appointment tea{"Tea", Date(60)};
    EXPECT_EQ(asText(toJSONData(tea, {.strategies = iso})),
              R"({"title":"Tea","when":"2001-01-01T00:01:00Z"})");
    EXPECT_EQ(EncodingAnswer::of(tea, {.strategies = iso}).text,
              R"({"title":"Tea","when":"2001-01-01T00:01:00Z"})");
    EXPECT_THAT(asText(toJSONData(tea, {.prettyPrinted = true})).value_or(""), HasSubstr("\n"));
}

TEST(JSONCoding, DataThatDoesNotDecodeIsAbsent) {
    for (const char* text :
         {"", " ", "{", "nonsense", "\xFF", "null", "[]", "7", "{}", R"({"name":5,"addresses":[]})",
          R"({"name":"Ada"})", R"({"name":"Ada","addresses":[{"street":"a"}]})",
          R"({"name":"Ada","addresses":[]} {})", R"({"name":"Ada","addresses":[],})",
          "{\"name\":\"\xC0\x80\",\"addresses\":[]}"})
        EXPECT_EQ(fromJSONData<Profile>(bytes(text), JSONDecoder()), std::nullopt) << text;
}

TEST(JSONCoding, ExceptionOfAHostsOwnDecodingIsAbsentToo) {
    EXPECT_EQ(fromJSONData<Stubborn>(bytes("1"), JSONDecoder()), std::nullopt);
    EXPECT_EQ(fromJSONData<Unruly>(bytes("1"), JSONDecoder()), std::nullopt);
    EXPECT_EQ(fromJSONData<std::vector<Unruly>>(bytes("[1]"), JSONDecoder()), std::nullopt);
}

TEST(JSONCoding, HandlerIsCalledOnceWithTheValueBeforeDecodingReturns) {
    Answer<Profile> answer;
    fromJSONData<Profile>(bytes(R"({"name":"Ada","addresses":[]})"), JSONDecoder(), answer.handler());
    EXPECT_TRUE(answer.cameOnceOnThisThread());
    ASSERT_TRUE(answer.content && *answer.content);
    EXPECT_EQ((*answer.content)->name, "Ada");
}

TEST(JSONCoding, HandlerIsCalledOnceWithTheDecodersErrorBeforeDecodingReturns) {
    Answer<Profile> answer;
    fromJSONData<Profile>(bytes(R"({"name":"Ada","addresses":[{"street":"a","number":"b"}]})"), JSONDecoder(),
                          answer.handler());
    EXPECT_TRUE(answer.cameOnceOnThisThread());
    ASSERT_TRUE(answer.content && !*answer.content);
    const auto* error = answer.content->errorAs<JSONError>();
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->kind(), JSONError::Kind::typeMismatch);
    EXPECT_EQ(error->path(), "$.addresses[0].number");
    EXPECT_EQ(answer.content->error().domain(), "VorlanFoundation.JSONError");
    EXPECT_EQ(answer.content->error().code(), static_cast<int>(JSONError::Kind::typeMismatch));
}

TEST(JSONCoding, HandlerIsCalledOnceWhenAHostsOwnDecodingThrows) {
    Answer<Stubborn> stubborn;
    fromJSONData<Stubborn>(bytes("1"), JSONDecoder(), stubborn.handler());
    EXPECT_TRUE(stubborn.cameOnceOnThisThread());
    ASSERT_TRUE(stubborn.content && !*stubborn.content);
    EXPECT_THAT(stubborn.content->error().what(), HasSubstr("no such form"));
    Answer<Unruly> unruly;
    fromJSONData<Unruly>(bytes("1"), JSONDecoder(), unruly.handler());
    EXPECT_TRUE(unruly.cameOnceOnThisThread());
    EXPECT_TRUE(unruly.content && !*unruly.content);
}

TEST(JSONCoding, HandlerMayTakeItsResultAsItLikes) {
    const auto json = bytes("7");
    int sum = 0;
    fromJSONData<int>(json, JSONDecoder(),
                      [&](Result<int> result) { sum += *result; }); // NOLINT(*-unnecessary-value-*)
    fromJSONData<int>(json, JSONDecoder(), [&](const Result<int>& result) { sum += *result; });
    fromJSONData<int>(json, JSONDecoder(), [&](Result<int>&& result) { sum += *std::move(result); });
    fromJSONData<int>(json, JSONDecoder(), [&](const auto& result) { sum += *result; });
    const auto own = [&, one = std::make_unique<int>(1)](const Result<int>& result) {
        sum += *result * *one;
    };
    fromJSONData<int>(json, JSONDecoder(), own);
    EXPECT_EQ(sum, 35);
}

TEST(JSONCoding, ValueThatCannotBeCopiedIsDecodedToo) {
    using Pointer = std::unique_ptr<int>;
    const auto found = fromJSONData<Pointer>(bytes("7"), JSONDecoder());
    ASSERT_TRUE(found && *found);
    EXPECT_EQ(**found, 7);
    Pointer kept;
    fromJSONData<Pointer>(bytes("8"), JSONDecoder(),
                          [&](Result<Pointer> result) { kept = *std::move(result); });
    ASSERT_TRUE(kept);
    EXPECT_EQ(*kept, 8);
}

TEST(JSONCoding, ValueThatCannotBeEncodedIsAbsent) {
    EXPECT_EQ(toJSONData(std::numeric_limits<double>::quiet_NaN(), JSONEncoder()), std::nullopt);
    EXPECT_EQ(toJSONData(Measurement{"a", std::numeric_limits<double>::infinity()}, JSONEncoder()),
              std::nullopt);
    EXPECT_EQ(toJSONData(Measurement{"\xFF", 1}, JSONEncoder()), std::nullopt);
    EXPECT_EQ(toJSONData(std::map<std::string, int>{{"\xFF", 1}}, JSONEncoder()), std::nullopt);
    EXPECT_EQ(toJSONData(Date(std::numeric_limits<double>::infinity()), JSONEncoder()), std::nullopt);
    EXPECT_EQ(toJSONData(Date(1e12), {.strategies = iso}), std::nullopt) << "the year has five digits";
    EXPECT_EQ(toJSONData(tests::tooDeepForADefaultCoder(), JSONEncoder()), std::nullopt);
    EXPECT_EQ(toJSONData(Stubborn(), JSONEncoder()), std::nullopt);
    EXPECT_EQ(toJSONData(Unruly(), JSONEncoder()), std::nullopt);
    EXPECT_EQ(toJSONData(std::vector<Unruly>(2), JSONEncoder()), std::nullopt);
}

TEST(JSONCoding, OnlyTheSuccessHandlerIsCalledWhenAValueIsEncoded) {
    const auto answer = EncodingAnswer::of(std::vector<int>{1, 2});
    EXPECT_EQ(answer.calls, std::vector<std::string>{"success"});
    EXPECT_EQ(answer.text, "[1,2]");
}

TEST(JSONCoding, OnlyTheFailureHandlerIsCalledWhenAValueIsNotEncoded) {
    const std::vector<std::string> failure{"failure"};
    const auto number = EncodingAnswer::of(Measurement{"a", std::numeric_limits<double>::quiet_NaN()});
    EXPECT_EQ(number.calls, failure);
    EXPECT_EQ(number.kind, JSONError::Kind::nonFinite);
    const auto text = EncodingAnswer::of(Measurement{"\xFF", 1});
    EXPECT_EQ(text.calls, failure);
    EXPECT_EQ(text.kind, JSONError::Kind::illFormedText);
    const auto depth = EncodingAnswer::of(tests::tooDeepForADefaultCoder());
    EXPECT_EQ(depth.calls, failure);
    EXPECT_EQ(depth.kind, JSONError::Kind::tooDeep);
    EXPECT_EQ(EncodingAnswer::of(Stubborn()).calls, failure);
    EXPECT_EQ(EncodingAnswer::of(Unruly()).calls, failure);
}

TEST(JSONCoding, ExceptionOfADecodingsHandlerPassesAndTheHandlerIsNotCalledAgain) {
    int calls = 0;
    const auto handler = [&](const Result<int>&) {
        ++calls;
        throw std::logic_error("the host's own");
    };
    for (const char* text : {"7", "no JSON"}) {
        calls = 0;
        EXPECT_THROW(fromJSONData<int>(bytes(text), JSONDecoder(), handler), std::logic_error);
        EXPECT_EQ(calls, 1);
    }
    for (const auto& value : {Value(7), Value(Date(7))}) {
        calls = 0;
        const Value::Dictionary dictionary{{"a", value}};
        EXPECT_THROW(fromJSON<int>(dictionary, JSONDecoder(), handler), std::logic_error);
        EXPECT_EQ(calls, 1);
    }
}

TEST(JSONCoding, ExceptionOfAnEncodingsHandlerPassesAndNoOtherHandlerIsCalled) {
    int calls = 0;
    // Not to be mistaken for an error of the encoder.
    const auto handler = [&](const auto&) {
        ++calls;
        throw JSONError(JSONError::Kind::host, "the host's own", "$");
    };
    const auto never = [](const auto&) { ADD_FAILURE() << "called, too"; };
    EXPECT_THROW(toJSONData(1, JSONEncoder(), handler, never), JSONError);
    EXPECT_THROW(toJSONData(Stubborn(), JSONEncoder(), never, handler), JSONError);
    EXPECT_EQ(calls, 2);
}

TEST(JSONCoding, HandlerMayCodeOnceMore) {
    std::optional<Data> again;
    fromJSONData<std::vector<int>>(
        bytes("[1,2]"), JSONDecoder(), [&](const Result<std::vector<int>>& result) {
            toJSONData(
                *result, JSONEncoder(), [&](const Data& data) { again = data; }, [](const NSError&) {});
        });
    EXPECT_EQ(asText(again), "[1,2]");
}

TEST(JSONCoding, HandlersRunOnTheThreadThatCalls) {
    std::jthread([] {
        Answer<int> answer;
        fromJSONData<int>(bytes("7"), JSONDecoder(), answer.handler());
        EXPECT_TRUE(answer.cameOnceOnThisThread());
        fromJSON<int>({{"when", Date(0)}}, JSONDecoder(), answer.handler());
        EXPECT_EQ(answer.calls, 2);
        EXPECT_EQ(answer.thread, std::this_thread::get_id());
        EXPECT_EQ(EncodingAnswer::of(7).calls, std::vector<std::string>{"success"});
        EXPECT_EQ(EncodingAnswer::of(Stubborn()).calls, std::vector<std::string>{"failure"});
    }).join();
}

TEST(JSONCoding, OneEncoderAndDecoderServeManyThreads) {
    constexpr int count = 8;
    const JSONEncoder encoder{.sortedKeys = true, .strategies = {.keys = JSONKeys::snakeCase}};
    const JSONDecoder decoder{.strategies = {.keys = JSONKeys::snakeCase}};
    std::latch together(count);
    std::atomic<int> wrong = 0;
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < count; ++thread)
            threads.emplace_back([&, thread] {
                auto own = tests::ada();
                own.name = std::to_string(thread);
                together.arrive_and_wait();
                for (int round = 0; round < 100; ++round) {
                    const auto json = toJSONData(own, encoder);
                    if (!json || fromJSONData<Profile>(*json, decoder) != own) ++wrong;
                    if (fromJSONData<Profile>(bytes("{}"), decoder)) ++wrong;
                    if (toJSONData(Stubborn(), encoder)) ++wrong;
                }
            });
    }
    EXPECT_EQ(wrong, 0);
}
