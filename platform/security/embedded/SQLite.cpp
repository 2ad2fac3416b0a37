// SPDX-License-Identifier: Apache-2.0
#include "platform/security/embedded/SQLite.h"

#include "platform/security/StatusError.h"

#include <cerrno>

namespace vorlan::security::embedded {

namespace {

OSStatus statusOf(int extendedCode, int systemError) {
    switch (extendedCode & 0xFF) {
    case SQLITE_CONSTRAINT: return errSecDuplicateItem;
    case SQLITE_FULL: return errSecDiskFull;
    case SQLITE_IOERR: return systemError == ENOSPC || systemError == EDQUOT ? errSecDiskFull : errSecIO;
    case SQLITE_NOMEM: return errSecAllocate;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_FORMAT:
    case SQLITE_SCHEMA:
    case SQLITE_MISMATCH:
    case SQLITE_ERROR: return errSecInvalidKeychain; // no table or column of that name: not our file any more
    default: return errSecNotAvailable;              // busy, or not to be opened or written
    }
}

[[noreturn]] void fail(sqlite3* connection) {
    throw StatusError(statusOf(sqlite3_extended_errcode(connection), sqlite3_system_errno(connection)));
}

} // namespace

Query::~Query() {
    if (statement_ == nullptr) return;
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

void Query::check(int code) const {
    if (code != SQLITE_OK) fail(sqlite3_db_handle(statement_));
}

void Query::bind(std::span<const std::byte> bytes) {
    // A null pointer would bind NULL, and no bytes are something else.
    const auto* start = bytes.empty() ? static_cast<const void*>("") : bytes.data();
    check(sqlite3_bind_blob64(statement_, ++bound_, start, bytes.size(), SQLITE_STATIC));
}

void Query::bind(const std::optional<Data>& bytes) {
    if (bytes) return bind(std::span(*bytes));
    check(sqlite3_bind_null(statement_, ++bound_));
}

void Query::bind(std::string_view text) {
    check(sqlite3_bind_text64(statement_, ++bound_, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Query::bind(std::int64_t integer) {
    check(sqlite3_bind_int64(statement_, ++bound_, integer));
}

bool Query::step() {
    const int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW) return true;
    if (code != SQLITE_DONE) fail(sqlite3_db_handle(statement_));
    return false;
}

void Query::require(int column, int type) const {
    if (sqlite3_column_type(statement_, column) != type) throw StatusError(errSecDecode);
}

std::span<const std::byte> Query::bytes(int column) const {
    const auto* start = static_cast<const std::byte*>(sqlite3_column_blob(statement_, column));
    return {start, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

SQLite::SQLite(const std::filesystem::path& path) {
    sqlite3* connection = nullptr;
    constexpr int flags =
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_FULLMUTEX | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_EXRESCODE;
    const int code = sqlite3_open_v2(path.c_str(), &connection, flags, nullptr);
    connection_.reset(connection);
    if (connection == nullptr) throw StatusError(errSecAllocate);
    if (code != SQLITE_OK) fail(connection);
}

Query SQLite::query(const std::string& sql) {
    auto& statement = statements_[sql];
    if (!statement) {
        sqlite3_stmt* prepared = nullptr;
        const auto size = static_cast<int>(sql.size());
        const int code = sqlite3_prepare_v3(connection_.get(), sql.c_str(), size, SQLITE_PREPARE_PERSISTENT,
                                            &prepared, nullptr);
        if (code != SQLITE_OK) fail(connection_.get());
        statement.reset(prepared);
    }
    return Query(statement.get());
}

std::int64_t SQLite::integer(const std::string& sql) {
    auto found = query(sql);
    return found.step() ? found.integer(0) : 0;
}

Transaction::~Transaction() {
    if (!isOpen_) return;
    try {
        database_.run("ROLLBACK");
    } catch (const StatusError&) { // SQLite has rolled back by itself
    }
}

void Transaction::commit() {
    database_.run("COMMIT");
    isOpen_ = false;
}

} // namespace vorlan::security::embedded
