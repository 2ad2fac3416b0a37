// SPDX-License-Identifier: Apache-2.0

// simdjson's parser on demand, used by hand for these records: members in any order, unknown ones passed over.

#include "benchmarks/JSONBenchmarkCodecs.h"

#include <simdjson.h>

#include <array>
#include <cstddef>
#include <cstring>

namespace vorlan::benchmarks {

namespace {

using simdjson::ondemand::object;
using simdjson::ondemand::value;

constexpr std::array<std::string_view, 10> names{"id",      "name",   "email", "isActive", "visits",
                                                 "balance", "rating", "note",  "tags",     "position"};

/// The place of a name, most likely the expected one.
std::size_t placeOf(const simdjson::ondemand::raw_json_string& key, std::size_t expected) {
    for (std::size_t i = expected; i < names.size(); ++i)
        if (key == names.at(i)) return i;
    for (std::size_t i = 0; i < expected; ++i)
        if (key == names.at(i)) return i;
    return names.size();
}

void read(value json, std::string& text) {
    text = std::string_view(json.get_string());
}

void read(value json, std::vector<std::string>& texts) {
    for (auto element : json.get_array()) read(element.value(), texts.emplace_back());
}

void read(value json, Position& position) {
    for (auto field : json.get_object()) {
        const auto key = field.key().value();
        if (key == "latitude")
            position.latitude = field.value().get_double();
        else if (key == "longitude")
            position.longitude = field.value().get_double();
    }
}

void readMember(std::size_t place, value json, Record& record) {
    switch (place) {
    case 0: record.id = json.get_int64(); break;
    case 1: read(json, record.name); break;
    case 2: read(json, record.email); break;
    case 3: record.isActive = json.get_bool(); break;
    case 4: record.visits = static_cast<std::uint32_t>(std::uint64_t(json.get_uint64())); break;
    case 5: record.balance = json.get_double(); break;
    case 6: record.rating = json.get_double(); break;
    case 7:
        if (!json.is_null()) read(json, record.note.emplace());
        break;
    case 8: read(json, record.tags); break;
    case 9: read(json, record.position); break;
    default: break;
    }
}

void read(object json, Record& record) {
    std::size_t expected = 0;
    for (auto field : json) {
        const auto place = placeOf(field.key().value(), expected);
        readMember(place, field.value().value(), record);
        expected = place == names.size() ? expected : place + 1;
    }
}

} // namespace

Records decodeOnDemand(std::string_view text) {
    static simdjson::ondemand::parser
        parser; // kept, as its makers advise; so is the text's copy, which it needs
    static std::string padded;
    padded.resize(text.size() + simdjson::SIMDJSON_PADDING);
    std::memcpy(padded.data(), text.data(), text.size());
    simdjson::ondemand::document document = parser.iterate(padded.data(), text.size(), padded.size());
    Records records;
    for (auto element : document.get_array()) read(element.get_object().value(), records.emplace_back());
    return records;
}

} // namespace vorlan::benchmarks
