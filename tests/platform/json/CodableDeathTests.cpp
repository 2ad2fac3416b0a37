// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/JSONDecoder.h>
#include <VorlanFoundation/Platform/JSONEncoder.h>
#include <VorlanFoundation/Platform/RawValues.h>

#include <gtest/gtest.h>

#include <array>
#include <string_view>
#include <utility>

namespace {
enum class Theme { light, dark };
} // namespace

template <>
struct vorlan::RawValues<Theme> {
    static constexpr std::array cases{std::pair(Theme::light, std::string_view("light"))};
};

using namespace vorlan;

namespace {

struct Alike {
    int userID = 0;
    int userId = 0;
};
VORLAN_CODABLE(Alike, userID, userId)

struct Silent {
    void encode(JSONWriter&) const {}
};
struct Talkative {
    void encode(JSONWriter& writer) const {
        writer.writeNull();
        writer.writeNull();
    }
};
struct Unfinished {
    void encode(JSONWriter& writer) const { writer.beginArray(); }
};
struct Keyless {
    void encode(JSONWriter& writer) const {
        writer.beginObject();
        writer.writeNull();
    }
};
struct Lost {
    static Lost decode(JSONReader& reader) {
        reader.enterArray();
        static_cast<void>(reader.nextKey());
        return {};
    }
};

const JSONStrategies snakeCase{.keys = JSONKeys::snakeCase};

class CodableDeathTest : public ::testing::Test {};

} // namespace

TEST_F(CodableDeathTest, TwoMembersOfOneNameInAStyleStopTheProcess) {
    EXPECT_DEATH(JSONEncoder{.strategies = snakeCase}.encode(Alike()), "Fatal error: .*user_id");
    EXPECT_DEATH(JSONDecoder{.strategies = snakeCase}.decode<Alike>("{}"), "Fatal error: .*user_id");
}

TEST_F(CodableDeathTest, DepthsOutOfTheirRangeStopTheProcess) {
    for (const std::size_t depth : {0U, 10'001U}) {
        EXPECT_DEATH(JSONEncoder{.maximumDepth = depth}.encode(1), "Fatal error: .*[Dd]epth");
        EXPECT_DEATH(JSONDecoder{.maximumDepth = depth}.decode<int>("1"), "Fatal error: .*[Dd]epth");
    }
}

TEST_F(CodableDeathTest, SizesThatNoTextMayHaveStopTheProcess) {
    EXPECT_DEATH(JSONDecoder{.maximumSize = 4'000'000'001}.decode<int>("1"), "Fatal error: .*[Ss]ize");
}

TEST_F(CodableDeathTest, EnumerationWithoutSuchACaseStopsTheProcess) {
    EXPECT_DEATH(JSONEncoder().encode(Theme::dark), "the enumeration has no such case");
}

TEST_F(CodableDeathTest, HandCodingThatWritesNoCompleteValueStopsTheProcess) {
    EXPECT_DEATH(JSONEncoder().encode(Silent()), "Fatal error: ");
    EXPECT_DEATH(JSONEncoder().encode(Unfinished()), "Fatal error: ");
    EXPECT_DEATH(JSONEncoder().encode(Talkative()), "Fatal error: ");
    EXPECT_DEATH(JSONEncoder().encode(Keyless()), "Fatal error: .*key");
}

TEST_F(CodableDeathTest, HandCodingThatReadsOutOfOrderStopsTheProcess) {
    EXPECT_DEATH(JSONDecoder().decode<Lost>("[1]"), "Fatal error: .*(key|object)");
}
