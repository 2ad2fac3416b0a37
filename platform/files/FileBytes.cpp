// SPDX-License-Identifier: Apache-2.0
#include "platform/files/FileBytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace vorlan {

namespace {

[[noreturn]] void fail(const std::filesystem::path& path, int reason) {
    throw std::filesystem::filesystem_error("cannot read", path,
                                            std::error_code(reason, std::generic_category()));
}

} // namespace

Descriptor openFile(const std::filesystem::path& path) {
    // Without O_NONBLOCK, opening a pipe would wait for somebody to write to it.
    Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file && errno != ENOENT) fail(path, errno);
    return file;
}

Data readFile(const Descriptor& file, const std::filesystem::path& path) {
    struct stat status{};
    if (fstat(file.number(), &status) != 0) fail(path, errno);
    if (S_ISDIR(status.st_mode)) fail(path, EISDIR);
    if (!S_ISREG(status.st_mode)) fail(path, EINVAL);
    Data data(static_cast<std::size_t>(status.st_size) + 1); // one more, to see the end at once
    std::size_t filled = 0;
    for (;;) {
        const auto count =
            pread(file.number(), data.data() + filled, data.size() - filled, static_cast<off_t>(filled));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) fail(path, errno);
        if (count == 0) break;
        filled += static_cast<std::size_t>(count);
        if (filled == data.size()) data.resize(2 * data.size()); // it has grown meanwhile
    }
    data.resize(filled);
    return data;
}

std::optional<Data> readFile(const std::filesystem::path& path) {
    const auto file = openFile(path);
    return file ? std::optional(readFile(file, path)) : std::nullopt;
}

bool writeAll(const Descriptor& file, std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const auto count = write(file.number(), bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

// A file without a name gets one once it is whole. Where the file system has no such files, the name is of another file
// first, which a process that is killed leaves behind.
bool createFile(const std::filesystem::path& path, std::span<const std::byte> bytes) {
    const auto folder = path.parent_path();
    Descriptor file(open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR));
    std::string name = "/proc/self/fd/" + std::to_string(file.number());
    const bool hasName = !file;
    if (hasName) {
        name = path.native() + ".XXXXXX";
        file = Descriptor(mkostemp(name.data(), O_CLOEXEC));
    }
    const bool isMade = file && writeAll(file, bytes) && fsync(file.number()) == 0 &&
                        linkat(AT_FDCWD, name.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0;
    const int error = errno;
    if (hasName && file) unlink(name.c_str());
    if (!isMade) errno = error;
    return isMade && syncFolder(folder);
}

bool syncFolder(const std::filesystem::path& folder) {
    const Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Some file systems have no such thing, and then the name is as safe as it gets.
    return opened && (fsync(opened.number()) == 0 || errno == EINVAL);
}

} // namespace vorlan
