// SPDX-License-Identifier: Apache-2.0
#include "platform/security/KeychainSession.h"

#include "platform/files/UserFolders.h"
#include "platform/security/MemoryStore.h"
#include "platform/security/Migration.h"
#include "platform/security/embedded/EmbeddedStore.h"
#include "platform/security/secretservice/SecretServiceStore.h"

#include <VorlanFoundation/Platform/Problems.h>

#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace vorlan::security {

namespace {

using namespace std::chrono_literals;
using Store = KeychainOptions::Store;

constexpr auto lockLimit = 5s;

std::filesystem::path folderOf(const KeychainOptions& options) {
    if (!options.folder.empty()) return options.folder;
    const auto data = folders::applicationData();
    return data ? *data / "vorlan" / "keychain" : std::filesystem::path();
}

std::filesystem::path keyFileOf(const KeychainOptions& options, const std::filesystem::path& folder) {
    if (!options.keyFile.empty()) return options.keyFile;
    const char* variable = std::getenv("VORLAN_KEY_FILE");
    return variable != nullptr && variable[0] != '\0' ? std::filesystem::path(variable)
                                                      : folder / "master.key";
}

std::optional<Store> wantedBy(const KeychainOptions& options) {
    if (options.store != Store::automatic) return options.store;
    const char* variable = std::getenv("VORLAN_KEYCHAIN_STORE");
    return variable != nullptr && variable[0] != '\0' ? storeOfName(variable) : Store::automatic;
}

// The folder is for the user alone from its first moment on.
bool makeFolder(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder.parent_path(), error);
    return mkdir(folder.c_str(), S_IRWXU) == 0 || errno == EEXIST;
}

} // namespace

KeychainSession::KeychainSession(KeychainOptions options)
    : options_(std::move(options)),
      folder_(folderOf(options_)),
      wanted_(wantedBy(options_)),
      record_(folder_ / "store") {}

OSStatus KeychainSession::refuse(OSStatus status, const std::string& problem) {
    {
        const std::lock_guard lock(mutex_);
        if (!reported_.insert(problem).second) return status;
    }
    detail::reportProblem(problem, "VorlanFoundation/Keychain");
    return status;
}

OSStatus KeychainSession::perform(Access access, Body body) {
    if (!wanted_) return refuse(errSecNotAvailable, "the environment's VORLAN_KEYCHAIN_STORE names no store");
    if (wanted_ == Store::memory) return body({.items = memory(), .kind = Store::memory});
    if (folder_.empty()) return refuse(errSecNotAvailable, "the user has no home folder");
    for (;;) {
        Reading reading;
        FileLock lock;
        OpenStore store;
        auto status = open(access, reading, lock, store);
        if (status != errSecSuccess) return status;
        status = body(store);
        if (status == errSecSuccess && access == Access::adding && !store.isRecorded)
            return record(store.kind, makeItemIdentifier());
        if (access != Access::reading && status != errSecItemNotFound) return status;
        // What was found, or not, may be what another process left while it moved everything.
        const auto version = reading.version;
        if (const auto failure = readRecord(reading); failure != errSecSuccess) return failure;
        if (reading.version == version) return status;
    }
}

OSStatus KeychainSession::readRecord(Reading& reading) {
    OSStatus status = errSecSuccess;
    {
        const std::lock_guard lock(mutex_);
        status = record_.read(reading.recorded);
        reading.version = record_.version();
    }
    if (status == errSecSuccess) return status;
    return refuse(status,
                  "the record of the keychain's store cannot be used: " + (folder_ / "store").string());
}

OSStatus KeychainSession::open(Access access, Reading& reading, FileLock& lock, OpenStore& store) {
    if (const auto status = readRecord(reading); status != errSecSuccess) return status;
    if (reading.recorded) return openRecorded(access, reading, lock, store);
    if (access == Access::adding) return openFirst(reading, lock, store);
    return openUnrecorded(access, lock, store);
}

