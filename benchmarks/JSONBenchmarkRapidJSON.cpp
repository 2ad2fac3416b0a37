// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/JSONBenchmarkCodecs.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <stdexcept>

namespace vorlan::benchmarks {

namespace {

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

template <std::size_t Size>
void writeKey(Writer& writer, const char (&name)[Size]) { // NOLINT(*-avoid-c-arrays): a literal
    writer.Key(name, Size - 1);
}

void writeText(Writer& writer, const std::string& text) {
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

void writeTags(Writer& writer, const std::vector<std::string>& tags) {
    writer.StartArray();
    for (const auto& tag : tags) writeText(writer, tag);
    writer.EndArray();
}

void write(Writer& writer, const Position& position) {
    writer.StartObject();
    writeKey(writer, "latitude");
    writer.Double(position.latitude);
    writeKey(writer, "longitude");
    writer.Double(position.longitude);
    writer.EndObject();
}

void write(Writer& writer, const Record& record) {
    writer.StartObject();
    writeKey(writer, "id");
    writer.Int64(record.id);
    writeKey(writer, "name");
    writeText(writer, record.name);
    writeKey(writer, "email");
    writeText(writer, record.email);
    writeKey(writer, "isActive");
    writer.Bool(record.isActive);
    writeKey(writer, "visits");
    writer.Uint(record.visits);
    writeKey(writer, "balance");
    writer.Double(record.balance);
    writeKey(writer, "rating");
    writer.Double(record.rating);
    if (record.note) {
        writeKey(writer, "note");
        writeText(writer, *record.note);
    }
    writeKey(writer, "tags");
    writeTags(writer, record.tags);
    writeKey(writer, "position");
    write(writer, record.position);
    writer.EndObject();
}

std::string textOf(const rapidjson::Value& value) {
    return {value.GetString(), value.GetStringLength()};
}

Record recordOf(const rapidjson::Value& value) {
    Record record;
    record.id = value["id"].GetInt64();
    record.name = textOf(value["name"]);
    record.email = textOf(value["email"]);
    record.isActive = value["isActive"].GetBool();
    record.visits = value["visits"].GetUint();
    record.balance = value["balance"].GetDouble();
    record.rating = value["rating"].GetDouble();
    if (const auto note = value.FindMember("note"); note != value.MemberEnd() && !note->value.IsNull())
        record.note = textOf(note->value);
    for (const auto& tag : value["tags"].GetArray()) record.tags.push_back(textOf(tag));
    const auto& position = value["position"];
    record.position = {position["latitude"].GetDouble(), position["longitude"].GetDouble()};
    return record;
}

} // namespace

std::string encodeByRapidJSON(const Records& records) {
    rapidjson::StringBuffer out;
    Writer writer(out);
    writer.StartArray();
    for (const auto& record : records) write(writer, record);
    writer.EndArray();
    return {out.GetString(), out.GetSize()};
}

// Without full precision one number in six or seven comes back as its neighbour.
Records decodeByRapidJSON(std::string_view text) {
    rapidjson::Document document;
    document.Parse<rapidjson::kParseFullPrecisionFlag>(text.data(), text.size());
    if (document.HasParseError()) throw std::runtime_error("no JSON");
    Records records;
    records.reserve(document.Size());
    for (const auto& value : document.GetArray()) records.push_back(recordOf(value));
    return records;
}

} // namespace vorlan::benchmarks
