// SPDX-License-Identifier: Apache-2.0
#include "platform/files/UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vorlan::folders {

namespace {

using Path = std::filesystem::path;

// An absolute path from the environment; the base directory standard has others ignored.
std::optional<Path> fromEnvironment(const char* variable) {
    const char* value = std::getenv(variable);
    if (value == nullptr || value[0] != '/') return std::nullopt;
    return Path(value);
}

std::optional<Path> fromUserDatabase() {
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> buffer(16 * 1024);
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr)
        return std::nullopt;
    if (found->pw_dir == nullptr || found->pw_dir[0] != '/') return std::nullopt;
    return Path(found->pw_dir);
}

std::optional<Path> inHome(const char* name) {
    auto folder = home();
    if (folder) *folder /= name;
    return folder;
}

std::string_view withoutBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(" \t"), text.size()));
}

// The folder that a line of user-dirs.dirs gives, if it is the one of the documents: `XDG_DOCUMENTS_DIR="$HOME/Texts"`,
// or an absolute path. The file is written by xdg-user-dirs, and read by shells.
std::optional<Path> documentsIn(std::string_view line) {
    for (const std::string_view part : {"XDG_DOCUMENTS_DIR", "=", "\""}) {
        line = withoutBlanks(line);
        if (!line.starts_with(part)) return std::nullopt;
        line.remove_prefix(part.size());
    }
    constexpr std::string_view homeVariable = "$HOME";
    const bool isInHome = line.starts_with(homeVariable);
    if (isInHome) line.remove_prefix(homeVariable.size());
    std::string path;
    for (std::size_t i = 0; i < line.size() && line[i] != '"'; ++i) {
        if (line[i] == '\\' && i + 1 < line.size()) ++i;
        path += line[i];
    }
    if (!path.starts_with('/') && !(isInHome && path.empty())) return std::nullopt;
    return isInHome ? inHome(path.substr(std::min<std::size_t>(1, path.size())).c_str()) : Path(path);
}

} // namespace

std::optional<Path> home() {
    if (auto folder = fromEnvironment("HOME")) return folder;
    return fromUserDatabase();
}

std::optional<Path> configuration() {
    if (auto folder = fromEnvironment("XDG_CONFIG_HOME")) return folder;
    return inHome(".config");
}

std::optional<Path> applicationData() {
    if (auto folder = fromEnvironment("XDG_DATA_HOME")) return folder;
    return inHome(".local/share");
}

std::optional<Path> documents() {
    const auto settings = configuration();
    if (!settings) return inHome("Documents");
    std::ifstream file(*settings / "user-dirs.dirs");
    std::optional<Path> found;
    for (std::string line; std::getline(file, line);) // as in a shell, the last one counts
        if (auto folder = documentsIn(line)) found = std::move(folder);
    return found ? found : inHome("Documents");
}

} // namespace vorlan::folders
