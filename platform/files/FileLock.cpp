// SPDX-License-Identifier: Apache-2.0
#include "platform/files/FileLock.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

namespace vorlan {

FileLock::FileLock(const std::filesystem::path& path, Mode mode, DispatchTimeInterval limit)
    : file_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR)) {
    if (file_ && !take(mode == Mode::alone ? LOCK_EX : LOCK_SH, limit)) file_ = Descriptor();
}

// The kernel does not wait for a lock for a limited time, so that is done by asking again every millisecond.
bool FileLock::take(int operation, DispatchTimeInterval limit) const {
    const bool isLimited = limit != DispatchTimeInterval::never();
    const auto deadline = DispatchTime::now() + limit;
    while (flock(file_.number(), isLimited ? operation | LOCK_NB : operation) != 0) {
        if (errno == EINTR) continue;
        if (!isLimited || errno != EWOULDBLOCK || DispatchTime::now() >= deadline) return false;
        poll(nullptr, 0, 1);
    }
    return true;
}

} // namespace vorlan
