// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/support/SealedTable.h"

#include <openssl/rand.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace vorlan::benchmarks {

namespace {

constexpr std::size_t nonceSize = 12;
constexpr std::size_t tagSize = 16;

constexpr auto schema = "CREATE TABLE IF NOT EXISTS item (ref BLOB PRIMARY KEY, name BLOB UNIQUE, changed "
                        "INTEGER, attrs BLOB, val BLOB) "
                        "WITHOUT ROWID";

void bindName(sqlite3_stmt* statement, const std::string& name) {
    sqlite3_bind_blob(statement, 1, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
}

} // namespace

std::string tableName(std::size_t number) {
    std::array<char, 33> text{};
    std::snprintf(text.data(), text.size(), "%032zu", number * 7919 % 1'000'003);
    return text.data();
}

SealedTable::SealedTable(const std::filesystem::path& path, Journal journal)
    : cipher_(EVP_CIPHER_fetch(nullptr, "AES-256-GCM", nullptr)), context_(EVP_CIPHER_CTX_new()) {
    EVP_CipherInit_ex2(context_, cipher_, key_.data(), nullptr, 1, nullptr);
    constexpr int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX;
    const bool isMade =
        sqlite3_open_v2(path.c_str(), &database_, flags, nullptr) == SQLITE_OK &&
        execute(journal == Journal::ahead ? "PRAGMA journal_mode=WAL" : "PRAGMA journal_mode=DELETE") &&
        execute("PRAGMA synchronous=FULL") && execute("PRAGMA secure_delete=ON") && execute(schema);
    if (!isMade) throw std::runtime_error("a table of the benchmarks cannot be made");
    begin_ = prepare("BEGIN IMMEDIATE");
    commit_ = prepare("COMMIT");
    insert_ = prepare("INSERT INTO item VALUES (randomblob(16), ?1, 1, ?2, ?3)");
    update_ = prepare("UPDATE item SET val = ?2, changed = changed + 1 WHERE name = ?1");
    remove_ = prepare("DELETE FROM item WHERE name = ?1");
    select_ = prepare("SELECT val FROM item WHERE name = ?1");
}

SealedTable::~SealedTable() {
    for (auto* statement : {begin_, commit_, insert_, update_, remove_, select_}) sqlite3_finalize(statement);
    sqlite3_close(database_);
    EVP_CIPHER_CTX_free(context_);
    EVP_CIPHER_free(cipher_);
}

sqlite3_stmt* SealedTable::prepare(const char* text) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database_, text, -1, &statement, nullptr) != SQLITE_OK)
        throw std::runtime_error("a statement of the benchmarks is wrong");
    return statement;
}

bool SealedTable::execute(const char* text) {
    return sqlite3_exec(database_, text, nullptr, nullptr, nullptr) == SQLITE_OK;
}

bool SealedTable::change(sqlite3_stmt* statement) {
    bool isDone = true;
    for (auto* step : {begin_, statement, commit_}) {
        isDone = sqlite3_step(step) == SQLITE_DONE && isDone;
        sqlite3_reset(step);
    }
    return isDone;
}

// nonce, sealed bytes, tag.
void SealedTable::bindSealed(sqlite3_stmt* statement, const std::string& secret) {
    RAND_bytes(bytes_.data(), nonceSize);
    EVP_CipherInit_ex2(context_, nullptr, nullptr, bytes_.data(), 1, nullptr);
    int size = 0;
    auto* sealed = bytes_.data() + nonceSize;
    EVP_CipherUpdate(context_, sealed, &size, reinterpret_cast<const unsigned char*>(secret.data()),
                     static_cast<int>(secret.size()));
    EVP_CipherFinal_ex(context_, sealed + size, &size);
    EVP_CIPHER_CTX_ctrl(context_, EVP_CTRL_AEAD_GET_TAG, tagSize, sealed + secret.size());
    if (statement == insert_) sqlite3_bind_zeroblob(statement, 2, attributesSize);
    sqlite3_bind_blob(statement, statement == insert_ ? 3 : 2, bytes_.data(),
                      static_cast<int>(nonceSize + secret.size() + tagSize), SQLITE_STATIC);
}

void SealedTable::fill(std::size_t count, const std::string& secret) {
    if (read(tableName(0), secret.size())) return;
    bool isDone = execute("BEGIN");
    for (std::size_t i = 0; i < count; ++i) {
        const auto name = tableName(i);
        bindName(insert_, name);
        bindSealed(insert_, secret);
        isDone = sqlite3_step(insert_) == SQLITE_DONE && isDone;
        sqlite3_reset(insert_);
    }
    if (!isDone || !execute("COMMIT")) throw std::runtime_error("a table of the benchmarks cannot be filled");
}

bool SealedTable::insert(const std::string& name, const std::string& secret) {
    bindName(insert_, name);
    bindSealed(insert_, secret);
    return change(insert_);
}

bool SealedTable::update(const std::string& name, const std::string& secret) {
    bindName(update_, name);
    bindSealed(update_, secret);
    return change(update_);
}

bool SealedTable::remove(const std::string& name) {
    bindName(remove_, name);
    return change(remove_);
}

bool SealedTable::open(const unsigned char* sealed, std::size_t length) {
    Bytes opened;
    std::array<unsigned char, tagSize> tag{};
    std::copy_n(sealed + nonceSize + length, tagSize, tag.begin());
    int size = 0;
    return EVP_CipherInit_ex2(context_, nullptr, nullptr, sealed, 0, nullptr) == 1 &&
           EVP_CIPHER_CTX_ctrl(context_, EVP_CTRL_AEAD_SET_TAG, tagSize, tag.data()) == 1 &&
           EVP_CipherUpdate(context_, opened.data(), &size, sealed + nonceSize, static_cast<int>(length)) ==
               1 &&
           EVP_CipherFinal_ex(context_, opened.data() + size, &size) == 1;
}

bool SealedTable::read(const std::string& name, std::size_t length) {
    bindName(select_, name);
    const bool isFound = sqlite3_step(select_) == SQLITE_ROW &&
                         sqlite3_column_bytes(select_, 0) == static_cast<int>(nonceSize + length + tagSize);
    const bool isOpened =
        isFound && open(static_cast<const unsigned char*>(sqlite3_column_blob(select_, 0)), length);
    sqlite3_reset(select_);
    return isOpened;
}

} // namespace vorlan::benchmarks
