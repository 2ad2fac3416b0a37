// SPDX-License-Identifier: Apache-2.0
#pragma once

// The embedded store's file as anyone with the right to read it sees it: without keys, by the engine alone.

#include <sqlite3.h>

#include <cstddef>
#include <filesystem>
#include <string>

namespace vorlan::tests {

/// An open database of SQLite, closed when it is dropped.
///
/// Threads: one thread at a time.
class RawDatabase {
public:
    explicit RawDatabase(const std::filesystem::path& path) {
        sqlite3_open_v2(path.c_str(), &database_, SQLITE_OPEN_READWRITE, nullptr);
        sqlite3_busy_timeout(database_, 10'000);
    }
    RawDatabase(const RawDatabase&) = delete;
    RawDatabase& operator=(const RawDatabase&) = delete;
    ~RawDatabase() { sqlite3_close(database_); }

    bool execute(const std::string& statements) {
        return sqlite3_exec(database_, statements.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
    }

    /// The first column of the first row; empty without one.
    std::string bytes(const std::string& query) {
        sqlite3_stmt* statement = nullptr;
        std::string found;
        if (sqlite3_prepare_v2(database_, query.c_str(), -1, &statement, nullptr) != SQLITE_OK) return found;
        if (sqlite3_step(statement) == SQLITE_ROW) {
            const auto* start = static_cast<const char*>(sqlite3_column_blob(statement, 0));
            if (start != nullptr)
                found.assign(start, static_cast<std::size_t>(sqlite3_column_bytes(statement, 0)));
        }
        sqlite3_finalize(statement);
        return found;
    }

    /// The same of one that is a text or a number.
    std::string text(const std::string& query) { return bytes(query); }

    /// How many rows the last statement changed.
    int changes() const { return sqlite3_changes(database_); }

    std::string message() const { return sqlite3_errmsg(database_); }

private:
    sqlite3* database_ = nullptr;
};

} // namespace vorlan::tests
