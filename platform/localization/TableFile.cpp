// SPDX-License-Identifier: Apache-2.0
#include "platform/localization/TableFile.h"

#include "platform/files/Descriptor.h"
#include "platform/files/FileBytes.h"
#include "platform/localization/TextDecoding.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <system_error>
#include <utility>

namespace vorlan {

namespace {

constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

std::int64_t nanoseconds(const timespec& time) {
    return time.tv_sec * nanosecondsPerSecond + time.tv_nsec;
}

FileVersion versionFrom(int result, const struct stat& status) noexcept {
    if (result != 0) return {.error = errno};
    return {.device = status.st_dev,
            .inode = status.st_ino,
            .size = status.st_size,
            .modified = nanoseconds(status.st_mtim),
            .changed = nanoseconds(status.st_ctim)};
}

std::string sentence(const std::filesystem::path& path, TextPosition position, const std::string& why) {
    auto text = "cannot use " + path.native() + ": ";
    if (position != TextPosition())
        text +=
            "line " + std::to_string(position.line) + ", column " + std::to_string(position.column) + ": ";
    return text + why;
}

std::error_code systemError(int number) {
    return {number, std::generic_category()};
}

// What is larger would be refused as well, but only once it was read.
void requireBearableSize(off_t size) {
    if (std::cmp_greater(size, stringTableSizeLimit))
        throw StringTableError("it is larger than any table", TextPosition());
}

} // namespace

FileVersion FileVersion::ofPath(const char* path) noexcept {
    struct stat status{};
    return versionFrom(stat(path, &status), status);
}

FileVersion FileVersion::ofDescriptor(int descriptor) noexcept {
    struct stat status{};
    return versionFrom(fstat(descriptor, &status), status);
}

bool FileVersion::isAbsent() const noexcept {
    return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG;
}

bool FileVersion::isYoung() const noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME_COARSE, &now); // by which file systems go
    constexpr std::int64_t someTicks = nanosecondsPerSecond / 20;
    return std::abs(nanoseconds(now) - changed) < someTicks;
}

bool TableFile::refresh(std::vector<std::string>& problems) {
    const auto found = FileVersion::ofPath(path_.c_str());
    if (version_ == found && isSettled_) return false;
    const auto former = std::exchange(version_, found);
    const auto formerTexts = texts_;
    isSettled_ = false; // until it was read, or is known to be no table
    const auto complain = [&](TextPosition position, const std::string& why) {
        if (version_ != former) problems.push_back(sentence(path_, position, why));
    };
    try {
        const auto bytes = readWhole();
        if (bytes) texts_ = std::make_shared<const StringTable>(reader_(*bytes));
        if (version_->isAbsent()) texts_.reset();
    } catch (const StringTableError& error) {
        isSettled_ = !version_->isYoung();
        complain(error.position(), error.what());
    } catch (const std::filesystem::filesystem_error& error) {
        complain({}, error.code().message()); // which may pass without a change of the file
    }
    return version_ != former || texts_ != formerTexts;
}

// Absent when it is not there, and while somebody keeps writing to it: then the next refresh tries again.
std::optional<Data> TableFile::readWhole() {
    constexpr int attempts = 3;
    for (int i = 0; i < attempts && !version_->isAbsent(); ++i) {
        // Without O_NONBLOCK, opening a pipe would wait for somebody to write to it.
        const Descriptor file(open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        if (!file) {
            const FileVersion none{.error = errno};
            if (!none.isAbsent())
                throw std::filesystem::filesystem_error("cannot read", path_, systemError(none.error));
            version_ = none;
            break;
        }
        version_ = FileVersion::ofDescriptor(file.number());
        isSettled_ = !version_->isYoung();
        requireBearableSize(version_->size);
        auto bytes = readFile(file, path_);
        if (version_ == FileVersion::ofDescriptor(file.number())) return bytes;
    }
    isSettled_ = version_->isAbsent();
    return std::nullopt;
}

} // namespace vorlan
