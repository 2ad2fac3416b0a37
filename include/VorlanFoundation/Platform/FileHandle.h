// SPDX-License-Identifier: Apache-2.0
#pragma once

// An open file to write to.

#include <VorlanFoundation/Platform/Export.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

namespace vorlan {

class Descriptor;

/// A file, open for writing at its end.
///
/// A symbolic link is not followed, and opening never waits, as it would for a pipe that nobody reads.
///
/// Threads: one thread at a time; any number of handles, in any number of processes, may be of one file.
/// Owns:    the open file, until it is destroyed.
class VORLAN_EXPORT FileHandle {
public:
    /// Opens a file that is there; absent when it cannot be opened.
    static std::optional<FileHandle> forAppending(const std::filesystem::path& path);

    /// The same, and makes the file, for the user alone, where there is none.
    static std::optional<FileHandle> forAppendingOrCreating(const std::filesystem::path& path);

    FileHandle(FileHandle&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileHandle& operator=(FileHandle&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileHandle();

    /// Appends in one write, wherever the end is by then: what several handles append never overlaps. False when
    /// not all of it could be written.
    bool append(std::string_view text);

    /// Cuts the file off; what it had beyond is gone. False when that failed.
    bool truncate(std::uint64_t length);

private:
    static std::optional<FileHandle> owned(Descriptor file);
    explicit FileHandle(int descriptor) noexcept : descriptor_(descriptor) {}

    int descriptor_;
};

} // namespace vorlan
