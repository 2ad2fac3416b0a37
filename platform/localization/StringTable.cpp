// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/StringTable.h>

#include "platform/files/BinaryPropertyList.h"
#include "platform/files/PropertyList.h"
#include "platform/localization/PluralsReader.h"
#include "platform/localization/StringsParser.h"
#include "platform/localization/TextDecoding.h"

#include <VorlanFoundation/Platform/Value.h>

#include <algorithm>
#include <utility>

namespace vorlan {

namespace {

[[noreturn]] void fail(const std::string& message) {
    throw StringTableError(message, TextPosition());
}

void requireBearableSize(std::span<const std::byte> bytes) {
    if (bytes.size() > stringTableSizeLimit) fail("it is larger than any table");
}

bool isBinary(std::span<const std::byte> bytes) {
    return bytes.size() >= bplist::magic.size() &&
           std::ranges::equal(bytes.first(bplist::magic.size()), std::as_bytes(std::span(bplist::magic)));
}

Value::Dictionary readDictionary(std::span<const std::byte> bytes) try {
    auto list = readPropertyList(bytes);
    if (auto* dictionary = list.dictionary()) return std::move(*dictionary);
    fail("it is no dictionary");
} catch (const PropertyListError& error) {
    fail(error.what());
}

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t\n\r") == std::string_view::npos;
}

bool isXML(std::string_view text) {
    const auto start = text.find_first_not_of(" \t\n\r");
    return start != std::string_view::npos && text[start] == '<';
}

std::string textOf(const std::string& key, const Value& value) {
    if (auto text = value.as<std::string>()) return *std::move(text);
    fail("the value of key \"" + key + "\" is no text");
}

} // namespace

StringTableError::StringTableError(const std::string& message, TextPosition position)
    : std::runtime_error(message), position_(position) {}

StringTable StringTable::read(std::span<const std::byte> bytes) {
    requireBearableSize(bytes);
    StringTable table;
    const auto insertTexts = [&table](const Value::Dictionary& texts) {
        for (const auto& [key, value] : texts) table.insert(key, {.text = textOf(key, value)});
    };
    if (isBinary(bytes)) {
        insertTexts(readDictionary(bytes));
    } else if (const auto text = decodedText(bytes); isXML(text)) {
        insertTexts(readDictionary(std::as_bytes(std::span(text))));
    } else {
        parseStrings(text, [&table](std::string key, StringTableEntry entry) {
            if (table.entries_.contains(key)) table.repetitions_.push_back({key, entry.position});
            table.insert(std::move(key), std::move(entry));
        });
    }
    return table;
}

StringTable StringTable::readPlurals(std::span<const std::byte> bytes) {
    requireBearableSize(bytes);
    StringTable table;
    const auto insertEntries = [&table](const Value::Dictionary& entries) {
        for (const auto& [key, value] : entries) table.insert(key, readPluralEntry(key, value));
    };
    if (isBinary(bytes)) {
        insertEntries(readDictionary(bytes));
    } else if (const auto text = decodedText(bytes); !isBlank(text)) {
        insertEntries(readDictionary(std::as_bytes(std::span(text))));
    }
    return table;
}

const StringTableEntry* StringTable::find(std::string_view key) const noexcept {
    const auto found = entries_.find(key);
    return found != entries_.end() ? &found->second : nullptr;
}

std::vector<std::string> StringTable::keys() const {
    std::vector<std::string> keys;
    keys.reserve(entries_.size());
    for (const auto& [key, entry] : entries_) keys.push_back(key);
    std::ranges::sort(keys);
    return keys;
}

void StringTable::insert(std::string key, StringTableEntry entry) {
    entries_.insert_or_assign(std::move(key), std::move(entry));
}

} // namespace vorlan
