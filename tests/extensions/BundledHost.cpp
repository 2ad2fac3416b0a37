// SPDX-License-Identifier: Apache-2.0
#include "tests/extensions/BundledHost.h"

#include <gtest/gtest.h>

#include <fstream>
#include <utility>

namespace vorlan::tests {

namespace fs = std::filesystem;

std::string Outcome::only() const {
    if (status != 0) return "ended with " + std::to_string(status);
    if (answers.size() != 1) return "wrote " + std::to_string(answers.size()) + " lines";
    return answers.front();
}

std::string textElement(const std::string& text) {
    return "<string>" + text + "</string>";
}

void writeInfo(const fs::path& file, const InfoEntries& entries) {
    fs::create_directories(file.parent_path());
    std::ofstream stream(file);
    stream << R"(<?xml version="1.0" encoding="UTF-8"?>)" << "\n" << R"(<plist version="1.0"><dict>)" << "\n";
    for (const auto& [key, element] : entries) stream << "<key>" << key << "</key>" << element << "\n";
    stream << "</dict></plist>\n";
}

bool RunningHost::hasEnded() {
    while (receive(0)) {}
    return isAtEnd();
}

Outcome RunningHost::finish() {
    closeInput();
    while (receive()) {}
    if (!isAtEnd()) {
        ADD_FAILURE() << "the host did not end";
        kill();
    }
    Outcome outcome{wait(), {}};
    while (received().find('\n') != std::string::npos) outcome.answers.push_back(nextLine());
    return outcome;
}

BundledHost::BundledHost(const fs::path& folder, Layout layout, const std::string& name) {
    fs::create_directories(folder);
    const auto root = fs::canonical(folder);
    switch (layout) {
    case Layout::application:
        bundle_ = root / (name + ".app");
        contents_ = bundle_ / "Contents";
        program_ = contents_ / "bin" / name;
        break;
    case Layout::beside:
        bundle_ = contents_ = root / (name + ".resources");
        program_ = root / name;
        break;
    case Layout::prefix:
        bundle_ = contents_ = root / "share" / name;
        program_ = root / "bin" / name;
        break;
    }
    fs::create_directories(program_.parent_path());
    fs::copy_file(VORLAN_BUNDLE_HOST, program_);
}

RunningHost BundledHost::start(const std::vector<std::string>& commands, const Variables& variables) const {
    std::vector<std::string> command{program_.native()};
    command.insert(command.end(), commands.begin(), commands.end());
    return RunningHost(std::move(command), variables);
}

} // namespace vorlan::tests
