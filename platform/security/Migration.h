// SPDX-License-Identifier: Apache-2.0
#pragma once

// Moving all items from one store to another.

#include "platform/security/ItemStore.h"

#include <VorlanFoundation/Platform/FunctionRef.h>

#include <filesystem>
#include <utility>
#include <vector>

namespace vorlan::security {

/// A move, with a list of what is moved in a file beside the record, from before the first copy until the last original is
/// deleted. Where a move is broken off, what it left in the store that is not the recorded one is known by that: left
/// there, items that the user deletes meanwhile would come back with the next move.
///
/// Threads: one thread at a time, and no other process writes meanwhile.
/// Owns:    nothing: the stores have to outlive it.
/// Errors:  a status.
class Migration {
public:
    Migration(ItemStore& from, ItemStore& to, std::filesystem::path list)
        : from_(from), to_(to), list_(std::move(list)) {}

    /// Copies all items, identifiers and times included, reads every copy back, calls `record` once all are there, and
    /// deletes the originals. Before, it deletes what a former move left in the target.
    ///
    /// On failure before the record the copies are taken back, as far as that can be done. Originals that cannot be deleted
    /// are none: `hasLeftovers`.
    OSStatus run(FunctionRef<OSStatus()> record);

    bool hasLeftovers() const noexcept { return hasLeftovers_; }

private:
    OSStatus clearLeftovers();
    OSStatus copyAll(const std::vector<KeychainItem>& items);
    OSStatus copy(const KeychainItem& item);
    OSStatus verify(const KeychainItem& item);
    bool writeList(const std::vector<KeychainItem>& items) const;

    ItemStore& from_;
    ItemStore& to_;
    std::filesystem::path list_;
    bool hasLeftovers_ = false;
};

} // namespace vorlan::security