OSStatus KeychainSession::openRecorded(Access access, Reading& reading, FileLock& lock, OpenStore& store) {
    for (;;) {
        const auto recorded = *reading.recorded;
        if (wanted_ != Store::automatic && wanted_ != recorded.store)
            return refuse(errSecNotAvailable, "the keychain is to be in the store \"" +
                                                  std::string(nameOf(*wanted_)) +
                                                  "\", but this user's items are in \"" +
                                                  std::string(nameOf(recorded.store)) + "\"");
        store = storeOf(recorded);
        if (access == Access::reading) return errSecSuccess;
        const auto mode = store.items->needsLoneWriter() ? FileLock::Mode::alone : FileLock::Mode::shared;
        if (const auto status = lockWriters(lock, mode); status != errSecSuccess) return status;
        const auto version = reading.version;
        if (const auto status = readRecord(reading); status != errSecSuccess) return status;
        if (reading.version == version) return errSecSuccess;
        if (!reading.recorded)
            return refuse(errSecInvalidKeychain, "the record of the keychain's store is gone");
        lock = FileLock();
    }
}

OSStatus KeychainSession::openUnrecorded(Access access, FileLock& lock, OpenStore& store) {
    if (wanted_ == Store::secretService) {
        store = {.items = secretService(), .kind = Store::secretService};
        if (access == Access::reading) return errSecSuccess;
        makeFolder(folder_);
        return lockWriters(lock, FileLock::Mode::alone);
    }
    const auto files = embedded();
    bool hasItems = false;
    if (const auto status = lookForItems(*files, hasItems); status != errSecSuccess) return status;
    if (!hasItems) return errSecItemNotFound;
    store = {.items = files, .kind = Store::embedded};
    return access == Access::reading ? errSecSuccess : lockWriters(lock, FileLock::Mode::shared);
}

// Items that no record tells of: the host has to say what they are.
OSStatus KeychainSession::lookForItems(EmbeddedStore& files, bool& hasItems) {
    if (!files.exists()) return errSecSuccess;
    ItemIdentifier identifier;
    const auto status = files.create(identifier, hasItems);
    if (status != errSecSuccess || !hasItems || wanted_ != Store::automatic) return status;
    return refuse(errSecInvalidKeychain, "there are keychain items in " + folder_.string() +
                                             ", but no record of the store; choose one explicitly");
}

// The first item of this user: whoever gets the lock first decides.
OSStatus KeychainSession::openFirst(Reading& reading, FileLock& lock, OpenStore& store) {
    if (!makeFolder(folder_)) return statusOfFileError(errno);
    if (const auto status = lockWriters(lock, FileLock::Mode::alone); status != errSecSuccess) return status;
    if (const auto status = readRecord(reading); status != errSecSuccess) return status;
    if (!reading.recorded) return chooseFirst(store);
    lock = FileLock();
    return openRecorded(Access::adding, reading, lock, store);
}

OSStatus KeychainSession::chooseFirst(OpenStore& store) {
    const auto files = embedded();
    bool hasItems = false;
    if (wanted_ == Store::automatic)
        if (const auto status = lookForItems(*files, hasItems); status != errSecSuccess) return status;
    if (wanted_ != Store::embedded) {
        store = {.items = secretService(), .kind = Store::secretService};
        const bool isReady = store.items->isReady();
        // One that is wanted, but not ready, says itself what it lacks; it is recorded when it could be used.
        if (!isReady && wanted_ == Store::secretService) return errSecSuccess;
        if (isReady) {
            store.isRecorded = true;
            return record(Store::secretService, makeItemIdentifier());
        }
    }
    store = {.items = files, .kind = Store::embedded, .isRecorded = true};
    ItemIdentifier identifier;
    if (const auto status = files->create(identifier, hasItems); status != errSecSuccess) return status;
    return record(Store::embedded, identifier);
}

