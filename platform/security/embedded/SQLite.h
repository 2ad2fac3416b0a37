// SPDX-License-Identifier: Apache-2.0
#pragma once

// An SQLite database, with owners for what SQLite hands out.

#include <VorlanFoundation/Platform/Data.h>

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace vorlan::security::embedded {

/// A run of a prepared statement, which is reset when this goes.
///
/// Threads: as the database's.
/// Owns:    nothing: the database keeps the statement.
/// Errors:  StatusError, with what SQLite's failure comes to.
class Query {
public:
    explicit Query(sqlite3_stmt* statement) noexcept : statement_(statement) {}
    Query(Query&& other) noexcept : statement_(std::exchange(other.statement_, nullptr)) {}
    Query& operator=(Query&&) = delete;
    ~Query();

    /// Binds the next parameter. Bytes have to outlive the run.
    void bind(std::span<const std::byte> bytes);
    void bind(const Data& bytes) { bind(std::span(bytes)); }
    void bind(const std::optional<Data>& bytes);
    void bind(std::string_view text);
    void bind(std::int64_t integer);

    /// Whether there is another row.
    bool step();
    /// Runs a statement that gives no rows.
    void run() {
        while (step()) {}
    }

    /// Throws errSecDecode unless the column is of a type (SQLITE_TEXT and so on).
    void require(int column, int type) const;
    bool isNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }
    std::int64_t integer(int column) const { return sqlite3_column_int64(statement_, column); }
    /// Valid until the next step.
    std::span<const std::byte> bytes(int column) const;
    Data data(int column) const { return {bytes(column).begin(), bytes(column).end()}; }
    std::string text(int column) const { return textFromData(bytes(column)); }

private:
    void check(int code) const;

    sqlite3_stmt* statement_;
    int bound_ = 0;
};

/// An open database.
///
/// Threads: one thread at a time.
/// Owns:    the connection, and every statement that was prepared, for the next time.
/// Errors:  StatusError, with what SQLite's failure comes to.
class SQLite {
public:
    /// Opens a file, which has to be there and no symbolic link.
    explicit SQLite(const std::filesystem::path& path);

    /// A run of a statement.
    Query query(const std::string& sql);
    /// Runs a statement without parameters.
    void run(const std::string& sql) { query(sql).run(); }
    /// The one integer that a statement gives.
    std::int64_t integer(const std::string& sql);

    /// How many rows the last statement changed, and all of this connection.
    std::int64_t changes() const { return sqlite3_changes64(connection_.get()); }
    std::int64_t totalChanges() const { return sqlite3_total_changes64(connection_.get()); }

private:
    struct Close {
        void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };

    std::unique_ptr<sqlite3, Close> connection_;
    std::map<std::string, std::unique_ptr<sqlite3_stmt, Close>> statements_;
};

/// A transaction; undone when it goes without having been committed.
///
/// Threads: as the database's.
/// Owns:    the transaction.
/// Errors:  as the database's.
class Transaction {
public:
    /// One that only reads sees one state of the database throughout; one that writes keeps others from writing.
    enum class Kind { reading, writing };

    explicit Transaction(SQLite& database, Kind kind = Kind::writing) : database_(database) {
        database_.run(kind == Kind::writing ? "BEGIN IMMEDIATE" : "BEGIN");
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    void commit();

private:
    SQLite& database_;
    bool isOpen_ = true;
};

} // namespace vorlan::security::embedded
