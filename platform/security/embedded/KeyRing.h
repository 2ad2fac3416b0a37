// SPDX-License-Identifier: Apache-2.0
#pragma once

// The keys of an embedded store, and how they are kept.

#include "platform/security/ItemStore.h"
#include "platform/security/embedded/Sealing.h"

#include <map>
#include <optional>
#include <string_view>
#include <utility>

namespace vorlan::security::embedded {

/// When the passphrase of a store has to have been given: for each kind of item a key of its own.
enum class ItemKey { always, afterFirstUnlock, whenUnlocked };

/// The key that items of an accessibility are sealed by.
ItemKey itemKeyOf(std::string_view accessible);

/// Five random keys: of the names' index, of the attributes, and three of values.
///
/// They are kept in the database in two sealed blocks: index, attributes and `always` under the key of the key file, the
/// others under that and, once the host has set one, the passphrase. So a new passphrase rewrites one block, and no item.
///
/// Threads: as its owner's.
/// Owns:    the keys, which are overwritten when they go.
/// Errors:  StatusError.
class KeyRing {
public:
    /// How the second block is sealed.
    struct Passphrase {
        std::string_view text;
        Data salt;
    };

    /// New keys for the store of an identifier.
    static KeyRing random(const ItemIdentifier& store);

    /// Opens the first block. errSecNotAvailable when it is sealed by another key.
    KeyRing(const Key& master, const ItemIdentifier& store, std::span<const std::byte> sealed);

    /// Opens the second block; false when it is sealed otherwise.
    bool open(const Key& master, std::span<const std::byte> sealed,
              const std::optional<Passphrase>& passphrase);

    /// Both blocks. The second needs both of its keys: errSecInteractionNotAllowed.
    Data sealedFirst(const Key& master) const;
    Data sealedSecond(const Key& master, const std::optional<Passphrase>& passphrase) const;

    /// Forgets the key of items that are to be read when unlocked only.
    void lock();

    const Key& index() const noexcept { return index_; }
    const Key& attributes() const noexcept { return attributes_; }
    /// The key for the value of one item of that kind. errSecInteractionNotAllowed when such items are locked.
    const Key& value(ItemKey kind, const ItemIdentifier& item) const;

private:
    explicit KeyRing(const ItemIdentifier& store) : store_(store) {}

    Data context(std::string_view block) const;
    const Key& values(ItemKey kind) const;

    ItemIdentifier store_;
    Key index_;
    Key attributes_;
    Key always_;
    std::optional<Key> afterFirstUnlock_;
    std::optional<Key> whenUnlocked_;
    mutable std::map<std::pair<ItemKey, ItemIdentifier>, Key> values_; ///< What was made for items before.
};

} // namespace vorlan::security::embedded
