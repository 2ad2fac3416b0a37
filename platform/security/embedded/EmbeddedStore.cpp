// SPDX-License-Identifier: Apache-2.0
#include "platform/security/embedded/EmbeddedStore.h"

#include "platform/security/StatusError.h"
#include "platform/security/embedded/EmbeddedDatabase.h"

#include <sys/stat.h>

#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

namespace vorlan::security {

namespace {

std::pair<dev_t, ino_t> fileAt(const std::filesystem::path& path) {
    struct stat status{};
    return lstat(path.c_str(), &status) == 0 ? std::pair(status.st_dev, status.st_ino)
                                             : std::pair<dev_t, ino_t>();
}

template <class Work>
OSStatus statusOf(const Work& work) {
    try {
        work();
        return errSecSuccess;
    } catch (const StatusError& error) {
        return error.status();
    } catch (const std::bad_alloc&) {
        return errSecAllocate;
    } catch (const std::system_error&) { // a file that could not be read
        return errSecIO;
    }
}

} // namespace

// One that is empty was being made when its process was killed: there is nothing in it, not even that it is ours.
bool EmbeddedFiles::exist() const {
    struct stat status{};
    if (lstat(database.c_str(), &status) != 0) return errno != ENOENT && errno != ENOTDIR;
    return !S_ISREG(status.st_mode) || status.st_size > 0;
}

EmbeddedStore::EmbeddedStore(EmbeddedFiles files) : files_(std::move(files)) {}

EmbeddedStore::~EmbeddedStore() = default;

void EmbeddedStore::expect(const ItemIdentifier& identifier) {
    const std::lock_guard lock(mutex_);
    expected_ = identifier;
}

EmbeddedDatabase& EmbeddedStore::database(MissingDatabase missing) {
    // What is written to a file that was replaced by another, by a restored backup for example, nobody would read.
    const auto file = fileAt(files_.database);
    if (!database_ || file != opened_) {
        database_.reset();
        database_ = std::make_unique<EmbeddedDatabase>(files_, missing);
        opened_ = fileAt(files_.database);
    }
    return *database_;
}

template <class Work>
OSStatus EmbeddedStore::with(const Work& work) {
    const std::lock_guard lock(mutex_);
    return statusOf([&] {
        auto& opened = database(MissingDatabase::fail);
        // Another store's file in place of the recorded one does not have the user's items.
        if (expected_ && opened.identifier() != *expected_) throw StatusError(errSecInvalidKeychain);
        work(opened);
    });
}

OSStatus EmbeddedStore::create(ItemIdentifier& identifier, bool& hasItems) {
    const std::lock_guard lock(mutex_);
    return statusOf([&] {
        auto& made = database(MissingDatabase::make);
        identifier = made.identifier();
        hasItems = made.hasItems();
    });
}

OSStatus EmbeddedStore::add(const KeychainItem& item) {
    return with([&](EmbeddedDatabase& database) { database.add(item); });
}

OSStatus EmbeddedStore::find(const ItemRequest& request, std::vector<KeychainItem>& found) {
    return with([&](EmbeddedDatabase& database) { found = database.find(request); });
}

OSStatus EmbeddedStore::update(const ItemMatch& match, const ItemChange& change) {
    return with([&](EmbeddedDatabase& database) { database.update(match, change); });
}

OSStatus EmbeddedStore::remove(const ItemMatch& match) {
    return with([&](EmbeddedDatabase& database) { database.remove(match); });
}

OSStatus EmbeddedStore::lock() {
    return with([](EmbeddedDatabase& database) { database.lock(); });
}

OSStatus EmbeddedStore::unlock(std::string_view passphrase) {
    return with([&](EmbeddedDatabase& database) { database.unlock(passphrase); });
}

OSStatus EmbeddedStore::setPassphrase(std::optional<std::string_view> passphrase) {
    return with([&](EmbeddedDatabase& database) { database.setPassphrase(passphrase); });
}

std::string EmbeddedStore::description() const {
    return "the embedded keychain in " + files_.database.parent_path().string();
}

} // namespace vorlan::security
