// SPDX-License-Identifier: Apache-2.0
#pragma once

// The least that keeps sealed secrets in a file: a table of SQLite, and AES-256-GCM.

#include <openssl/evp.h>
#include <sqlite3.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <string>

namespace vorlan::benchmarks {

/// A table of names and sealed secrets, with its statements prepared. A name is 32 bytes, as long as a digest.
///
/// Threads: one thread at a time.
/// Errors:  throws std::runtime_error when it cannot be made; calls tell whether they were done.
class SealedTable {
public:
    /// How a change comes to the disk: by a journal that is written ahead, or by one to go back.
    enum class Journal { ahead, rollback };

    SealedTable(const std::filesystem::path& path, Journal journal);
    SealedTable(const SealedTable&) = delete;
    SealedTable& operator=(const SealedTable&) = delete;
    ~SealedTable();

    bool insert(const std::string& name, const std::string& secret);
    bool update(const std::string& name, const std::string& secret);
    bool remove(const std::string& name);
    /// Has it hold `count` secrets, by the names `tableName` gives, if it is empty.
    void fill(std::size_t count, const std::string& secret);
    /// Finds and opens a secret of that length.
    bool read(const std::string& name, std::size_t length);

private:
    using Bytes = std::array<unsigned char, 4096>;

    sqlite3_stmt* prepare(const char* text);
    bool execute(const char* text);
    /// Runs a statement of one step in a transaction of its own.
    bool change(sqlite3_stmt* statement);
    void bindSealed(sqlite3_stmt* statement, const std::string& secret);
    bool open(const unsigned char* sealed, std::size_t length);

    sqlite3* database_ = nullptr;
    EVP_CIPHER* cipher_;
    EVP_CIPHER_CTX* context_;
    sqlite3_stmt* begin_ = nullptr;
    sqlite3_stmt* commit_ = nullptr;
    sqlite3_stmt* insert_ = nullptr;
    sqlite3_stmt* update_ = nullptr;
    sqlite3_stmt* remove_ = nullptr;
    sqlite3_stmt* select_ = nullptr;
    std::array<unsigned char, 32> key_{}; ///< The same in all: its bytes take no part in the time.
    Bytes bytes_{};
};

/// What an item takes beside its secret: names and times, sealed.
inline constexpr std::size_t attributesSize = 160;

/// The name of an item: 32 bytes.
std::string tableName(std::size_t number);

} // namespace vorlan::benchmarks
