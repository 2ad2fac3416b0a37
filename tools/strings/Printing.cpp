// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/Printing.h"

#include "tools/strings/Finding.h"
#include "tools/strings/PluralForms.h"
#include "tools/support/Quoting.h"

#include <cstddef>
#include <utility>

namespace tool {

using vorlan::PluralVariable;
using vorlan::StringTable;
using vorlan::StringTableEntry;
using vorlan::Value;

namespace {

std::string formLines(const std::string& name, const PluralVariable& variable) {
    std::string lines;
    for (std::size_t category = 0; category < variable.forms.size(); ++category)
        if (const auto& form = variable.forms[category])
            lines.append("    // ")
                .append(quotedText(name))
                .append(" (%" + variable.valueType + "), ")
                .append(categoryName(category))
                .append(": " + quotedText(*form) + "\n");
    return lines;
}

Value jsonValue(const PluralVariable& variable) {
    Value::Dictionary members{{"valueType", variable.valueType}};
    for (std::size_t category = 0; category < variable.forms.size(); ++category)
        if (const auto& form = variable.forms[category]) members.emplace(categoryName(category), *form);
    return members;
}

Value jsonValue(const StringTableEntry& entry) {
    if (entry.variables.empty()) return entry.text;
    Value::Dictionary variables;
    for (const auto& [name, variable] : entry.variables) variables.emplace(name, jsonValue(variable));
    return Value::Dictionary{{"text", entry.text}, {"variables", std::move(variables)}};
}

} // namespace

std::string tableText(const StringTable& table) {
    std::string lines;
    for (const auto& key : table.keys()) {
        const auto& entry = *table.find(key);
        lines += quotedText(key) + " = " + quotedText(entry.text) + ";\n";
        for (const auto& [name, variable] : entry.variables) lines += formLines(name, variable);
    }
    return lines;
}

std::string jsonText(const StringTable& table) {
    Value::Dictionary entries;
    for (const auto& key : table.keys()) entries.emplace(key, jsonValue(*table.find(key)));
    return jsonLines(entries);
}

} // namespace tool
