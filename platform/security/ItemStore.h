// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a store of keychain items does. Each store keeps the same rules, which the tests try on all of them.

#include <VorlanFoundation/Platform/Data.h>
#include <VorlanFoundation/Platform/Security.h>

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan::security {

/// An item's name for good: 16 random bytes, made when it is added.
using ItemIdentifier = std::array<std::byte, 16>;

/// An item. Names are bytes: mostly UTF-8, but an account may be anything.
struct KeychainItem {
    ItemIdentifier identifier{};
    std::string itemClass; ///< One of the kSecClass texts.
    std::string service;
    std::string account;
    std::string accessGroup;
    bool isSynchronizable = false;
    std::string accessible; ///< One of the kSecAttrAccessible texts.
    std::optional<Data> generic;
    std::string label;
    std::int64_t created = 0;  ///< Microseconds since 1970.
    std::int64_t modified = 0; ///< Likewise.
    std::optional<Data> value; ///< An item may be without one.
};

/// Which items are meant: those that agree in all that is present.
struct ItemMatch {
    std::optional<ItemIdentifier> identifier = std::nullopt;
    std::optional<std::string> itemClass = std::nullopt;
    std::optional<std::string> service = std::nullopt;
    std::optional<std::string> account = std::nullopt;
    std::optional<std::string> accessGroup = std::nullopt;
    std::optional<std::string> accessible = std::nullopt;
    std::optional<Data> generic = std::nullopt;
    std::optional<bool> isSynchronizable = std::nullopt; ///< Absent for both.

    bool operator()(const KeychainItem& item) const;
};

/// What is to be found, and what of it is needed: the rest may be left empty.
struct ItemRequest {
    ItemMatch match = {};
    bool wantsAll = false;        ///< Else the oldest: the first by time of creation, then by identifier.
    bool wantsAttributes = false; ///< Else the identifier (and what else costs nothing).
    bool wantsValue = false;
};

/// What becomes of items; what is absent stays as it is.
struct ItemChange {
    std::optional<Data> value = std::nullopt;
    std::optional<std::string> service = std::nullopt;
    std::optional<std::string> account = std::nullopt;
    std::optional<std::string> accessGroup = std::nullopt;
    std::optional<bool> isSynchronizable = std::nullopt;
    std::optional<std::string> accessible = std::nullopt;
    std::optional<Data> generic = std::nullopt;
    std::optional<std::string> label = std::nullopt;

    bool isEmpty() const noexcept;
    /// Whether it touches what makes two items the same one.
    bool changesIdentity() const noexcept;
    void apply(KeychainItem& item) const;
};

/// What makes two items the same one: no store keeps two that agree in this.
ItemMatch identityOf(const KeychainItem& item);

/// The order of what is found: by time of creation, then by identifier.
bool isOlder(const KeychainItem& a, const KeychainItem& b);

/// Whether an item may be carried to other machines and is for this one only, which no store keeps: errSecParam.
bool isContradictory(const KeychainItem& item);

/// The time of the moment as items have it; later than any that was given before in this process, so that what was
/// added first is older.
std::int64_t nowInMicroseconds();

/// A fresh identifier.
ItemIdentifier makeItemIdentifier();

/// A store of items. All that comes in was looked at: classes and accessibilities are known, sizes are within limits.
///
/// Every operation answers errSecItemNotFound only when it is certain, errSecInteractionNotAllowed when what it
/// needs is locked, errSecNotAvailable when the store cannot be reached.
///
/// Threads: safe from any thread. Of the three that write, one at a time is called in all processes of the user where
///          `needsLoneWriter()` says so.
class ItemStore {
public:
    ItemStore() = default;
    ItemStore(const ItemStore&) = delete;
    ItemStore& operator=(const ItemStore&) = delete;
    virtual ~ItemStore() = default;

    /// Adds an item as it is, identifier and times included; errSecDuplicateItem when there is one of its identity.
    virtual OSStatus add(const KeychainItem& item) = 0;

    /// Finds items, oldest first.
    virtual OSStatus find(const ItemRequest& request, std::vector<KeychainItem>& found) = 0;

    /// Changes all matching items, and sets their time of modification. An empty change only asks whether there are any.
    virtual OSStatus update(const ItemMatch& match, const ItemChange& change) = 0;

    /// Deletes all matching items.
    virtual OSStatus remove(const ItemMatch& match) = 0;

    /// Whether nothing but a lock around its writers keeps it from having one item twice.
    virtual bool needsLoneWriter() const = 0;

    /// Whether new items can be added without asking anyone: what decides on the store of a user who has none.
    virtual bool isReady() = 0;

    /// Closes what can be closed; errSecUnimplemented where nothing can.
    virtual OSStatus lock() { return errSecUnimplemented; }

    /// Opens it, by a passphrase where it has one of ours; errSecUnimplemented where nothing was closed.
    virtual OSStatus unlock(std::string_view /*passphrase*/) { return errSecUnimplemented; }

    /// Has it ask for a passphrase of ours from now on, or for none.
    virtual OSStatus setPassphrase(std::optional<std::string_view> /*passphrase*/) {
        return errSecUnimplemented;
    }

    /// For logs: "the embedded keychain in /home/anna/.local/share/vorlan/keychain".
    virtual std::string description() const = 0;
};

} // namespace vorlan::security
