// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the dictionaries of Security.h say, looked at and understood.

#include "platform/security/ItemStore.h"

#include <VorlanFoundation/Platform/Data.h>
#include <VorlanFoundation/Platform/Security.h>
#include <VorlanFoundation/Platform/Value.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vorlan::security {

/// The largest name (UTF-8) and value, in bytes. A keyring on the bus dies of much larger ones.
inline constexpr std::size_t maximumNameSize = 4096;
inline constexpr std::size_t maximumValueSize = std::size_t{1} << 20;

/// What a dictionary is for, which says what may be in it.
enum class Purpose : unsigned { item = 1, query = 2, change = 4 };

/// A reference as hosts keep it: which store an item was in when it was given out, and the item.
struct ItemReference {
    char store;
    ItemIdentifier identifier;
};

Data bytesOf(const ItemReference& reference);

/// The reference that was given out; absent for bytes that are none.
std::optional<ItemReference> referenceFrom(const Data& bytes);

/// The content of a dictionary.
struct ItemAttributes {
    std::optional<std::string> itemClass;
    std::optional<std::string> service;
    std::optional<std::string> account;
    std::optional<std::string> accessGroup;
    std::optional<std::string> accessible;
    std::optional<std::string> label;
    std::optional<Data> generic;
    std::optional<Data> value;
    std::optional<ItemReference> reference;
    std::optional<bool> isSynchronizable;
    bool isAnySynchronizable = false;
    bool matchesAll = false;
    bool returnsData = false;
    bool returnsAttributes = false;
    bool returnsReference = false;

    /// Reads a dictionary; false when something in it is unknown, out of place, of the wrong type, or too large.
    bool read(const Value::Dictionary& dictionary, Purpose purpose);

    /// Whether it is about something that may be carried to other machines and is for this one only.
    bool isContradictory() const;
    /// Whether it is about items that no store has: those of the other four classes.
    bool isOfOtherClass() const;
    bool returnsAnything() const noexcept { return returnsData || returnsAttributes || returnsReference; }

    /// The item that they describe, with the default of what is missing and an identifier of its own.
    KeychainItem item() const;
    ItemMatch match() const;
    ItemChange change() const;

    /// What is to come back of an item that is kept in the store of that letter.
    Value result(const KeychainItem& item, char store) const;
    /// The same of what was found: one, or an array.
    Value result(const std::vector<KeychainItem>& items, char store) const;
};

} // namespace vorlan::security
