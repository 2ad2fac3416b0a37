// SPDX-License-Identifier: Apache-2.0
// Types that are coded by hand.

#include "tests/platform/json/JSONErrorOf.h"

#include <VorlanFoundation/Platform/Codable.h>
#include <VorlanFoundation/Platform/JSONDecoder.h>
#include <VorlanFoundation/Platform/JSONEncoder.h>

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

using namespace vorlan;
using tests::decodingErrorOf;
using tests::encodingErrorOf;
using Kind = JSONError::Kind;

namespace {

// A temperature with its unit: "21.5 °C".
class Temperature {
public:
    explicit Temperature(double degrees) : degrees_(degrees) {}
    double degrees() const { return degrees_; }

    void encode(JSONWriter& writer) const {
        writer.beginArray();
        writer.writeNumber(degrees_);
        writer.writeText("°C");
        writer.endArray();
    }
    static Temperature decode(JSONReader& reader) {
        reader.enterArray();
        if (!reader.nextElement()) reader.fail("expected a number", Kind::invalidValue);
        const double degrees = reader.readNumber();
        if (!reader.nextElement() || reader.readText() != "°C")
            reader.fail("expected degrees", Kind::invalidValue);
        if (reader.nextElement()) reader.fail("expected a number and a unit");
        return Temperature(degrees);
    }

private:
    double degrees_;
};

// What its coding throws is chosen by its number.
struct Troubled {
    int trouble = 0;

    void encode(JSONWriter& writer) const {
        act(trouble);
        if (trouble == 3) writer.fail("does not want to");
        if (trouble == 4) writer.fail("is none of ours", Kind::invalidValue);
        writer.writeInteger(trouble);
    }
    static Troubled decode(JSONReader& reader) {
        const auto trouble = static_cast<int>(reader.readInteger());
        act(trouble);
        if (trouble == 3) reader.fail("does not want to");
        if (trouble == 4) reader.fail("is none of ours", Kind::invalidValue);
        return {trouble};
    }

private:
    static void act(int trouble) {
        if (trouble == 1) throw std::runtime_error("the shape is closed");
        if (trouble == 2) throw 42; // NOLINT(*-exception-*): just anything
    }
};

struct Troubles {
    std::vector<Troubled> all;
    std::map<std::string, Troubled> byName;
};
VORLAN_CODABLE(Troubles, all, byName)

// Only one way.
struct Report {
    void encode(JSONWriter& writer) const { writer.writeNull(); }
};
struct Command {
    static Command decode(JSONReader& reader) {
        reader.skip();
        return {};
    }
};

// Decodes a text that stands within a text.
struct Envelope {
    std::vector<int> content;
    static Envelope decode(JSONReader& reader) {
        const std::string inner(reader.readText());
        return {JSONDecoder().decode<std::vector<int>>(inner)};
    }
    void encode(JSONWriter& writer) const { writer.writeText(JSONEncoder().encodeText(content)); }
};

// Leaves what it does not want.
struct Picky {
    std::string wanted;
    static Picky decode(JSONReader& reader) {
        Picky picky;
        reader.enterObject();
        while (const auto key = reader.nextKey())
            if (*key == "wanted") picky.wanted = reader.readText();
        return picky;
    }
};

} // namespace

namespace foreign {
struct Colour {
    int red = 0;
    int green = 0;
};
} // namespace foreign

template <>
struct vorlan::JSONCoding<foreign::Colour> {
    static void encode(const foreign::Colour& colour, JSONWriter& writer) {
        writer.writeText(std::to_string(colour.red) + "/" + std::to_string(colour.green));
    }
    static foreign::Colour decode(JSONReader& reader) {
        const std::string text(reader.readText());
        const auto slash = text.find('/');
        if (slash == std::string::npos) reader.fail("expected a slash", JSONError::Kind::invalidValue);
        return {std::stoi(text.substr(0, slash)), std::stoi(text.substr(slash + 1))};
    }
};

namespace {
struct Room {
    Temperature temperature{20};
    foreign::Colour colour;
    std::vector<Temperature> history;
};
VORLAN_CODABLE(Room, temperature, colour, history)
} // namespace

static_assert(Codable<Temperature>);
static_assert(Codable<foreign::Colour>);
static_assert(Codable<Envelope>);
static_assert(Encodable<Report> && !Decodable<Report>);
static_assert(Decodable<Command> && !Encodable<Command>);

TEST(HandCoding, ByMembersWorksAloneAndWithinOthers) {
    EXPECT_EQ(JSONEncoder().encodeText(Temperature(21.5)), R"([21.5,"°C"])");
    EXPECT_EQ(JSONDecoder().decode<Temperature>(R"([21.5,"°C"])").degrees(), 21.5);
    const Room room{Temperature(1), {2, 3}, {Temperature(4)}};
    const std::string text = JSONEncoder().encodeText(room);
    EXPECT_EQ(text, R"({"temperature":[1.0,"°C"],"colour":"2/3","history":[[4.0,"°C"]]})");
    const auto again = JSONDecoder().decode<Room>(text);
    EXPECT_EQ(again.temperature.degrees(), 1);
    EXPECT_EQ(again.colour.green, 3);
    EXPECT_EQ(again.history.at(0).degrees(), 4);
}

