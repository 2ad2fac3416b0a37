// SPDX-License-Identifier: Apache-2.0
#pragma once

// A home folder that is there for one test.
//
//     testing::TemporaryHome home;            // HOME and the XDG folders are fresh from here on
//     EXPECT_TRUE(std::filesystem::is_empty(home.path() / ".config"));

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace vorlan::testing {

/// Points HOME and the XDG variables (CONFIG, DATA, CACHE, STATE and RUNTIME) to empty folders of its own.
///
/// Everything that the library keeps in the user's folders follows: defaults stores are empty, with nothing
/// registered, and the log file is a new one. The log file's name and size limit stay as the host set them.
///
/// When it is destroyed the variables have their former values again and the folders are gone, with all in
/// them.
///
/// Threads: one thread at a time, while no other reads the environment: make it first in the test.
/// Owns:    the folders.
/// Errors:  throws std::filesystem::filesystem_error when the folders cannot be made.
class TemporaryHome {
public:
    /// Makes the folders and sets the variables.
    TemporaryHome();
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;
    ~TemporaryHome();

    /// The home folder.
    const std::filesystem::path& path() const noexcept { return path_; }

private:
    void restore();
    void point(const std::string& variable, const std::filesystem::path& folder);

    std::filesystem::path path_;
    std::map<std::string, std::optional<std::string>> former_;
};

} // namespace vorlan::testing
