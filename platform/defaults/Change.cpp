// SPDX-License-Identifier: Apache-2.0
#include "platform/defaults/Change.h"

#include "platform/files/PropertyList.h"

#include <utility>

namespace vorlan::defaults {

Data encodeChange(std::string_view key, std::optional<Value>& value) {
    Value::Array parts;
    parts.reserve(2);
    parts.emplace_back(key);
    Value record(std::move(parts));
    if (!value) return writeBinaryPropertyList(record);
    // The value is lent to the record, which saves a copy.
    record.array()->push_back(std::move(*value));
    try {
        auto bytes = writeBinaryPropertyList(record);
        *value = std::move(record.array()->back());
        return bytes;
    } catch (...) {
        *value = std::move(record.array()->back());
        throw;
    }
}

std::optional<Change> decodeChange(std::span<const std::byte> bytes) try {
    auto record = readBinaryPropertyList(bytes);
    auto* parts = record.array();
    if (parts == nullptr || parts->empty() || parts->size() > 2 || parts->front().text() == nullptr)
        return std::nullopt;
    Change change{*parts->front().text(), std::nullopt};
    if (parts->size() == 2) change.value = std::move(parts->back());
    return change;
} catch (const PropertyListError&) {
    return std::nullopt;
}

} // namespace vorlan::defaults
