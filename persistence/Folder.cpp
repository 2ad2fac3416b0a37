// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Persistence/Folder.h>

#include <VorlanFoundation/Logging/Logger.h>
#include <VorlanFoundation/Platform/Bundle.h>
#include <VorlanFoundation/Platform/FileManager.h>

#include <filesystem>

namespace vorlan {

namespace {

std::optional<FileURL> applicationSupport() try {
    return FileManager::defaultManager().URLForDirectory(SearchPathDirectory::applicationSupport,
                                                         {.create = true});
} catch (const std::filesystem::filesystem_error&) {
    return std::nullopt;
}

bool create(const FileURL& url) try {
    FileManager::defaultManager().createDirectoryAtURL(url, {.withIntermediateDirectories = true});
    return true;
} catch (const std::filesystem::filesystem_error&) {
    return false;
}

} // namespace

std::optional<FileURL> Folder::applicationDataDirectory() {
    const auto support = applicationSupport();
    const auto identifier = Bundle::main().bundleIdentifier();
    if (!support || !identifier) return std::nullopt;
    auto url = *support / *identifier;
    Logger::log((create(url) ? "[Folder] Successfully create directory at path: "
                             : "[Folder] Cannot create directory at path: ") +
                url.description());
    return url;
}

std::optional<FileURL> Folder::documentsDirectory() {
    const auto urls = FileManager::defaultManager().URLsForDirectory(SearchPathDirectory::documents);
    return urls.empty() ? std::nullopt : std::optional(urls.front());
}

} // namespace vorlan
