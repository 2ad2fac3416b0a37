// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a process that is gone had set and not saved.

#include "platform/defaults/Aside.h"
#include "platform/defaults/Change.h"
#include "platform/files/Descriptor.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>
#include <vector>

namespace vorlan::defaults {

/// A journal whose process is gone, held by its lock.
///
/// Threads: one thread at a time.
/// Owns:    the file's lock.
class OrphanedJournal {
public:
    /// Whether a folder has journals other than our own, of which some may be orphans.
    static bool mayBeIn(const std::filesystem::path& folder, std::string_view ownName);

    /// Those of a folder, the oldest first. Only to be called while the store's lock is held: a journal that two
    /// look at would be nobody's orphan. One whose process has just ended, and whose lock not quite yet, is waited for.
    static std::vector<OrphanedJournal> allIn(const std::filesystem::path& folder, std::string_view ownName);

    /// What was not saved, in the order in which it was set. What is damaged is left out.
    std::vector<Change> changes();

    /// Removes the file, or moves it aside when something in it is damaged.
    void discard(Problems& problems) const;

private:
    OrphanedJournal(Descriptor file, std::filesystem::path path, std::int64_t modified);

    void readChanges(std::span<const std::byte> bytes, std::vector<Change>& found);

    Descriptor file_;
    std::filesystem::path path_;
    std::int64_t modified_; ///< Nanoseconds.
    bool isDamaged_ = false;
};

} // namespace vorlan::defaults
