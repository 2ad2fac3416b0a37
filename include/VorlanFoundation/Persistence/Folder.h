// SPDX-License-Identifier: Apache-2.0
#pragma once

// The folders in which an application keeps its files.
//
//     if (const auto folder = Folder::applicationDataDirectory())
//         std::ofstream((*folder / "library.db").path()) << "...";

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/FileURL.h>

#include <optional>

namespace vorlan {

/// The user's folders for one application; looked up afresh each time.
///
/// Threads: safe from any thread.
class VORLAN_EXPORT Folder {
public:
    Folder() = delete;

    /// The application's own folder: named by its bundle identifier, in the folder that the desktop keeps
    /// applications' data in. It is made where it is missing, and whether that worked is logged; when it did not,
    /// the URL is returned all the same. Absent when the application has no identifier, or the user no folder for
    /// applications' data.
    static std::optional<FileURL> applicationDataDirectory();

    /// The user's documents; absent when the user has no home folder. Nothing is made.
    static std::optional<FileURL> documentsDirectory();
};

} // namespace vorlan
