// SPDX-License-Identifier: Apache-2.0
#include "platform/cache/PressureFile.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

namespace vorlan {

namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> linesOf(std::string_view text) {
    std::istringstream stream{std::string(text)};
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::vector<std::string> wordsOf(const std::string& line) {
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

// The kernel writes blanks in paths as three octal digits behind a backslash.
std::string unescaped(const std::string& word) {
    std::string text;
    for (std::size_t place = 0; place < word.size(); ++place) {
        unsigned code = 0;
        const char* const digits = word.data() + place + 1;
        const bool isCode = word[place] == '\\' && place + 3 < word.size() &&
                            std::from_chars(digits, digits + 3, code, 8).ptr == digits + 3;
        text.push_back(isCode ? static_cast<char>(code) : word[place]);
        if (isCode) place += 3;
    }
    return text;
}

// The group's path within the hierarchy of the second version.
std::optional<fs::path> groupOf(std::string_view groups) {
    constexpr std::string_view start = "0::";
    for (const auto& line : linesOf(groups))
        if (line.starts_with(start)) return line.substr(start.size());
    return std::nullopt;
}

// A path below `root`, as seen where `root` is mounted; absent for one that is not below it.
std::optional<fs::path> below(const fs::path& root, const fs::path& path) {
    const auto relative = path.lexically_relative(root);
    if (relative.empty() || *relative.begin() == "..") return std::nullopt;
    return relative;
}

} // namespace

std::optional<fs::path> pressureFileOfGroup(std::string_view groups, std::string_view mounts) {
    const auto group = groupOf(groups);
    if (!group) return std::nullopt;
    for (const auto& line : linesOf(mounts)) {
        // Number, parent, device, root, place, options, any number of fields, a dash, type, ...
        const auto words = wordsOf(line);
        const auto dash = std::ranges::find(words, "-");
        if (dash - words.begin() < 6 || words.end() - dash < 2 || *(dash + 1) != "cgroup2") continue;
        if (const auto place = below(unescaped(words[3]), *group))
            return (unescaped(words[4]) / *place / "memory.pressure").lexically_normal();
    }
    return std::nullopt;
}

fs::path pressureFileOfProcess() {
    const auto own = pressureFileOfGroup(contentOf("/proc/self/cgroup"), contentOf("/proc/self/mountinfo"));
    std::error_code ignored;
    return own && fs::exists(*own, ignored) ? *own : fs::path("/proc/pressure/memory");
}

// "some avg10=1.23 avg60=..."
std::optional<double> memoryPressure(const fs::path& file) {
    constexpr std::string_view start = "some avg10=";
    const auto content = contentOf(file);
    if (!content.starts_with(start)) return std::nullopt;
    double percent = 0;
    const auto result =
        std::from_chars(content.data() + start.size(), content.data() + content.size(), percent);
    if (result.ec != std::errc()) return std::nullopt;
    return percent;
}

} // namespace vorlan
