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
#include <system_error>

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

} // namespace

DefaultsJournal::~DefaultsJournal() {
    if (file_ && start_ == end_) unlink(path_.c_str());
}

bool DefaultsJournal::open(const std::filesystem::path& folder) try {
    FileManager::defaultManager().createDirectoryAtURL(FileURL(folder),
                                                       {.withIntermediateDirectories = true});
    // Who looks for orphans may catch the file before its lock is held, and remove it: then another is made.
    for (int attempt = 0; attempt < 100; ++attempt) {
        name_ = makeName();
        path_ = folder / name_;
        file_ = Descriptor(
            ::open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
        if (!file_) return false;
        struct stat status{};
        if (flock(file_.number(), LOCK_EX | LOCK_NB) != 0 || fstat(file_.number(), &status) != 0 ||
            status.st_nlink == 0)
            continue;
        start_ = end_ = sizeof(JournalHeader);
        if (writeStart(start_)) return true;
        const int reason = errno;
        unlink(path_.c_str());
        file_ = Descriptor();
        errno = reason;
        return false;
    }
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
    if (!file_ || place <= start_ || !writeStart(place)) return;
    start_ = place;
    // When nothing is left the file is used from its beginning again, unless that cannot be said in it.
    if (start_ == end_ && ftruncate(file_.number(), sizeof(JournalHeader)) == 0 &&
        writeStart(sizeof(JournalHeader)))
        start_ = end_ = sizeof(JournalHeader);
}

bool DefaultsJournal::writeStart(std::uint64_t place) const noexcept {
    const JournalHeader header(place);
    return writeAt(file_, 0, std::as_bytes(std::span(&header, 1)));
}

} // namespace vorlan::defaults
