// SPDX-License-Identifier: Apache-2.0
#pragma once

// What is wrong with a bundle's tables.

#include <VorlanFoundation/Platform/StringTable.h>
#include <VorlanFoundation/Platform/Value.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

enum class Severity { warning, error };

/// One thing that is wrong.
struct Finding {
    std::string path;
    vorlan::TextPosition position = {};
    Severity severity = Severity::error;
    std::string_view kind = {}; ///< One of the names in the usage of `check`.
    std::string language = {};
    std::optional<std::string> table = {};
    std::optional<std::string> key = {};
    std::string message = {}; ///< One sentence without a full stop.
};

/// By path, then by position, then by message.
void sortFindings(std::vector<Finding>& findings);

/// The line that tells of a finding, in the form of compilers.
std::string findingLine(const Finding& finding);

/// All findings as JSON.
std::string findingsJSON(const std::vector<Finding>& findings);

/// A value as JSON, on lines of its own.
std::string jsonLines(const vorlan::Value& value);

} // namespace tool
