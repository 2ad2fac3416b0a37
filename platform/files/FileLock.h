// SPDX-License-Identifier: Apache-2.0
#pragma once

// A lock between processes.

#include "platform/files/Descriptor.h"

#include <VorlanFoundation/Platform/DispatchTime.h>

#include <filesystem>

namespace vorlan {

/// The lock of a file that is there for nothing else, held until this is destroyed or the process ends. Once it is
/// destroyed, no child that was forked meanwhile keeps it. The file may be removed while others wait for it.
///
/// Threads: one thread at a time; two of these in one process keep each other out like those of two processes.
/// Errors:  false as a Boolean, with errno set, when the file could not be made, and when the lock was not had
///          within the limit (EWOULDBLOCK).
class FileLock {
public:
    /// With whom a lock is held at once.
    enum class Mode {
        alone,  ///< With no one.
        shared, ///< With others that share it.
    };

    /// No lock.
    FileLock() = default;

    /// Makes the file where it is missing, and waits until the lock can be had.
    explicit FileLock(const std::filesystem::path& path, Mode mode = Mode::alone,
                      DispatchTimeInterval limit = DispatchTimeInterval::never());

    FileLock(FileLock&&) noexcept = default;
    FileLock& operator=(FileLock&&) noexcept = default;
    ~FileLock();

    explicit operator bool() const noexcept { return static_cast<bool>(file_); }

private:
    bool take(int operation, bool isLimited, DispatchTime deadline) const;
    bool isRemoved() const;

    Descriptor file_;
};

} // namespace vorlan
