// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Bundle.h>

#include "platform/files/FileBytes.h"
#include "platform/files/Folders.h"
#include "platform/files/PropertyList.h"
#include "platform/localization/LocalizedTables.h"

#include <VorlanFoundation/Platform/Locale.h>
#include <VorlanFoundation/Platform/Problems.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace vorlan {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view localizedSuffix = ".lproj";

bool isThere(const fs::path& path) {
    std::error_code ignored;
    return fs::exists(path, ignored);
}

bool hasInfo(const fs::path& folder) {
    return isThere(folder / "Info.plist");
}

std::optional<Value::Dictionary> readInfo(const fs::path& folder) {
    const auto path = folder / "Info.plist";
    try {
        const auto bytes = readFile(path);
        if (!bytes) return std::nullopt;
        auto list = readPropertyList(*bytes);
        if (auto* dictionary = list.dictionary()) return std::move(*dictionary);
        throw PropertyListError("it is no dictionary");
    } catch (const std::exception& error) {
        detail::reportProblem("cannot use " + path.native() + ": " + error.what(), "VorlanFoundation/Bundle");
        return std::nullopt;
    }
}

// The folder of an application that the executable stands in, however deep below `Contents`.
std::optional<fs::path> applicationFolder(const fs::path& executable) {
    for (auto folder = executable.parent_path(); folder.has_relative_path(); folder = folder.parent_path())
        if (folder.filename() == "Contents" && hasInfo(folder)) return folder.parent_path();
    return std::nullopt;
}

std::optional<fs::path> folderOf(const fs::path& executable) {
    if (auto folder = applicationFolder(executable)) return folder;
    auto beside = executable;
    beside += ".resources";
    if (hasInfo(beside)) return beside;
    const auto programs = executable.parent_path();
    const auto shared = programs.parent_path() / "share" / executable.filename();
    return programs.filename() == "bin" && hasInfo(shared) ? std::optional(shared) : std::nullopt;
}

FileURL localized(const FileURL& resources, std::string_view language) {
    return resources / std::string(language).append(localizedSuffix);
}

// "de_CH.UTF-8" is served by "de_CH", "de-CH" and "de".
std::vector<std::string> folderNamesFor(const Locale& locale) {
    std::vector<std::string> names;
    auto name = locale.identifier().substr(0, locale.identifier().find_first_of(".@"));
    names.push_back(name);
    std::ranges::replace(name, '_', '-');
    names.push_back(name);
    if (auto code = locale.languageCode()) names.push_back(*std::move(code));
    return names;
}

// The languages whose folders are looked into, one after the other; empty stands for the resources of all.
std::vector<std::string> languagesToTry() {
    std::vector<std::string> languages;
    for (const auto& locale : Locale::preferredLanguages())
        for (auto& language : folderNamesFor(locale))
            if (!language.empty()) languages.push_back(std::move(language));
    languages.insert(languages.end(), {"", "Base"});
    return languages;
}

} // namespace

Bundle::Bundle(std::optional<FileURL> url, std::optional<FileURL> executable)
    : url_(std::move(url)), executable_(std::move(executable)) {
    if (!url_) return;
    const auto contents = *url_ / "Contents";
    contents_ = hasInfo(contents) ? contents : *url_;
    info_ = readInfo(*contents_);
}

const Bundle& Bundle::main() {
    // Never destroyed: what runs at the very end of the process may still ask for it.
    static const auto* const bundle = new Bundle(findMain());
    return *bundle;
}

Bundle Bundle::findMain() {
    std::error_code failed;
    const auto executable = fs::read_symlink("/proc/self/exe", failed);
    if (failed) return {std::nullopt, std::nullopt};
    const auto folder = folderOf(executable);
    return {folder ? std::optional(FileURL(*folder)) : std::nullopt, FileURL(executable)};
}

std::shared_ptr<const Bundle> Bundle::atURL(const FileURL& url) {
    if (!isFolder(url)) return nullptr;
    return std::shared_ptr<const Bundle>(new Bundle(url, std::nullopt));
}

const Value& Bundle::objectForInfoDictionaryKey(std::string_view key) const noexcept {
    static const auto* const nothing = new Value; // never destroyed, like the main bundle
    if (!info_) return *nothing;
    const auto found = info_->find(key);
    return found != info_->end() ? found->second : *nothing;
}

std::optional<std::string> Bundle::bundleIdentifier() const {
    return objectForInfoDictionaryKey("CFBundleIdentifier").as<std::string>();
}

std::optional<FileURL> Bundle::resourceURL() const {
    if (!contents_) return std::nullopt;
    const auto resources = *contents_ / "Resources";
    return isFolder(resources) ? resources : *contents_;
}

std::optional<FileURL> Bundle::URLForResource(std::string_view name, std::string_view withExtension) const {
    const auto resources = resourceURL();
    if (!resources) return std::nullopt;
    auto file = std::string(name);
    if (!withExtension.empty()) file.append(".").append(withExtension);
    for (const auto& language : languagesToTry()) {
        const auto folder = language.empty() ? *resources : localized(*resources, language);
        if (const auto url = folder / file; isThere(url)) return url;
    }
    return std::nullopt;
}

std::vector<std::string> Bundle::localizations() const {
    std::vector<std::string> languages;
    const auto resources = resourceURL();
    if (!resources) return languages;
    std::error_code failed; // a folder that cannot be read has no languages
    for (fs::directory_iterator entry(resources->path(), failed), end; !failed && entry != end;
         entry.increment(failed)) {
        const auto name = entry->path().filename().native();
        if (name.size() > localizedSuffix.size() && name.ends_with(localizedSuffix) &&
            isFolder(entry->path()))
            languages.push_back(name.substr(0, name.size() - localizedSuffix.size()));
    }
    std::ranges::sort(languages);
    return languages;
}

std::optional<FileURL> Bundle::URLForLocalization(std::string_view language) const {
    const auto resources = resourceURL();
    if (!resources || language.empty()) return std::nullopt;
    auto folder = localized(*resources, language);
    return isFolder(folder) ? std::optional(std::move(folder)) : std::nullopt;
}

std::string Bundle::localizedString(std::string_view forKey, std::string_view value,
                                    std::string_view table) const {
    std::string text(value.empty() ? forKey : value);
    if (!contents_) return text;
    for (const auto& language : languagesToTry()) {
        bool isLast = false;
        useFolderTexts({detail::contentsPath(*this), language, table}, [&](const FolderTexts& texts) {
            isLast = texts.isTableThere;
            if (const auto* entry = texts.find(forKey)) text = entry->text;
        });
        if (isLast) break;
    }
    return text;
}

std::string_view detail::contentsPath(const Bundle& bundle) noexcept {
    return bundle.contents_ ? std::string_view(bundle.contents_->path().native()) : std::string_view();
}

} // namespace vorlan
