// SPDX-License-Identifier: Apache-2.0
#include "platform/defaults/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

namespace vorlan::defaults {

FileLock::FileLock(const std::filesystem::path& path)
    : file_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR)) {
    while (file_ && flock(file_.number(), LOCK_EX) != 0)
        if (errno != EINTR) file_ = Descriptor();
}

} // namespace vorlan::defaults