TEST(HandCoding, OneWayIsEnough) {
    EXPECT_EQ(JSONEncoder().encodeText(std::vector<Report>(2)), "[null,null]");
    EXPECT_EQ(JSONDecoder().decode<std::vector<Command>>(R"([1,{"a":[]},"x"])").size(), 3U);
}

TEST(HandCoding, WhatIsNotReadIsSkippedAndHeldToTheGrammar) {
    EXPECT_EQ(JSONDecoder().decode<Picky>(R"({"a":[1,{"wanted":1}],"wanted":"yes","b":"}"})").wanted, "yes");
    EXPECT_EQ(decodingErrorOf<Picky>(R"({"a":[1,],"wanted":"yes"})").kind(), Kind::malformed);
    EXPECT_EQ(decodingErrorOf<Picky>(R"({"wanted":"yes","b":truth})").kind(), Kind::malformed);
}

TEST(HandCoding, FailuresNameThePathAndTheByte) {
    const std::string_view text = R"({"temperature":[1,"°C"],"colour":"2/3","history":[[4,"°C"],[5,"K"]]})";
    const auto unit = decodingErrorOf<Room>(text);
    EXPECT_EQ(unit.kind(), Kind::invalidValue);
    EXPECT_EQ(unit.message(), "expected degrees");
    EXPECT_EQ(unit.path(), "$.history[1][1]");
    EXPECT_EQ(unit.byteOffset(), text.find("\"K\""));
    const auto more = decodingErrorOf<Temperature>(R"([1,"°C",2])");
    EXPECT_EQ(more.kind(), Kind::host);
    EXPECT_EQ(more.message(), "expected a number and a unit");
    EXPECT_EQ(more.path(), "$[2]");
}

TEST(HandCoding, ExceptionsOfDecodingComeAsErrorsWithTheirTextAndPath) {
    const auto error = decodingErrorOf<Troubles>(R"({"all":[0,0,1],"byName":{}})");
    EXPECT_EQ(error.kind(), Kind::host);
    EXPECT_EQ(error.message(), "the shape is closed");
    EXPECT_EQ(error.path(), "$.all[2]");
    EXPECT_EQ(error.byteOffset(), 12U);
    EXPECT_EQ(decodingErrorOf<Troubles>(R"({"all":[],"byName":{"not so":1}})").path(),
              R"($.byName["not so"])");
}

TEST(HandCoding, ExceptionsOfEncodingComeAsErrorsWithTheirTextAndPath) {
    const auto error = encodingErrorOf(Troubles{{{0}, {0}, {1}}, {}});
    EXPECT_EQ(error.kind(), Kind::host);
    EXPECT_EQ(error.message(), "the shape is closed");
    EXPECT_EQ(error.path(), "$.all[2]");
    EXPECT_EQ(error.byteOffset(), std::nullopt);
    EXPECT_EQ(encodingErrorOf(Troubles{{}, {{"a", {0}}, {"b", {1}}}}).path(), "$.byName.b");
    EXPECT_EQ(encodingErrorOf(Troubled{1}).path(), "$");
}

TEST(HandCoding, ExceptionsOfAnyTypeComeAsErrors) {
    const auto decoding = decodingErrorOf<Troubles>(R"({"all":[2],"byName":{}})");
    EXPECT_EQ(decoding.kind(), Kind::host);
    EXPECT_EQ(decoding.path(), "$.all[0]");
    EXPECT_FALSE(decoding.message().empty());
    const auto encoding = encodingErrorOf(Troubles{{{2}}, {}});
    EXPECT_EQ(encoding.kind(), Kind::host);
    EXPECT_EQ(encoding.path(), "$.all[0]");
    EXPECT_FALSE(encoding.message().empty());
}

TEST(HandCoding, FailsWithTheMessageAndTheKindThatItGives) {
    for (const auto& error : {decodingErrorOf<Troubles>(R"({"all":[0,3],"byName":{}})"),
                              encodingErrorOf(Troubles{{{0}, {3}}, {}})}) {
        EXPECT_EQ(error.kind(), Kind::host);
        EXPECT_EQ(error.message(), "does not want to");
        EXPECT_EQ(error.path(), "$.all[1]");
    }
    for (const auto& error : {decodingErrorOf<Troubled>("4"), encodingErrorOf(Troubled{4})}) {
        EXPECT_EQ(error.kind(), Kind::invalidValue);
        EXPECT_EQ(error.message(), "is none of ours");
        EXPECT_EQ(error.path(), "$");
    }
}

TEST(HandCoding, MayCodeAnotherTextMeanwhile) {
    const std::vector<Envelope> envelopes{{{1, 2}}, {{}}, {{3}}};
    const std::string text = JSONEncoder().encodeText(envelopes);
    EXPECT_EQ(text, R"(["[1,2]","[]","[3]"])");
    const auto again = JSONDecoder().decode<std::vector<Envelope>>(text);
    EXPECT_EQ(again.at(0).content, (std::vector<int>{1, 2}));
    EXPECT_EQ(again.at(2).content, (std::vector<int>{3}));
}

TEST(HandCoding, ValuesThatAreLeftOverAreAnError) {
    struct Reluctant {
        static Reluctant decode(JSONReader&) { return {}; }
    };
    EXPECT_THROW(static_cast<void>(JSONDecoder().decode<Reluctant>("1")), JSONError);
}
