// SPDX-License-Identifier: Apache-2.0
#pragma once

// The files of one table in one folder, and all of these that are in use.

#include "platform/localization/LocalizedTables.h"
#include "platform/localization/TableFile.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vorlan {

/// A table's key in maps, which are searched by a TablePlace.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
/// Owns:    its texts.
struct TableKey {
    explicit TableKey(const TablePlace& place)
        : resources(place.resources), language(place.language), table(place.table) {}

    operator TablePlace() const noexcept { return {resources, language, table}; } // NOLINT: the same place

    std::string resources;
    std::string language;
    std::string table;
};

/// The hash of places and keys.
struct TableHash {
    using is_transparent = void;
    std::size_t operator()(const TablePlace& place) const noexcept {
        const std::hash<std::string_view> hash;
        constexpr std::size_t spread = 0x9E37'79B9'7F4A'7C15;
        return (hash(place.resources) * spread + hash(place.language)) * spread + hash(place.table);
    }
};

/// Whether places and keys are the same.
struct TableEqual {
    using is_transparent = void;
    bool operator()(const TablePlace& a, const TablePlace& b) const noexcept {
        return a.language == b.language && a.table == b.table && a.resources == b.resources;
    }
};

template <class Value>
using TableMap = std::unordered_map<TableKey, Value, TableHash, TableEqual>;

/// The texts of a table in a folder, read again when the files changed.
///
/// Threads: safe from any thread.
/// Owns:    the texts of this moment, shared with those that asked for them.
/// Errors:  files that cannot be used are told to the problem handler.
class TableFolder {
public:
    explicit TableFolder(const TablePlace& place) : key_(place) {}

    /// Looks at the files when that is some time ago, on the one thread that comes first. May call the problem handler.
    void refreshWhenDue();

    /// Whether these are the texts of this moment.
    bool isCurrent(const FolderTexts* texts) const noexcept {
        return current_.load(std::memory_order_relaxed) == texts;
    }

    /// The texts of this moment. May call the problem handler, at the first time.
    std::shared_ptr<const FolderTexts> texts();

    /// Makes a look at the files due.
    void forgetLastLook() noexcept { lookedAt_.store(0, std::memory_order_relaxed); }

private:
    static void report(const std::vector<std::string>& problems);

    void refresh(std::vector<std::string>& problems);

    std::filesystem::path folderNow() const;

    const TableKey key_;
    std::atomic<std::uint64_t> lookedAt_ = 0; ///< By the coarse monotonic clock, in nanoseconds.
    std::atomic<const FolderTexts*> current_ = nullptr;
    std::mutex mutex_; ///< Of all that follows.
    std::shared_ptr<const FolderTexts> texts_;
    std::filesystem::path folder_;
    TableFile strings_;
    TableFile plurals_;
};

} // namespace vorlan
