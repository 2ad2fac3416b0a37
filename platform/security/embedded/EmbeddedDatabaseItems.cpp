// SPDX-License-Identifier: Apache-2.0
#include "platform/security/embedded/EmbeddedDatabase.h"

#include "platform/security/StatusError.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <tuple>

namespace vorlan::security {

using embedded::ItemRow;
using embedded::ItemSealer;
using embedded::Query;
using embedded::Transaction;

namespace {

// The columns that are read, in the order of these.
enum Column { ref, cls, svc, acct, grp, sync, acc, gen, ctime, mtime, attrs, val };
constexpr std::array names{"ref", "cls", "svc",   "acct",  "grp",  "sync",
                           "acc", "gen", "ctime", "mtime", "attrs"};
constexpr std::string_view columns = "ref, cls, svc, acct, grp, sync, acc, gen, ctime, mtime, attrs";

// SQLite would convert what is of another type, which is never what was written.
void requireTypes(const Query& query) {
    for (const int column : {ref, svc, acct, grp, attrs}) query.require(column, SQLITE_BLOB);
    for (const int column : {cls, acc}) query.require(column, SQLITE_TEXT);
    for (const int column : {sync, ctime, mtime}) query.require(column, SQLITE_INTEGER);
    if (!query.isNull(gen)) query.require(gen, SQLITE_BLOB);
    if (query.integer(sync) != 0 && query.integer(sync) != 1) throw StatusError(errSecDecode);
}

ItemRow rowOf(const Query& query, bool hasValue) {
    requireTypes(query);
    ItemRow row{.identifier = embedded::identifierFrom(query.bytes(ref)),
                .itemClass = query.text(cls),
                .service = query.data(svc),
                .account = query.data(acct),
                .accessGroup = query.data(grp),
                .isSynchronizable = query.integer(sync) != 0,
                .accessible = query.text(acc),
                .created = query.integer(ctime),
                .modified = query.integer(mtime),
                .attributes = query.data(attrs)};
    if (!query.isNull(gen)) row.generic = query.data(gen);
    if (hasValue && !query.isNull(val)) {
        query.require(val, SQLITE_BLOB);
        row.value = query.data(val);
    }
    // Without the value itself, whether there is one is still to be known.
    if (!hasValue && query.integer(val) != 0) row.value.emplace();
    return row;
}

} // namespace

void EmbeddedDatabase::Condition::add(int column, Wanted value) {
    sql += std::string(sql.empty() ? " WHERE " : " AND ") + names[static_cast<std::size_t>(column)] + " = ?";
    wanted.emplace_back(column, std::move(value));
}

void EmbeddedDatabase::Condition::bindTo(Query& query) const {
    for (const auto& [column, value] : wanted)
        std::visit([&](const auto& content) { query.bind(content); }, value);
}

bool EmbeddedDatabase::Condition::holds(const Query& query) const {
    const auto agrees = [&](const std::pair<int, Wanted>& one) {
        const auto& [column, value] = one;
        if (const auto* integer = std::get_if<std::int64_t>(&value)) return query.integer(column) == *integer;
        if (const auto* text = std::get_if<std::string>(&value)) return query.text(column) == *text;
        return std::ranges::equal(query.bytes(column), std::get<Data>(value));
    };
    return std::ranges::all_of(wanted, agrees);
}

// What a host asks for it asks for again.
const Data& EmbeddedDatabase::digestOf(std::string_view column, const std::string& name) {
    constexpr std::size_t most = 256;
    if (digests_.size() >= most) digests_.clear();
    const auto [found, isNew] = digests_.try_emplace(std::pair(column, name));
    if (isNew) found->second = ItemSealer(*keys_).digestOf(column, name);
    return found->second;
}

EmbeddedDatabase::Condition EmbeddedDatabase::conditionOf(const ItemMatch& match) {
    Condition condition;
    if (match.identifier) condition.add(ref, Data(match.identifier->begin(), match.identifier->end()));
    if (match.itemClass) condition.add(cls, *match.itemClass);
    if (match.service) condition.add(svc, digestOf("service", *match.service));
    if (match.account) condition.add(acct, digestOf("account", *match.account));
    if (match.accessGroup) condition.add(grp, digestOf("group", *match.accessGroup));
    if (match.isSynchronizable) condition.add(sync, std::int64_t{*match.isSynchronizable});
    if (match.accessible) condition.add(acc, *match.accessible);
    if (match.generic) condition.add(gen, digestOf("generic", textFromData(*match.generic)));
    return condition;
}

std::vector<ItemRow> EmbeddedDatabase::rows(const ItemMatch& match, bool wantsAll, bool wantsValue) {
    const auto condition = conditionOf(match);
    // Of those that are few, the oldest is found faster here than by having SQLite sort.
    const bool areFew = match.identifier || (match.service && match.account);
    const char* order = areFew ? "" : wantsAll ? " ORDER BY ctime, ref" : " ORDER BY ctime, ref LIMIT 1";
    auto query =
        database_.query("SELECT " + std::string(columns) + (wantsValue ? ", val" : ", val IS NOT NULL") +
                        " FROM item" + condition.sql + order);
    condition.bindTo(query);
    std::vector<ItemRow> found;
    while (query.step()) {
        if (!condition.holds(query)) throw StatusError(errSecInvalidKeychain);
        found.push_back(rowOf(query, wantsValue));
    }
    const auto age = [](const ItemRow& row) { return std::tie(row.created, row.identifier); };
    if (areFew) std::ranges::sort(found, {}, age);
    if (!wantsAll && found.size() > 1) found.resize(1);
    return found;
}

void EmbeddedDatabase::insert(const ItemRow& row) {
    auto query = database_.query("INSERT INTO item(" + std::string(columns) +
                                 ", val) VALUES(?,?,?,?,?,?,?,?,?,?,?,?)");
    query.bind(row.identifier);
    query.bind(row.itemClass);
    for (const auto* name : {&row.service, &row.account, &row.accessGroup}) query.bind(*name);
    query.bind(std::int64_t{row.isSynchronizable});
    query.bind(row.accessible);
    query.bind(row.generic);
    query.bind(row.created);
    query.bind(row.modified);
    query.bind(row.attributes);
    query.bind(row.value);
    query.run();
}

void EmbeddedDatabase::add(const KeychainItem& item) {
    Transaction transaction(database_);
    insert(ItemSealer(*keys_).row(item));
    transaction.commit();
}

std::vector<KeychainItem> EmbeddedDatabase::find(const ItemRequest& request) {
    const ItemSealer sealer(*keys_);
    const auto found = rows(request.match, request.wantsAll, request.wantsValue);
    if (found.empty()) failAsMissing();
    std::vector<KeychainItem> items;
    for (const auto& row : found) {
        auto& item = items.emplace_back();
        if (request.wantsAttributes) item = sealer.item(row);
        item.identifier = row.identifier;
        if (request.wantsValue) item.value = sealer.value(row);
    }
    return items;
}

void EmbeddedDatabase::update(const ItemMatch& match, const ItemChange& change) {
    Transaction transaction(database_);
    const bool isValueOnly =
        !change.changesIdentity() && !change.accessible && !change.generic && !change.label;
    const auto found = rows(match, true, !isValueOnly);
    if (found.empty()) failAsMissing();
    if (change.isEmpty()) return;
    for (const auto& row : found) {
        if (isValueOnly && row.value) {
            changeValue(row, *change.value);
        } else {
            rewrite(row, change);
        }
    }
    transaction.commit();
}

// The former value is not opened: so a damaged one is mended. The attributes are, since they tell whether the columns
// that say by which key to seal are as they were.
void EmbeddedDatabase::changeValue(const ItemRow& row, const Data& value) {
    const ItemSealer sealer(*keys_);
    sealer.item(row);
    const auto sealed = sealer.sealedValue(row, value);
    auto query = database_.query("UPDATE item SET val = ?, mtime = ? WHERE ref = ?");
    query.bind(sealed);
    query.bind(nowInMicroseconds());
    query.bind(row.identifier);
    query.run();
    if (database_.changes() != 1) throw StatusError(errSecInvalidKeychain);
}

// The seals hold for the columns that change, so all is sealed anew.
void EmbeddedDatabase::rewrite(const ItemRow& row, const ItemChange& change) {
    const ItemSealer sealer(*keys_);
    auto item = sealer.item(row);
    if (!change.value) item.value = sealer.value(row);
    change.apply(item);
    if (isContradictory(item)) throw StatusError(errSecParam);
    item.modified = nowInMicroseconds();
    removeRow(row);
    insert(sealer.row(item));
}

void EmbeddedDatabase::remove(const ItemMatch& match) {
    Transaction transaction(database_);
    const auto found = rows(match, true, false);
    if (found.empty()) failAsMissing();
    for (const auto& row : found) removeRow(row);
    transaction.commit();
}

// By what the table itself is ordered by, not by an index that may be damaged.
void EmbeddedDatabase::removeRow(const ItemRow& row) {
    auto query = database_.query("DELETE FROM item WHERE ref = ?");
    query.bind(row.identifier);
    query.run();
    if (database_.changes() != 1) throw StatusError(errSecInvalidKeychain);
}

void EmbeddedDatabase::failAsMissing() {
    // Both numbers are as they were when it was last sound: then nobody has changed anything since.
    const std::pair now(database_.integer("PRAGMA data_version"), database_.totalChanges());
    if (now != verified_) verify();
    verified_ = now;
    throw StatusError(errSecItemNotFound);
}

void EmbeddedDatabase::verify() {
    const ItemSealer sealer(*keys_);
    for (const auto& row : rows({}, true, false)) {
        const auto item = sealer.item(row);
        const bool isFound = row.service == sealer.digestOf("service", item.service) &&
                             row.account == sealer.digestOf("account", item.account) &&
                             row.accessGroup == sealer.digestOf("group", item.accessGroup);
        if (!isFound) throw StatusError(errSecDecode);
    }
    auto query = database_.query("PRAGMA integrity_check(1)");
    if (!query.step() || query.text(0) != "ok") throw StatusError(errSecInvalidKeychain);
}

} // namespace vorlan::security
