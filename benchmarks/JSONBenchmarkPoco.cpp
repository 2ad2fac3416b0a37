// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/JSONBenchmarkCodecs.h"

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>

#include <sstream>

namespace vorlan::benchmarks {

namespace {

using Poco::JSON::Array;
using Poco::JSON::Object;

Object::Ptr objectOf(const Position& position) {
    Object::Ptr object(new Object);
    object->set("latitude", position.latitude);
    object->set("longitude", position.longitude);
    return object;
}

Object::Ptr objectOf(const Record& record) {
    Object::Ptr object(new Object);
    object->set("id", record.id);
    object->set("name", record.name);
    object->set("email", record.email);
    object->set("isActive", record.isActive);
    object->set("visits", record.visits);
    object->set("balance", record.balance);
    object->set("rating", record.rating);
    if (record.note) object->set("note", *record.note);
    Array::Ptr tags(new Array);
    for (const auto& tag : record.tags) tags->add(tag);
    object->set("tags", tags);
    object->set("position", objectOf(record.position));
    return object;
}

Record recordOf(const Object& object) {
    Record record;
    record.id = object.getValue<Poco::Int64>("id");
    record.name = object.getValue<std::string>("name");
    record.email = object.getValue<std::string>("email");
    record.isActive = object.getValue<bool>("isActive");
    record.visits = object.getValue<Poco::UInt32>("visits");
    record.balance = object.getValue<double>("balance");
    record.rating = object.getValue<double>("rating");
    if (object.has("note")) record.note = object.getValue<std::string>("note");
    const auto tags = object.getArray("tags");
    for (unsigned i = 0; i < tags->size(); ++i) record.tags.push_back(tags->getElement<std::string>(i));
    const auto position = object.getObject("position");
    record.position = {position->getValue<double>("latitude"), position->getValue<double>("longitude")};
    return record;
}

} // namespace

std::string encodeByPoco(const Records& records) {
    Array array;
    for (const auto& record : records) array.add(objectOf(record));
    std::ostringstream out;
    array.stringify(out);
    return out.str();
}

Records decodeByPoco(std::string_view text) {
    Poco::JSON::Parser parser;
    const auto array = parser.parse(std::string(text)).extract<Array::Ptr>();
    Records records;
    records.reserve(array->size());
    for (unsigned i = 0; i < array->size(); ++i) records.push_back(recordOf(*array->getObject(i)));
    return records;
}

} // namespace vorlan::benchmarks
