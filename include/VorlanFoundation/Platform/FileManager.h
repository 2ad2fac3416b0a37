// SPDX-License-Identifier: Apache-2.0
#pragma once

// The user's folders, and the operations on files that this library needs.

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/FileURL.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace vorlan {

/// A folder that every user has.
enum class SearchPathDirectory {
    /// The user's own documents: `XDG_DOCUMENTS_DIR` of user-dirs.dirs, else `Documents` in the home folder.
    documents = 9,
    /// What applications keep for the user: `$XDG_DATA_HOME`, else `~/.local/share`.
    applicationSupport = 14,
};

/// Whose folders are looked for.
enum class SearchPathDomainMask {
    user = 1, ///< Those of the user that the process runs as.
};

/// What is known of a file.
struct FileAttributes {
    std::filesystem::file_type type = std::filesystem::file_type::none; ///< Of the file itself, also a link.
    std::optional<std::uint64_t> size; ///< In bytes; absent for all but regular files.
};

/// Looks for folders and makes them.
///
/// Threads: safe from any thread, as long as none changes the environment meanwhile.
/// Errors:  throws std::filesystem::filesystem_error, with the system's reason and the path.
class VORLAN_EXPORT FileManager {
public:
    /// How `URLForDirectory` looks.
    struct LookUp {
        SearchPathDomainMask inDomain = SearchPathDomainMask::user;
        bool create = false; ///< Make the folder, and those above it, where it is missing.
    };

    /// How `createDirectoryAtURL` makes a folder.
    struct Creation {
        bool withIntermediateDirectories = false; ///< Also those above it; one that is there is a success.
    };

    /// The one for the whole process.
    static const FileManager& defaultManager() noexcept;

    /// The user's folder of a kind. Throws when the user has none, or when it could not be made.
    FileURL URLForDirectory(SearchPathDirectory directory, LookUp lookUp) const;
    FileURL URLForDirectory(SearchPathDirectory directory) const {
        return URLForDirectory(directory, LookUp());
    }

    /// The user's folders of a kind, most important first; none when the user has no home folder. Nothing is
    /// made.
    std::vector<FileURL> URLsForDirectory(SearchPathDirectory directory,
                                          SearchPathDomainMask inDomains = SearchPathDomainMask::user) const;

    /// Makes a folder that only the user may enter. Throws when something other than a folder is in its place,
    /// and, unless folders above are made too, when the folder is there already.
    void createDirectoryAtURL(const FileURL& url, Creation creation) const;
    void createDirectoryAtURL(const FileURL& url) const { createDirectoryAtURL(url, Creation()); }

    /// What is known of the file; of a symbolic link itself, not of what it refers to.
    FileAttributes attributesOfItemAtPath(const std::filesystem::path& path) const;

private:
    FileManager() = default;
};

} // namespace vorlan
