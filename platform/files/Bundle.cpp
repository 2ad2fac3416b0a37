// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Bundle.h>

#include "platform/files/FileBytes.h"
#include "platform/files/Folders.h"
#include "platform/files/PropertyList.h"
#include "platform/localization/LocalizedTables.h"
#include "platform/text/CurrentRegion.h"

#include <VorlanFoundation/Platform/Problems.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <memory>
#include <string>
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

// What kept an Info.plist from being read is left in `problem`.
std::optional<Value::Dictionary> readInfo(const fs::path& folder, std::string& problem) {
    const auto path = folder / "Info.plist";
    try {
        const auto bytes = readFile(path);
        if (!bytes) return std::nullopt;
        auto list = readPropertyList(*bytes);
        if (auto* dictionary = list.dictionary()) return std::move(*dictionary);
        throw PropertyListError("it is no dictionary");
    } catch (const std::exception& error) {
        problem = "cannot use " + path.native() + ": " + error.what();
        return std::nullopt;
    }
}

void report(const std::string& problem) {
    if (!problem.empty()) detail::reportProblem(problem, "VorlanFoundation/Bundle");
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

// Calls `use` with the languages whose folders are looked into, one after the other, until it returns true; empty stands
// for the resources of all.
template <class Use>
void tryLanguages(Use&& use) {
    for (const std::string_view language : currentRegion().languageFolders)
        if (use(language)) return;
    for (const std::string_view language : {"", "Base"})
        if (use(language)) return;
}

} // namespace

Bundle::Bundle(std::optional<FileURL> url, std::optional<FileURL> executable, std::string& problem)
    : url_(std::move(url)), executable_(std::move(executable)) {
    if (!url_) return;
    const auto contents = *url_ / "Contents";
    contents_ = hasInfo(contents) ? contents : *url_;
    info_ = readInfo(*contents_, problem);
}

const Bundle& Bundle::main() {
    // Reported once the bundle is made: who is told may ask for it, to log the problem under its name.
    static std::atomic<const std::string*> unreported = nullptr;
    // Never destroyed: what runs at the very end of the process may still ask for it.
    static const auto* const bundle = [] {
        auto problem = std::make_unique<std::string>();
        const auto* const made = new Bundle(findMain(*problem));
        if (!problem->empty()) unreported = problem.release();
        return made;
    }();
    if (unreported.load(std::memory_order_relaxed) != nullptr) {
        const std::unique_ptr<const std::string> problem(unreported.exchange(nullptr));
        if (problem) report(*problem);
    }
    return *bundle;
}

Bundle Bundle::findMain(std::string& problem) {
    std::error_code failed;
    const auto executable = fs::read_symlink("/proc/self/exe", failed);
    if (failed) return {std::nullopt, std::nullopt, problem};
    const auto folder = folderOf(executable);
    return {folder ? std::optional(FileURL(*folder)) : std::nullopt, FileURL(executable), problem};
}

std::shared_ptr<const Bundle> Bundle::atURL(const FileURL& url) {
    if (!isFolder(url)) return nullptr;
    std::string problem;
    std::shared_ptr<const Bundle> bundle(new Bundle(url, std::nullopt, problem));
    report(problem);
    return bundle;
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
    std::optional<FileURL> found;
    tryLanguages([&](std::string_view language) {
        auto url = (language.empty() ? *resources : localized(*resources, language)) / file;
        if (isThere(url)) found = std::move(url);
        return found.has_value();
    });
    return found;
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
    tryLanguages([&](std::string_view language) {
        bool isLast = false;
        useFolderTexts({detail::contentsPath(*this), language, table}, [&](const FolderTexts& texts) {
            isLast = texts.isTableThere;
            if (const auto* entry = texts.find(forKey)) text = entry->text;
        });
        return isLast;
    });
    return text;
}

std::string_view detail::contentsPath(const Bundle& bundle) noexcept {
    return bundle.contents_ ? std::string_view(bundle.contents_->path().native()) : std::string_view();
}

} // namespace vorlan
