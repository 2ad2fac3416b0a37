// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tables as the bytes of files.

#include <VorlanFoundation/Platform/StringTable.h>

#include <concepts>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vorlan::tests {

/// A property list in XML, of what is in its outermost element.
inline std::string xmlList(const std::string& content) {
    return R"(<?xml version="1.0" encoding="UTF-8"?>)"
           "\n<plist version=\"1.0\">" +
           content + "</plist>\n";
}

/// A dictionary of elements as XML, from keys and elements in turn.
inline std::string xmlDictionary(const std::vector<std::pair<std::string, std::string>>& entries) {
    std::string text = "<dict>";
    for (const auto& [key, element] : entries)
        text.append("<key>").append(key).append("</key>").append(element);
    return text + "</dict>";
}

inline std::string xmlText(const std::string& text) {
    return "<string>" + text + "</string>";
}

/// A variable of a `.stringsdict` entry, from categories and forms in turn.
inline std::string xmlVariable(const std::vector<std::pair<std::string, std::string>>& forms,
                               const std::string& valueType = "d") {
    std::vector<std::pair<std::string, std::string>> entries = {
        {"NSStringFormatSpecTypeKey", xmlText("NSStringPluralRuleType")},
        {"NSStringFormatValueTypeKey", xmlText(valueType)}};
    for (const auto& [category, form] : forms) entries.emplace_back(category, xmlText(form));
    return xmlDictionary(entries);
}

/// An entry of a `.stringsdict` file with its variables.
inline std::string xmlPlural(const std::string& format,
                             std::vector<std::pair<std::string, std::string>> variables) {
    variables.emplace(variables.begin(), "NSStringLocalizedFormatKey", xmlText(format));
    return xmlDictionary(variables);
}

inline StringTable readTable(std::string_view bytes) {
    return StringTable::read(std::as_bytes(std::span(bytes)));
}

inline StringTable readPlurals(std::string_view bytes) {
    return StringTable::readPlurals(std::as_bytes(std::span(bytes)));
}

/// "line:column: why" of the error that reading ends with.
template <std::invocable Read>
std::string errorOf(Read&& read) {
    try {
        std::forward<Read>(read)();
    } catch (const StringTableError& error) {
        return std::to_string(error.position().line) + ":" + std::to_string(error.position().column) + ": " +
               error.what();
    }
    return "no error";
}

} // namespace vorlan::tests