OSStatus KeychainSession::record(Store kind, const ItemIdentifier& identifier) {
    const std::lock_guard lock(mutex_);
    const auto status = record_.create({.store = kind, .identifier = identifier});
    return status == errSecDuplicateItem ? errSecSuccess : status;
}

OSStatus KeychainSession::lockWriters(FileLock& lock, FileLock::Mode mode) {
    lock = FileLock(folder_ / "lock", mode, lockLimit);
    return lock ? errSecSuccess : statusOfFileError(errno);
}

OpenStore KeychainSession::storeOf(const RecordedStore& recorded) {
    OpenStore store{.kind = recorded.store, .wasMoved = recorded.wasMoved, .isRecorded = true};
    if (recorded.store == Store::embedded) {
        const auto files = embedded();
        files->expect(recorded.identifier);
        store.items = files;
    } else {
        store.items = secretService();
    }
    return store;
}

std::shared_ptr<ItemStore> KeychainSession::secretService() {
    const std::lock_guard lock(mutex_);
    if (!secretService_)
        secretService_ =
            std::make_shared<SecretServiceStore>(SecretServiceOptions{.allowsPrompts = options_.allowsPrompts,
                                                                      .hidesLabels = options_.hidesLabels,
                                                                      .wait = options_.waitForKeyring});
    return secretService_;
}

std::shared_ptr<ItemStore> KeychainSession::memory() {
    const std::lock_guard lock(mutex_);
    if (!memory_) memory_ = std::make_shared<MemoryStore>();
    return memory_;
}

std::shared_ptr<EmbeddedStore> KeychainSession::embedded() {
    const std::lock_guard lock(mutex_);
    if (!embedded_)
        embedded_ = std::make_shared<EmbeddedStore>(
            EmbeddedFiles{.database = folder_ / "keychain.db", .key = keyFileOf(options_, folder_)});
    return embedded_;
}

Store KeychainSession::current() {
    if (wanted_ && wanted_ != Store::automatic) return *wanted_;
    Reading reading;
    return readRecord(reading) == errSecSuccess && reading.recorded ? reading.recorded->store
                                                                    : Store::automatic;
}

std::string KeychainSession::description() {
    switch (current()) {
    case Store::secretService: return secretService()->description();
    case Store::embedded: return embedded()->description();
    case Store::memory: return memory()->description();
    case Store::automatic: break;
    }
    return "no keychain yet: the first item decides where it is";
}

OSStatus KeychainSession::migrate(Store from, Store to) {
    const auto isUsers = [](Store store) {
        return store == Store::secretService || store == Store::embedded;
    };
    if (from == to || !isUsers(from) || !isUsers(to)) return errSecParam;
    Reading reading;
    if (const auto status = readRecord(reading); status != errSecSuccess) return status;
    if (!reading.recorded) return errSecParam;
    FileLock lock;
    if (const auto status = lockWriters(lock, FileLock::Mode::alone); status != errSecSuccess) return status;
    if (const auto status = readRecord(reading); status != errSecSuccess) return status;
    if (!reading.recorded || reading.recorded->store != from) return errSecParam;
    return move(*reading.recorded, to);
}

OSStatus KeychainSession::move(const RecordedStore& former, Store to) {
    const auto source = storeOf(former).items;
    RecordedStore next{.store = to, .identifier = former.identifier, .wasMoved = true};
    std::shared_ptr<ItemStore> target = secretService();
    if (to == Store::embedded) {
        const auto files = embedded();
        bool hasItems = false;
        if (const auto status = files->create(next.identifier, hasItems); status != errSecSuccess)
            return status;
        target = files;
    }
    Migration migration(*source, *target, folder_ / "moving");
    const auto status = migration.run([&] {
        const std::lock_guard lock(mutex_);
        return record_.replace(next);
    });
    if (status == errSecSuccess && migration.hasLeftovers())
        refuse(status, "the keychain was moved, but its former items could not all be deleted from " +
                           source->description());
    return status;
}

} // namespace vorlan::security
