// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a process has set and not saved yet, where it outlives the process.

#include "platform/files/Descriptor.h"

#include <VorlanFoundation/Platform/Data.h>

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace vorlan::defaults {

/// The journal of this process: a file beside the store's that each change is appended to. Whoever finds the file
/// without its lock held knows that its process is gone, and takes over what it says.
///
/// The kernel has the bytes when a call returns, so that they survive the process, however it ends.
///
/// Threads: one thread at a time.
/// Owns:    the file, with its lock; it is removed at the end if all was saved.
class DefaultsJournal {
public:
    DefaultsJournal() = default;
    DefaultsJournal(const DefaultsJournal&) = delete;
    DefaultsJournal& operator=(const DefaultsJournal&) = delete;
    ~DefaultsJournal();

    /// Appends a change, after making the file (and its folder) when this is the first. False, with errno set,
    /// when that failed, and then the journal is as it was.
    bool append(const std::filesystem::path& folder, std::span<const std::byte> change);

    /// Where the next change will be, to be passed to `forgetBefore` when all before it was saved.
    std::uint64_t end() const noexcept { return end_; }

    /// Drops the changes before a place.
    void forgetBefore(std::uint64_t place) noexcept;

    /// Lets go of a file that was removed (with its folder, say), once nothing in it is needed: the next change makes
    /// another, where it outlives the process again.
    void leaveIfRemoved() noexcept;

    /// The name of its file; empty when there is none.
    std::string_view name() const noexcept { return name_; }

private:
    bool open(const std::filesystem::path& folder);

    Descriptor file_;
    std::filesystem::path path_;
    std::string name_;
    std::uint64_t end_ = 0;
    std::uint64_t start_ = 0;
    Data buffer_;
};

} // namespace vorlan::defaults
