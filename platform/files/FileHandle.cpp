// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/FileHandle.h>

#include "platform/files/Descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace vorlan {

namespace {

Descriptor openToAppend(const std::filesystem::path& path, int more) {
    // A path with a NUL in it would be another one to the system.
    if (path.native().find('\0') != std::string::npos) return Descriptor();
    return Descriptor(open(path.c_str(),
                           O_WRONLY | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | more,
                           S_IRUSR | S_IWUSR));
}

} // namespace

std::optional<FileHandle> FileHandle::forAppending(const std::filesystem::path& path) {
    return owned(openToAppend(path, 0));
}

std::optional<FileHandle> FileHandle::forAppendingOrCreating(const std::filesystem::path& path) {
    return owned(openToAppend(path, O_CREAT));
}

std::optional<FileHandle> FileHandle::owned(Descriptor file) {
    return file ? std::optional(FileHandle(file.release())) : std::nullopt;
}

FileHandle::~FileHandle() {
    if (descriptor_ >= 0) close(descriptor_);
}

bool FileHandle::append(std::string_view text) {
    ssize_t count = -1;
    do {
        count = write(descriptor_, text.data(), text.size());
    } while (count < 0 && errno == EINTR);
    return count == static_cast<ssize_t>(text.size());
}

bool FileHandle::truncate(std::uint64_t length) {
    return ftruncate(descriptor_, static_cast<off_t>(length)) == 0;
}

} // namespace vorlan
