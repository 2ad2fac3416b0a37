// SPDX-License-Identifier: Apache-2.0

// Types of a host as JSON: what docs/json.md shows.

#include <VorlanFoundation/VorlanFoundation.h>

#include <array>
#include <chrono>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace vorlan;

namespace app {

struct Address {
    std::string street;
    std::string town;
};
VORLAN_CODABLE(Address, street, town)

struct Profile {
    std::string name;
    std::optional<Date> born;
    std::vector<Address> addresses;
};
VORLAN_CODABLE(Profile, name, born, addresses)

enum class Theme { light, dark };

} // namespace app

template <>
struct vorlan::RawValues<app::Theme> {
    static constexpr std::array cases{std::pair(app::Theme::light, std::string_view("light")),
                                      std::pair(app::Theme::dark, std::string_view("dark"))};
};

// Not a type of the host's: coded from outside.
template <>
struct vorlan::JSONCoding<std::chrono::seconds> {
    static void encode(std::chrono::seconds value, JSONWriter& writer) { writer.writeInteger(value.count()); }
    static std::chrono::seconds decode(JSONReader& reader) {
        return std::chrono::seconds(reader.readInteger());
    }
};

namespace app {

struct Settings {
    Theme theme = Theme::light;
    std::chrono::seconds pause{5};
};
VORLAN_CODABLE(Settings, theme, pause)

// In JSON a text, "#FF8000": coded by hand.
struct Color {
    unsigned rgb = 0;

    void encode(JSONWriter& writer) const {
        std::string text = "#000000";
        for (std::size_t i = 0; i < 6; ++i) text[6 - i] = "0123456789ABCDEF"[rgb >> (4 * i) & 15];
        writer.writeText(text);
    }
    static Color decode(JSONReader& reader) {
        const auto text = reader.readText();
        if (text.size() != 7 || text.front() != '#') reader.fail("a colour is like \"#FF8000\"");
        Color color;
        for (const char digit : text.substr(1)) {
            const auto value = std::string_view("0123456789ABCDEF").find(digit);
            if (value == std::string_view::npos) reader.fail("a colour is like \"#FF8000\"");
            color.rgb = color.rgb * 16 + static_cast<unsigned>(value);
        }
        return color;
    }
};

void say(std::string_view what) {
    std::cout << what << "\n";
}

void say(const Data& json) {
    say(std::string_view(reinterpret_cast<const char*>(json.data()), json.size()));
}

const Profile ada{.name = "Ada", .born = {}, .addresses = {{"12 St James's Square", "London"}}};

void encodeAndDecode() {
    const Data data = JSONEncoder().encode(ada);
    const auto again = JSONDecoder().decode<Profile>(data);
    say(data);
    say(again.addresses.at(0).town);

    const Settings settings{.theme = Theme::dark, .pause = std::chrono::minutes(1)};
    say(JSONEncoder().encodeText(settings));
    say(JSONEncoder().encodeText(Color{0xFF8000}));
}

void handleErrors() {
    const std::string_view text = R"({"name": "Ada", "addresses": [{"street": "a", "town": 7}]})";
    try {
        JSONDecoder().decode<Profile>(text);
    } catch (const JSONError& error) {
        // $.addresses[0].town: expected a string, found a number (at byte 54)
        say(error.what());
    }
}

void doWithoutExceptions() {
    const std::optional<Data> data = toJSONData(ada, JSONEncoder());
    const std::optional<Profile> again = fromJSONData<Profile>(*data, JSONDecoder());
    say(again ? again->name : "nobody");

    const Value::Dictionary answer{{"name", "Bob"}};
    fromJSON<Profile>(answer, JSONDecoder(), [](const Result<Profile>& result) {
        if (result) return say(result->name);
        if (const auto* error = result.errorAs<JSONError>()) say(error->path() + " " + error->message());
    });
}

void chooseStrategies() {
    const JSONStrategies wire{.dates = JSONDates::iso8601, .keys = JSONKeys::snakeCase};
    const Profile born{.name = "Ada", .born = Date(0), .addresses = {}};
    const Data sent = JSONEncoder{.sortedKeys = true, .strategies = wire}.encode(born);
    const JSONDecoder decoder{.strategies = wire, .unknownMembers = JSONUnknownMembers::refuse};
    say(sent);
    say(decoder.decode<Profile>(sent).born == born.born ? "the same date" : "another date");
}

void useValues() {
    const std::string_view text = R"({"width": 800, "layers": [{"name": "sky"}, {"name": "sea"}]})";
    const auto drawing = JSONDecoder().decode<Value>(text);
    const auto* members = drawing.dictionary();
    say(std::to_string(members->at("width").as<int>().value_or(0)));
    say(std::to_string(members->at("layers").array()->size()));

    const std::optional<std::string> json = prepareJSONString({{"width", 800}, {"title", "sea"}}, false);
    say(json.value_or("no JSON"));
}

// The sum of all prices of a text that may be too large to be kept as objects.
double sumOfPrices(std::string_view text) {
    double sum = 0;
    JSONReader reader(text);
    reader.enterArray();
    while (reader.nextElement()) {
        reader.enterObject();
        while (const auto key = reader.nextKey())
            if (*key == "price") sum += reader.readNumber(); // what is not read is skipped
    }
    reader.finish();
    return sum;
}

void writePiecewise() {
    JSONWriter writer;
    writer.beginObject();
    writer.key("squares");
    writer.beginArray();
    for (int i = 1; i <= 3; ++i) writer.writeInteger(i * i);
    writer.endArray();
    writer.endObject();
    say(std::move(writer).takeText()); // {"squares":[1,4,9]}
}

} // namespace app

int main() {
    app::encodeAndDecode();
    app::handleErrors();
    app::doWithoutExceptions();
    app::chooseStrategies();
    app::useValues();
    app::say(std::to_string(app::sumOfPrices(R"([{"price": 1.5, "name": "tea"}, {"price": 2}])")));
    app::writePiecewise();
}
