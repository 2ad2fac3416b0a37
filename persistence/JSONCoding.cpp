// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Persistence/JSONCoding.h>

#include <VorlanFoundation/Platform/JSONSerialization.h>

namespace vorlan {
namespace {

std::optional<Data> serialized(const Value::Dictionary& dictionary, bool prettify) {
    try {
        return JSONSerialization::data(dictionary, {.prettyPrinted = prettify});
    } catch (const JSONError&) {
        return std::nullopt;
    }
}

std::optional<std::string> asText(const std::optional<Data>& data) {
    return data ? std::optional(textFromData(*data))
                : std::nullopt; // Always well-formed: our writer made it.
}

} // namespace

std::optional<Data> prepareJSONData(const Value::Dictionary& dictionary, bool prettify) {
    return JSONSerialization::isValidJSONObject(dictionary) ? serialized(dictionary, prettify) : std::nullopt;
}

std::optional<std::string> prepareJSONString(const Value::Dictionary& dictionary, bool prettify) {
    return asText(prepareJSONData(dictionary, prettify));
}

EncodableType::~EncodableType() = default;

std::optional<Data> EncodableType::toJSONData() const {
    return serialized(dictionaryRepresentation(), false);
}

std::optional<std::string> EncodableType::toJSONString() const {
    return asText(toJSONData());
}

} // namespace vorlan
