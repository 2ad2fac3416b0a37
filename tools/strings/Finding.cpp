// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/Finding.h"

#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/JSONSerialization.h>

#include <algorithm>
#include <cstddef>
#include <tuple>

namespace tool {

using vorlan::Value;

namespace {

std::string_view nameOf(Severity severity) {
    return severity == Severity::error ? "error" : "warning";
}

// Null where a number or text is not known.
Value known(std::size_t number) {
    return number != 0 ? Value(number) : Value();
}

Value known(const std::optional<std::string>& text) {
    return text ? Value(vorlan::describe(*text)) : Value();
}

Value jsonObject(const Finding& finding) {
    return Value::Dictionary{{"path", vorlan::describe(finding.path)},
                             {"line", known(finding.position.line)},
                             {"column", known(finding.position.column)},
                             {"severity", nameOf(finding.severity)},
                             {"kind", finding.kind},
                             {"language", vorlan::describe(finding.language)},
                             {"table", known(finding.table)},
                             {"key", known(finding.key)},
                             {"message", finding.message}};
}

} // namespace

void sortFindings(std::vector<Finding>& findings) {
    std::ranges::sort(findings, {}, [](const Finding& finding) {
        return std::tuple(std::string_view(finding.path), finding.position.line, finding.position.column,
                          std::string_view(finding.message));
    });
}

std::string findingLine(const Finding& finding) {
    auto line = finding.path;
    if (finding.position.line != 0)
        line +=
            ":" + vorlan::describe(finding.position.line) + ":" + vorlan::describe(finding.position.column);
    return line.append(": ").append(nameOf(finding.severity)).append(": ").append(finding.message) + "\n";
}

std::string findingsJSON(const std::vector<Finding>& findings) {
    Value::Array objects;
    for (const auto& finding : findings) objects.push_back(jsonObject(finding));
    return jsonLines(objects);
}

std::string jsonLines(const Value& value) {
    const auto data = vorlan::JSONSerialization::data(value, {.prettyPrinted = true});
    std::string text(data.size(), '\0');
    std::ranges::transform(data, text.begin(), [](std::byte byte) { return static_cast<char>(byte); });
    return text + "\n";
}

} // namespace tool
