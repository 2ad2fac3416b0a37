// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/FileManager.h>

#include "platform/files/Folders.h"
#include "platform/files/UserFolders.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>

namespace vorlan {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const char* what, const fs::path& path, std::error_code reason) {
    throw fs::filesystem_error(what, path, reason);
}

std::error_code lastError() {
    return {errno, std::generic_category()};
}

// A path with a NUL in it would be another one to the system.
void refuseNul(const fs::path& path) {
    if (path.native().find('\0') != std::string::npos)
        fail("the path has a NUL in it", path, std::make_error_code(std::errc::invalid_argument));
}

void makeFolder(const fs::path& path, bool mayExist) {
    if (mkdir(path.c_str(), S_IRWXU) == 0) return;
    const auto reason = lastError();
    if (mayExist && isFolder(path)) return;
    fail("cannot make the folder", path, reason);
}

void makeFolders(const fs::path& path) {
    if (isFolder(path)) return;
    if (path.has_relative_path()) makeFolders(path.parent_path());
    makeFolder(path, true);
}

fs::file_type typeOf(mode_t mode) {
    switch (mode & S_IFMT) {
    case S_IFREG: return fs::file_type::regular;
    case S_IFDIR: return fs::file_type::directory;
    case S_IFLNK: return fs::file_type::symlink;
    case S_IFBLK: return fs::file_type::block;
    case S_IFCHR: return fs::file_type::character;
    case S_IFIFO: return fs::file_type::fifo;
    case S_IFSOCK: return fs::file_type::socket;
    default: return fs::file_type::unknown;
    }
}

} // namespace

const FileManager& FileManager::defaultManager() noexcept {
    static const FileManager manager;
    return manager;
}

FileURL FileManager::URLForDirectory(SearchPathDirectory directory, LookUp lookUp) const {
    const auto urls = URLsForDirectory(directory, lookUp.inDomain);
    if (urls.empty())
        fail("the user has no such folder", {}, std::make_error_code(std::errc::no_such_file_or_directory));
    if (lookUp.create) createDirectoryAtURL(urls.front(), {.withIntermediateDirectories = true});
    return urls.front();
}

std::vector<FileURL> FileManager::URLsForDirectory(SearchPathDirectory directory,
                                                   SearchPathDomainMask) const {
    const auto found =
        directory == SearchPathDirectory::documents ? folders::documents() : folders::applicationData();
    return found ? std::vector{FileURL(*found)} : std::vector<FileURL>();
}

void FileManager::createDirectoryAtURL(const FileURL& url, Creation creation) const {
    refuseNul(url.path());
    if (creation.withIntermediateDirectories) {
        makeFolders(url.path());
    } else {
        makeFolder(url.path(), false);
    }
}

FileAttributes FileManager::attributesOfItemAtPath(const fs::path& path) const {
    refuseNul(path);
    struct stat status{};
    if (lstat(path.c_str(), &status) != 0) fail("cannot look at the file", path, lastError());
    FileAttributes attributes{typeOf(status.st_mode), std::nullopt};
    if (S_ISREG(status.st_mode)) attributes.size = static_cast<std::uint64_t>(status.st_size);
    return attributes;
}

} // namespace vorlan
