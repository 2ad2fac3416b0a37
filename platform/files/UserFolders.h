// SPDX-License-Identifier: Apache-2.0
#pragma once

// Where the user's files are, by the XDG base directory standard.
//
// The environment and the files of the moment count. GLib's functions of this kind keep what they found first, or last,
// for as long as the process runs, so that a test in a temporary home would be sent to the user's own folders.

#include <filesystem>
#include <optional>

namespace vorlan::folders {

/// The home folder: $HOME, else what the system's user database says; absent when neither is an absolute path.
std::optional<std::filesystem::path> home();

/// `$XDG_CONFIG_HOME`, else `.config` in the home folder.
std::optional<std::filesystem::path> configuration();

/// `$XDG_DATA_HOME`, else `.local/share` in the home folder.
std::optional<std::filesystem::path> applicationData();

/// What user-dirs.dirs says, else `Documents` in the home folder.
std::optional<std::filesystem::path> documents();

} // namespace vorlan::folders
