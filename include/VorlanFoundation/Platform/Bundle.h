// SPDX-License-Identifier: Apache-2.0
#pragma once

// An application with what belongs to it: its information dictionary and its resources.
//
//     Bundle::main().bundleIdentifier();                      // "com.example.notes"
//     Bundle::main().URLForResource("welcome", "html");       // in the user's language where there is one

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/FileURL.h>
#include <VorlanFoundation/Platform/Value.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan {

class Bundle;

namespace detail {
/// The path of the folder that has a bundle's `Resources`, or its resources; empty for an application without.
std::string_view contentsPath(const Bundle& bundle) noexcept;
} // namespace detail

/// A folder with an `Info.plist` (a property list in XML or binary form) and resources.
///
/// The application's own, `main()`, is looked for beside the executable: the application folder that it stands in
/// (`Notes.app` of `Notes.app/Contents/bin/notes`), else `<executable>.resources`, else
/// `<prefix>/share/<name of the executable>` where it is in `<prefix>/bin`; the first with an `Info.plist`. An
/// application that has none of these has no information dictionary, and runs all the same.
///
/// Of an application folder, `Info.plist` and resources are in `Contents`; of others, in the folder itself.
///
/// Resources are in a folder `Resources` there, if there is one; those that differ by language in folders
/// `<language>.lproj` of that.
///
/// Threads: safe from any thread.
/// Owns:    what it read when it was made; later changes of the files are not seen.
/// Errors:  an `Info.plist` that cannot be read is reported (`setProblemHandler` in Problems.h) and counts as
///          missing.
class VORLAN_EXPORT Bundle {
public:
    /// The application's own. The same object every time; looked for once.
    static const Bundle& main();

    /// The bundle of a folder; null where there is no such folder.
    static std::shared_ptr<const Bundle> atURL(const FileURL& url);

    /// The folder that holds the information dictionary and the resources; absent for an application without.
    const std::optional<FileURL>& bundleURL() const noexcept { return url_; }

    /// The program that the bundle is of: for `main()`, the running one.
    const std::optional<FileURL>& executableURL() const noexcept { return executable_; }

    /// What `Info.plist` says, null when there is none.
    const Value::Dictionary* infoDictionary() const noexcept { return info_ ? &*info_ : nullptr; }

    /// An entry of the information dictionary; null when there is none.
    const Value& objectForInfoDictionaryKey(std::string_view key) const noexcept;

    /// The entry "CFBundleIdentifier"; absent when it is missing or no text.
    std::optional<std::string> bundleIdentifier() const;

    /// The folder of the resources; absent for an application without.
    std::optional<FileURL> resourceURL() const;

    /// A resource by name and extension (which may be empty): the one for the user's languages first, then the
    /// one for all, then that of "Base.lproj". Absent when there is none.
    std::optional<FileURL> URLForResource(std::string_view name, std::string_view withExtension) const;

    /// The languages that there are `.lproj` folders for, "Base" included, in alphabetical order.
    std::vector<std::string> localizations() const;

    /// The folder of a language's resources; absent when there is none.
    std::optional<FileURL> URLForLocalization(std::string_view language) const;

    /// The translation of a key: that in the first file `<table>.strings` or `.stringsdict` of those that
    /// `URLForResource` would look at. Where that has none, or there is no such file, `value`, or the key itself where
    /// that is empty. An empty `table` stands for "Localizable". Changed files are read again within some tenths of a
    /// second.
    std::string localizedString(std::string_view forKey, std::string_view value = {},
                                std::string_view table = {}) const;

private:
    friend std::string_view detail::contentsPath(const Bundle& bundle) noexcept;

    Bundle(std::optional<FileURL> url, std::optional<FileURL> executable, std::string& problem);

    static Bundle findMain(std::string& problem);

    std::optional<FileURL> url_;
    std::optional<FileURL> contents_; ///< Where the information dictionary is, or could be.
    std::optional<FileURL> executable_;
    std::optional<Value::Dictionary> info_;
};

} // namespace vorlan
