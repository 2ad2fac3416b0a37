// SPDX-License-Identifier: Apache-2.0
#include "platform/defaults/DefaultsJournal.h"

#include "platform/defaults/Change.h"

#include <VorlanFoundation/Platform/FileManager.h>
#include <VorlanFoundation/Platform/UUID.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace vorlan::defaults {

namespace {

std::string makeName() {
    return "defaults." + std::to_string(getpid()) + "-" + makeUUIDString().substr(0, 8) + ".journal";
}

bool writeAt(const Descriptor& file, std::uint64_t place, std::span<const std::byte> bytes) {
    const auto count = pwrite(file.number(), bytes.data(), bytes.size(), static_cast<off_t>(place));
    if (count >= 0 && static_cast<std::size_t>(count) != bytes.size()) errno = ENOSPC;
    return static_cast<std::size_t>(count) == bytes.size();
}

bool writeStart(const Descriptor& file, std::uint64_t place) {
    const JournalHeader header(place);
    return writeAt(file, 0, std::as_bytes(std::span(&header, 1)));
}

} // namespace

DefaultsJournal::~DefaultsJournal() {
    if (file_ && start_ == end_) unlink(path_.c_str());
}

bool DefaultsJournal::open(const std::filesystem::path& folder) try {
    FileManager::defaultManager().createDirectoryAtURL(FileURL(folder),
                                                       {.withIntermediateDirectories = true});
    name_ = makeName();
    path_ = folder / name_;
    // Made under a name that nobody looks for: who looks for orphans would take a journal without its lock for one, and
    // remove it.
    const auto unfinished = path_.native() + ".new";
    Descriptor file(
        ::open(unfinished.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    if (!file) return false;
    start_ = end_ = sizeof(JournalHeader);
    if (flock(file.number(), LOCK_EX | LOCK_NB) == 0 && writeStart(file, start_) &&
        std::rename(unfinished.c_str(), path_.c_str()) == 0) {
        file_ = std::move(file);
        return true;
    }
    const int reason = errno;
    unlink(unfinished.c_str());
    errno = reason;
    return false;
} catch (const std::filesystem::filesystem_error& error) {
    errno = error.code().value();
    return false;
}

bool DefaultsJournal::append(const std::filesystem::path& folder, std::span<const std::byte> change) {
    if (!file_ && !open(folder)) return false;
    const auto length = static_cast<ChangeLength>(change.size());
    const auto lengthBytes = std::as_bytes(std::span(&length, 1));
    buffer_.assign(lengthBytes.begin(), lengthBytes.end());
    buffer_.insert(buffer_.end(), change.begin(), change.end());
    if (!writeAt(file_, end_, buffer_)) {
        const int reason = errno;
        // Part of a change at the end of a journal is passed over by readers, and overwritten by the next.
        if (ftruncate(file_.number(), static_cast<off_t>(end_)) != 0) errno = reason;
        errno = reason;
        return false;
    }
    end_ += buffer_.size();
    return true;
}

void DefaultsJournal::forgetBefore(std::uint64_t place) noexcept {
    // A start that cannot be moved only means that the same is taken over twice.
    if (!file_ || place <= start_ || !writeStart(file_, place)) return;
    start_ = place;
    // When nothing is left the file is used from its beginning again, unless that cannot be said in it.
    if (start_ == end_ && ftruncate(file_.number(), sizeof(JournalHeader)) == 0 &&
        writeStart(file_, sizeof(JournalHeader)))
        start_ = end_ = sizeof(JournalHeader);
}

void DefaultsJournal::leaveIfRemoved() noexcept {
    struct stat status{};
    if (!file_ || start_ != end_ || fstat(file_.number(), &status) != 0 || status.st_nlink != 0) return;
    file_ = Descriptor();
    name_.clear();
    start_ = end_ = 0;
}

} // namespace vorlan::defaults
