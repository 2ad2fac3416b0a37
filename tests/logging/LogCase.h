// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a test case about the log needs: a home of its own, and the log file in it.

#include <VorlanFoundation/Logging/Logger.h>
#include <VorlanFoundation/Platform/UserDefaults.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan::tests {

inline constexpr auto logSwitchKey = "com.vorlan.foundation.shouldUseLogger";
inline constexpr auto logFileName = "0475148A-4EE3-4F85-A54C-D3A15BADD933.log";
inline constexpr std::int64_t logSizeLimit = 10'485'760;

/// Everything in a file; nothing when it is not there.
inline std::string textOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Makes a file with a content.
inline void writeText(const std::filesystem::path& file, std::string_view text) {
    std::ofstream(file, std::ios::binary) << text;
}

/// The texts before each end of line, and what comes after the last one if there is something.
inline std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        lines.emplace_back(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(lines.back().size() + 1, text.size()));
    }
    return lines;
}

/// A log in a fresh home, as it is in a process that starts: switched off, under its first name and limit.
class LogCase : public ::testing::Test {
protected:
    LogCase() { std::filesystem::create_directories(folder()); }

    ~LogCase() override {
        Logger::changeFileName(logFileName);
        Logger::changeFileSizeLimit(logSizeLimit);
        // What is registered stays until the process ends; this is the same as nothing.
        UserDefaults::standard().registerDefaults({{logSwitchKey, false}});
    }

    std::filesystem::path folder() const { return home_.path() / "Documents"; }
    std::filesystem::path file() const { return folder() / logFileName; }
    std::string text() const { return textOf(file()); }
    const std::filesystem::path& home() const { return home_.path(); }

private:
    testing::TemporaryHome home_;
};

} // namespace vorlan::tests
