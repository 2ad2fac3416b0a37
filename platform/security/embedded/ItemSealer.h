// SPDX-License-Identifier: Apache-2.0
#pragma once

// Items as the rows of the table have them.

#include "platform/security/ItemStore.h"
#include "platform/security/embedded/KeyRing.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vorlan::security::embedded {

/// A row: names as digests, which can be looked for but not read; the names themselves and the value sealed.
struct ItemRow {
    ItemIdentifier identifier{};
    std::string itemClass;
    Data service;
    Data account;
    Data accessGroup;
    bool isSynchronizable = false;
    std::string accessible;
    std::optional<Data> generic;
    std::int64_t created = 0;
    std::int64_t modified = 0;
    Data attributes;           ///< Sealed: the names, the label, and whether there is a value.
    std::optional<Data> value; ///< Sealed.
};

/// An identifier as a table has it. Throws StatusError (errSecInvalidKeychain) for anything else.
ItemIdentifier identifierFrom(std::span<const std::byte> bytes);

/// Turns items into rows and back.
///
/// Every item is sealed by keys of its own, derived from the ring's and its identifier, so that the random nonces of one
/// key never come near to repeating. A seal holds for the row that it is in: values that were exchanged between rows, or an
/// accessibility that was changed, do not open.
///
/// Threads: as the ring's.
/// Owns:    nothing: the ring has to outlive it.
/// Errors:  StatusError: errSecDecode for what does not open, errSecInteractionNotAllowed where the key is locked.
class ItemSealer {
public:
    explicit ItemSealer(const KeyRing& keys) : keys_(keys) {}

    /// What a name is looked for by; `column` says which, so that equal names in two columns differ.
    Data digestOf(std::string_view column, std::span<const std::byte> name) const;
    Data digestOf(std::string_view column, std::string_view name) const {
        return digestOf(column, std::as_bytes(std::span(name)));
    }

    ItemRow row(const KeychainItem& item) const;

    /// Seals a value for the row that it is to be in.
    Data sealedValue(const ItemRow& row, std::span<const std::byte> value) const;

    /// All but the value. Makes sure that the row's columns say the same.
    KeychainItem item(const ItemRow& row) const;

    /// The value; absent when the item is without one.
    std::optional<Data> value(const ItemRow& row) const;

private:
    Data context(const ItemRow& row, std::string_view part) const;
    const Key& valueKey(const ItemRow& row) const;
    Key attributesKey(const ItemRow& row) const;
    Data sealedAttributes(const ItemRow& row, const KeychainItem& item) const;

    const KeyRing& keys_;
};

} // namespace vorlan::security::embedded
