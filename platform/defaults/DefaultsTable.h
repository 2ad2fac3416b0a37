// SPDX-License-Identifier: Apache-2.0
#pragma once

// The entries of a store, in memory.

#include <VorlanFoundation/Platform/Value.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vorlan::defaults {

/// What the file says, with what this process set since over it, and registered values beneath.
///
/// Threads: reading by any number of threads, or changing by one: the owner sees to that.
class DefaultsTable {
public:
    /// An entry that was set and is not in the file yet. The number tells one setting of it from the next.
    struct Unsaved {
        std::string key;
        std::optional<Value> value;
        std::uint64_t number;
    };

    /// The value under a key, or as registered; null when there is neither. Valid until the next change.
    const Value* find(std::string_view key) const;

    /// The registered value alone.
    const Value* findRegistered(std::string_view key) const;

    /// Sets an entry, or removes it.
    void set(std::string_view key, std::optional<Value> value);

    /// Has `value` count where there is no entry.
    void registerDefault(const std::string& key, Value value);

    /// Whether something was set that is not in the file yet.
    bool hasUnsaved() const noexcept { return !unsaved_.empty(); }

    /// A copy of what is not in the file yet.
    std::vector<Unsaved> unsaved() const;

    /// Marks what was copied as saved, but for what was set again meanwhile.
    void markSaved(const std::vector<Unsaved>& saved);

    /// Takes over what the file says now, but for entries that are not saved. The keys whose value, seen from
    /// outside, changed.
    std::vector<std::string> replaceSaved(const Value::Dictionary& entries);

    /// All entries, and with those that are registered for other keys.
    Value::Dictionary entries(bool withRegistered) const;

private:
    struct Entry {
        std::optional<Value> value; ///< Absent: removed, and that is not saved yet.
        std::uint64_t number = 0;   ///< 0: as in the file.
    };
    // Looks up without making a std::string of the key.
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };
    template <class Content>
    using Map = std::unordered_map<std::string, Content, Hash, std::equal_to<>>;

    template <class Content>
    static Content& at(Map<Content>& map, std::string_view key);
    void removeAllBut(const Value::Dictionary& entries, std::vector<std::string>& changed);
    bool replace(const std::string& key, const Value& value);

    Map<Entry> entries_;
    Map<Value> registered_;
    std::vector<std::string> unsaved_; ///< Keys of entries with a number, each once.
    std::uint64_t lastNumber_ = 0;
};

} // namespace vorlan::defaults
