// SPDX-License-Identifier: Apache-2.0
#pragma once

// A lock between processes.

#include "platform/files/Descriptor.h"

#include <filesystem>

namespace vorlan::defaults {

/// The lock of a file that is there for nothing else, held until this is destroyed or the process ends.
///
/// Threads: one thread at a time; two of these in one process keep each other out like those of two processes.
/// Errors:  false as a Boolean, with errno set, when the file could not be made.
class FileLock {
public:
    /// Makes the file where it is missing, and waits until no one else has its lock.
    explicit FileLock(const std::filesystem::path& path);

    explicit operator bool() const noexcept { return static_cast<bool>(file_); }

private:
    Descriptor file_;
};

} // namespace vorlan::defaults
