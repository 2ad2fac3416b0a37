// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/Commands.h"

#include "tools/strings/BundleTables.h"
#include "tools/strings/Checking.h"
#include "tools/strings/Printing.h"
#include "tools/strings/Usage.h"
#include "tools/support/Quoting.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <iterator>
#include <optional>

namespace tool {

namespace {

ExitStatus show(std::string_view text, ExitStatus status) {
    return print(text) && !hasProblem() ? status : failed;
}

std::optional<std::vector<Finding>> findingsOf(const std::string& path, const Arguments& arguments) try {
    const auto bundle = readBundle(path, arguments.table);
    return checkBundle(bundle, baseLanguage(bundle, arguments.base));
} catch (const BundleError& error) {
    complain(error.what());
    return std::nullopt;
}

std::string textOf(const std::vector<Finding>& findings, bool asJSON) {
    if (asJSON) return findingsJSON(findings);
    std::string lines;
    for (const auto& finding : findings) lines += findingLine(finding);
    return lines;
}

// All bundles are checked, also when one cannot be read.
ExitStatus check(const Arguments& arguments) {
    std::vector<Finding> findings;
    bool areAllRead = true;
    for (const auto& path : arguments.paths) {
        auto found = findingsOf(path, arguments);
        areAllRead = areAllRead && found;
        if (found) std::ranges::move(*found, std::back_inserter(findings));
    }
    sortFindings(findings);
    const bool isWrong = std::ranges::any_of(findings, [&arguments](const Finding& finding) {
        return arguments.isStrict || finding.severity == Severity::error;
    });
    const auto status = show(textOf(findings, arguments.asJSON), isWrong ? foundErrors : done);
    return areAllRead ? status : failed;
}

ExitStatus printTable(const Arguments& arguments) {
    const auto& path = arguments.paths.front();
    try {
        const auto table = readTable(path);
        return show(arguments.asJSON ? jsonText(table) : tableText(table), done);
    } catch (const vorlan::StringTableError& error) {
        std::cerr << findingLine({.path = path, .position = error.position(), .message = error.what()});
        return foundErrors;
    } catch (const std::exception& error) {
        throw BundleError("cannot read " + inQuotes(path) + ": " + error.what());
    }
}

ExitStatus list(const Arguments& arguments) {
    auto bundle = readBundle(arguments.paths.front());
    std::string lines;
    for (const auto& language : bundle.languages) {
        if (language.tables.empty()) lines += language.language + "\n";
        for (const auto& [name, table] : language.tables)
            lines += language.language + "\t" + name + "\t" + std::to_string(table.keys().size()) + "\n";
    }
    sortFindings(bundle.findings);
    for (const auto& finding : bundle.findings) std::cerr << findingLine(finding);
    return show(lines, bundle.findings.empty() ? done : foundErrors);
}

} // namespace

ExitStatus run(const Arguments& arguments) {
    listenToProblems();
    if (arguments.wantsHelp) return show(usageOf(arguments.command), done);
    if (arguments.wantsVersion) return show("vorlan-strings " VORLAN_VERSION "\n", done);
    switch (arguments.command) {
    case Command::none: break;
    case Command::check: return check(arguments);
    case Command::print: return printTable(arguments);
    case Command::list: return list(arguments);
    }
    return failed;
}

} // namespace tool
