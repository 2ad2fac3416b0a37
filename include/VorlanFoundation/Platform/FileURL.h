// SPDX-License-Identifier: Apache-2.0
#pragma once

// Where a file or folder is.
//
//     FileURL notes = *Folder::documentsDirectory() / "My notes.txt";
//     notes.description();                    // file:///home/ann/Documents/My%20notes.txt
//     std::ofstream(notes.path()) << "milk";

#include <VorlanFoundation/Platform/Export.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vorlan {

/// The place of a file or folder in the file system, whether or not something is there.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
class VORLAN_EXPORT FileURL {
public:
    /// The URL of a path; a relative one is taken from the working directory of this moment.
    explicit FileURL(std::filesystem::path path);

    /// Reads the `file://` form; absent when `text` is no such URL, or names another machine.
    static std::optional<FileURL> fromDescription(std::string_view text);

    /// The path, absolute.
    const std::filesystem::path& path() const noexcept { return path_; }
    operator const std::filesystem::path&() const noexcept { return path_; } // NOLINT: the same place

    /// The URL with one more component. `name` is appended as it stands, also when it begins with a slash.
    FileURL appendingPathComponent(std::string_view name) const;

    /// The same, as paths are written.
    friend FileURL operator/(const FileURL& url, std::string_view name) {
        return url.appendingPathComponent(name);
    }

    /// The name of the file or folder: the last component; "/" for the root.
    std::string lastPathComponent() const;

    /// The URL of the folder that it is in; the root's is the root.
    FileURL deletingLastPathComponent() const;

    /// The `file://` form, with all but unreserved characters percent-encoded.
    std::string description() const;

    friend bool operator==(const FileURL&, const FileURL&) = default;

private:
    std::filesystem::path path_;
};

} // namespace vorlan
