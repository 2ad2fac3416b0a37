// SPDX-License-Identifier: Apache-2.0
#include "platform/security/embedded/EmbeddedDatabase.h"

#include "platform/files/Descriptor.h"
#include "platform/security/StatusError.h"
#include "platform/security/StoreRecord.h"
#include "platform/security/embedded/KeyFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

namespace vorlan::security {

using embedded::Guarded;
using embedded::Key;
using embedded::KeyRing;
using embedded::Transaction;

namespace {

constexpr std::int64_t applicationId = 0x564B4331; // "VKC1"
constexpr std::int64_t version = 1;

constexpr const char* schema[] = {
    "CREATE TABLE meta(k TEXT PRIMARY KEY, v BLOB) WITHOUT ROWID, STRICT",
    "CREATE TABLE item(ref BLOB PRIMARY KEY, cls TEXT NOT NULL, svc BLOB NOT NULL, acct BLOB NOT NULL,"
    " grp BLOB NOT NULL, sync INTEGER NOT NULL, acc TEXT NOT NULL, gen BLOB, ctime INTEGER NOT NULL,"
    " mtime INTEGER NOT NULL, attrs BLOB NOT NULL, val BLOB, UNIQUE(cls, svc, acct, grp, sync)) WITHOUT "
    "ROWID, STRICT",
};

// The path that SQLite is to open: it refuses symbolic links in the whole of it, and those above the folder are the
// user's own business.
std::filesystem::path guardedPath(const std::filesystem::path& path) {
    std::error_code error;
    const auto folder = std::filesystem::canonical(path.parent_path(), error);
    if (error) throw StatusError(statusOfFileError(error.value()));
    embedded::requireGuarded(folder, Guarded::folder);
    return folder / path.filename();
}

std::filesystem::path prepared(const std::filesystem::path& path, MissingDatabase missing) {
    auto guarded = guardedPath(path);
    if (missing == MissingDatabase::make) {
        // SQLite would make a file that others may read. One that is there is not opened: closing it again would drop
        // the locks that this process has on it through SQLite.
        const Descriptor file(
            ::open(guarded.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
        if (!file && errno != EEXIST) throw StatusError(statusOfFileError(errno));
    } else if (struct stat status{}; lstat(guarded.c_str(), &status) != 0 && errno == ENOENT) {
        throw StatusError(errSecInvalidKeychain); // it was recorded, so it should be there
    }
    embedded::requireGuarded(guarded, Guarded::file);
    return guarded;
}

} // namespace

EmbeddedDatabase::EmbeddedDatabase(const EmbeddedFiles& files, MissingDatabase missing)
    : database_(prepared(files.database, missing)), keyFile_(files.key) {
    for (const auto* setting : {"busy_timeout = 5000", "synchronous = FULL", "secure_delete = ON",
                                "trusted_schema = OFF", "cell_size_check = ON"})
        database_.query("PRAGMA " + std::string(setting)).step();
    if (missing == MissingDatabase::make) makeStore();
    openStore();
    useWriteAheadLog();
}

// The first process that gets here makes the store; the others find it made.
void EmbeddedDatabase::makeStore() {
    Transaction transaction(database_);
    if (database_.integer("SELECT count(*) FROM sqlite_schema") != 0) return;
    for (const auto* statement : schema) database_.run(statement);
    identifier_ = makeItemIdentifier();
    const auto master = embedded::makeKeyFile(keyFile_);
    keys_ = KeyRing::random(identifier_);
    setMeta("identifier", Data(identifier_.begin(), identifier_.end()));
    setMeta("keys", keys_->sealedFirst(master));
    setMeta("class keys", keys_->sealedSecond(master, {}));
    database_.run("PRAGMA application_id = " + std::to_string(applicationId));
    database_.run("PRAGMA user_version = " + std::to_string(version));
    transaction.commit();
}

// Where memory cannot be shared, as on many a network, the journal stays of the older kind, which is slower. SQLite does not
// wait for others who are looking in at the moment of the change, so that is done here, for a second.
void EmbeddedDatabase::useWriteAheadLog() {
    for (int attempts = 100;; --attempts) {
        try {
            database_.query("PRAGMA journal_mode = WAL").step();
            return;
        } catch (const StatusError& error) {
            if (error.status() != errSecNotAvailable) throw;
            if (attempts == 0) return;
        }
        poll(nullptr, 0, 10);
    }
}

void EmbeddedDatabase::openStore() {
    if (database_.integer("PRAGMA application_id") != applicationId ||
        database_.integer("PRAGMA user_version") != version)
        throw StatusError(errSecInvalidKeychain);
    const Transaction oneState(database_, Transaction::Kind::reading);
    identifier_ = embedded::identifierFrom(required("identifier"));
    if (keys_) return;
    const auto master = embedded::readKeyFile(keyFile_);
    keys_.emplace(master, identifier_, required("keys"));
    if (!meta("passphrase") && !keys_->open(master, required("class keys"), {}))
        throw StatusError(errSecInvalidKeychain);
}

std::optional<Data> EmbeddedDatabase::meta(std::string_view key) {
    auto query = database_.query("SELECT v FROM meta WHERE k = ?");
    query.bind(key);
    return query.step() ? std::optional(query.data(0)) : std::nullopt;
}

Data EmbeddedDatabase::required(std::string_view key) {
    auto value = meta(key);
    if (!value) throw StatusError(errSecInvalidKeychain);
    return *std::move(value);
}

void EmbeddedDatabase::setMeta(std::string_view key, const std::optional<Data>& value) {
    auto query = database_.query(value ? "INSERT OR REPLACE INTO meta(k, v) VALUES(?, ?)"
                                       : "DELETE FROM meta WHERE k = ?");
    query.bind(key);
    if (value) query.bind(*value);
    query.run();
}

bool EmbeddedDatabase::hasItems() {
    return database_.integer("SELECT EXISTS(SELECT 1 FROM item)") != 0;
}

void EmbeddedDatabase::lock() {
    if (!meta("passphrase")) throw StatusError(errSecUnimplemented);
    keys_->lock();
}

void EmbeddedDatabase::unlock(std::string_view passphrase) {
    const Transaction oneState(database_, Transaction::Kind::reading);
    auto salt = meta("passphrase");
    if (!salt) throw StatusError(errSecUnimplemented);
    if (!keys_->open(embedded::readKeyFile(keyFile_), required("class keys"),
                     KeyRing::Passphrase{passphrase, *std::move(salt)}))
        throw StatusError(errSecAuthFailed);
}

void EmbeddedDatabase::setPassphrase(std::optional<std::string_view> passphrase) {
    const auto master = embedded::readKeyFile(keyFile_);
    std::optional<KeyRing::Passphrase> next;
    if (passphrase) {
        const auto salt = Key::random();
        next = KeyRing::Passphrase{*passphrase, Data(salt.bytes().begin(), salt.bytes().end())};
    }
    const auto sealed = keys_->sealedSecond(master, next);
    Transaction transaction(database_);
    setMeta("class keys", sealed);
    setMeta("passphrase", next ? std::optional(next->salt) : std::nullopt);
    transaction.commit();
    // The keys as they were sealed before would stay in the log for long.
    database_.query("PRAGMA wal_checkpoint(TRUNCATE)").step();
}

} // namespace vorlan::security
