// SPDX-License-Identifier: Apache-2.0
#include "platform/files/FileLock.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

namespace vorlan {

// Where the file was removed while this waited for its lock, others lock the one that took its place.
FileLock::FileLock(const std::filesystem::path& path, Mode mode, DispatchTimeInterval limit) {
    const bool isLimited = limit != DispatchTimeInterval::never();
    const auto deadline = DispatchTime::now() + limit;
    do {
        file_ = Descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
        if (file_ && !take(mode == Mode::alone ? LOCK_EX : LOCK_SH, isLimited, deadline))
            file_ = Descriptor();
    } while (file_ && isRemoved());
}

// A child that was forked meanwhile has the descriptor too, and closing ours alone would leave the lock to it.
FileLock::~FileLock() {
    if (file_) flock(file_.number(), LOCK_UN);
}

// The kernel does not wait for a lock for a limited time, so that is done by asking again every millisecond.
bool FileLock::take(int operation, bool isLimited, DispatchTime deadline) const {
    while (flock(file_.number(), isLimited ? operation | LOCK_NB : operation) != 0) {
        if (errno == EINTR) continue;
        if (!isLimited || errno != EWOULDBLOCK || DispatchTime::now() >= deadline) return false;
        poll(nullptr, 0, 1);
    }
    return true;
}

bool FileLock::isRemoved() const {
    struct stat status{};
    return fstat(file_.number(), &status) == 0 && status.st_nlink == 0;
}

} // namespace vorlan
