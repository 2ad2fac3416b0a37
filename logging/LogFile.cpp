// SPDX-License-Identifier: Apache-2.0
#include "logging/LogFile.h"

#include <VorlanFoundation/Platform/FileHandle.h>
#include <VorlanFoundation/Platform/FileManager.h>
#include <VorlanFoundation/Platform/HomeChange.h>

#include <filesystem>
#include <utility>

namespace vorlan {

namespace {

std::optional<FileURL> documents() try {
    return FileManager::defaultManager().URLForDirectory(SearchPathDirectory::documents, {.create = true});
} catch (const std::filesystem::filesystem_error&) {
    return std::nullopt;
}

// Nothing is known of a file that is not there.
FileAttributes attributesOf(const std::filesystem::path& path) try {
    return FileManager::defaultManager().attributesOfItemAtPath(path);
} catch (const std::filesystem::filesystem_error&) {
    return {std::filesystem::file_type::none, 0};
}

void empty(const std::filesystem::path& path) {
    if (auto file = FileHandle::forAppending(path)) {
        file->truncate(0);
    } else {
        FileHandle::forAppendingOrCreating(path);
    }
}

void append(const std::filesystem::path& path, std::string_view text) {
    auto file = FileHandle::forAppending(path);
    if (!file) file = FileHandle::forAppendingOrCreating(path);
    if (file) file->append(text);
}

} // namespace

LogFile& LogFile::shared() {
    // Never destroyed: there may be something to log at the very end of the process.
    static auto* const file = new LogFile;
    return *file;
}

LogFile::LogFile() : directory_(documents()), homeGeneration_(detail::homeGeneration()) {
    findPath();
}

void LogFile::writeLine(std::string_view text) {
    const auto path = this->path();
    if (!path) return;
    std::string line;
    line.reserve(text.size() + 1);
    line += text;
    const auto size = makeRoom(*path);
    if (!size) return;
    const bool isOneWrite = isWithinLimit(*size + line.size());
    if (isOneWrite) line += '\n';
    append(*path, line);
    if (isOneWrite) return;
    if (makeRoom(*path)) append(*path, "\n");
}

void LogFile::clean() {
    if (const auto path = this->path()) empty(*path);
}

void LogFile::setName(std::string name) {
    const std::lock_guard lock(mutex_);
    name_ = std::move(name);
    findPath();
}

LogFile::Path LogFile::path() {
    const std::lock_guard lock(mutex_);
    if (homeGeneration_ != detail::homeGeneration()) {
        directory_ = documents();
        homeGeneration_ = detail::homeGeneration();
        findPath();
    }
    return path_;
}

void LogFile::findPath() {
    path_ =
        directory_
            ? std::make_shared<const std::filesystem::path>(directory_->appendingPathComponent(name_).path())
            : nullptr;
}

// Empties the file if it is too large; its size then. Absent when what is there is no file: nothing is written to a
// pipe or a device.
std::optional<std::uint64_t> LogFile::makeRoom(const std::filesystem::path& path) {
    const auto size = attributesOf(path).size;
    if (!size || isWithinLimit(*size)) return size;
    empty(path);
    return 0;
}

bool LogFile::isWithinLimit(std::uint64_t size) const noexcept {
    const auto limit = sizeLimit_.load(std::memory_order_relaxed);
    return limit >= 0 && size <= static_cast<std::uint64_t>(limit);
}

} // namespace vorlan
