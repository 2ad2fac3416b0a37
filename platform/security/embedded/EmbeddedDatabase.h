// SPDX-License-Identifier: Apache-2.0
#pragma once

// The open file of an embedded store.

#include "platform/security/embedded/EmbeddedStore.h"
#include "platform/security/embedded/ItemSealer.h"
#include "platform/security/embedded/KeyRing.h"
#include "platform/security/embedded/SQLite.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace vorlan::security {

/// Items in an SQLite database.
///
/// Nothing is said to be missing before every row was looked at: a damaged row is one that is not found.
///
/// Threads: one thread at a time; any number of processes.
/// Owns:    the connection and the keys.
/// Errors:  StatusError.
class EmbeddedDatabase {
public:
    EmbeddedDatabase(const EmbeddedFiles& files, MissingDatabase missing);

    const ItemIdentifier& identifier() const noexcept { return identifier_; }
    bool hasItems();

    void add(const KeychainItem& item);
    std::vector<KeychainItem> find(const ItemRequest& request);
    void update(const ItemMatch& match, const ItemChange& change);
    void remove(const ItemMatch& match);

    /// errSecUnimplemented when there is no passphrase.
    void lock();
    /// errSecAuthFailed for a wrong passphrase, errSecUnimplemented when there is none.
    void unlock(std::string_view passphrase);
    void setPassphrase(std::optional<std::string_view> passphrase);

private:
    /// The part of a statement that says which rows are meant.
    struct Condition {
        using Wanted = std::variant<Data, std::string, std::int64_t>;

        std::string sql;
        std::vector<std::pair<int, Wanted>> wanted; ///< Of each column, by its place.

        void add(int column, Wanted value);
        void bindTo(embedded::Query& query) const;
        /// Whether the row that was given is one of these. A damaged index leads to others.
        bool holds(const embedded::Query& query) const;
    };

    void makeStore();
    void useWriteAheadLog();
    void openStore();
    std::optional<Data> meta(std::string_view key);
    Data required(std::string_view key);
    void setMeta(std::string_view key, const std::optional<Data>& value);

    const Data& digestOf(std::string_view column, const std::string& name);
    Condition conditionOf(const ItemMatch& match);
    std::vector<embedded::ItemRow> rows(const ItemMatch& match, bool wantsAll, bool wantsValue);
    void insert(const embedded::ItemRow& row);
    void changeValue(const embedded::ItemRow& row, const Data& value);
    void rewrite(const embedded::ItemRow& row, const ItemChange& change);
    void removeRow(const embedded::ItemRow& row);
    /// Throws: errSecItemNotFound when all that is there is sound.
    [[noreturn]] void failAsMissing();
    void verify();

    embedded::SQLite database_;
    std::filesystem::path keyFile_;
    ItemIdentifier identifier_{};
    std::optional<embedded::KeyRing> keys_;
    std::map<std::pair<std::string_view, std::string>, Data>
        digests_; ///< Of names that were asked for; by column.
    std::pair<std::int64_t, std::int64_t> verified_{-1,
                                                    -1}; ///< What the database had seen when it was sound.
};

} // namespace vorlan::security
