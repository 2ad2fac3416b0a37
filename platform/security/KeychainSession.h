// SPDX-License-Identifier: Apache-2.0
#pragma once

// The user's keychain as one process uses it, in one configuration and one home folder.

#include "platform/files/FileLock.h"
#include "platform/security/ItemStore.h"
#include "platform/security/StoreRecord.h"

#include <VorlanFoundation/Platform/FunctionRef.h>
#include <VorlanFoundation/Platform/KeychainStore.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

namespace vorlan::security {

class EmbeddedStore;

/// A store that an operation works on.
struct OpenStore {
    std::shared_ptr<ItemStore> items;
    KeychainOptions::Store kind = KeychainOptions::Store::automatic;
    bool wasMoved = false;   ///< The items came from the other store; references into that are good here.
    bool isRecorded = false; ///< As the user's.
};

/// Chooses the store and keeps to the choice.
///
/// Threads: safe from any thread, and from any number of processes: writers hold a lock of a file, which those who choose
///          or move hold alone.
/// Owns:    the stores, which open what they need on first use.
/// Errors:  a status; what no status can say is reported, once each.
class KeychainSession {
public:
    /// What an operation does to the store.
    enum class Access { reading, changing, adding };
    using Body = FunctionRef<OSStatus(const OpenStore& store)>;

    explicit KeychainSession(KeychainOptions options);

    /// Calls `body` with the store that is recorded, or where none is and something is to be added, with the one that is
    /// chosen and recorded then. errSecItemNotFound when none is recorded and nothing is to be added.
    OSStatus perform(Access access, Body body);

    /// See KeychainStore.
    OSStatus migrate(KeychainOptions::Store from, KeychainOptions::Store to);

    KeychainOptions::Store current();
    std::string description();
    const KeychainOptions& options() const noexcept { return options_; }

private:
    struct Reading {
        std::optional<RecordedStore> recorded;
        std::uint64_t version = 0; ///< Of the record, in this process.
    };

    OSStatus readRecord(Reading& reading);
    OSStatus open(Access access, Reading& reading, FileLock& lock, OpenStore& store);
    OSStatus openRecorded(Access access, Reading& reading, FileLock& lock, OpenStore& store);
    OSStatus openUnrecorded(Access access, FileLock& lock, OpenStore& store);
    OSStatus openFirst(Reading& reading, FileLock& lock, OpenStore& store);
    OSStatus chooseFirst(OpenStore& store);
    OSStatus lookForItems(EmbeddedStore& files, bool& hasItems);
    OSStatus record(KeychainOptions::Store kind, const ItemIdentifier& identifier);
    OSStatus lockWriters(FileLock& lock, FileLock::Mode mode);
    OpenStore storeOf(const RecordedStore& recorded);
    std::shared_ptr<ItemStore> secretService();
    std::shared_ptr<ItemStore> memory();
    std::shared_ptr<EmbeddedStore> embedded();
    OSStatus refuse(OSStatus status, const std::string& problem);
    OSStatus move(const RecordedStore& former, KeychainOptions::Store to);

    const KeychainOptions options_;
    const std::filesystem::path folder_;
    const std::optional<KeychainOptions::Store>
        wanted_; ///< Absent when the environment wants what does not exist.

    std::mutex mutex_; ///< Of all that follows.
    StoreRecord record_;
    std::shared_ptr<ItemStore> secretService_;
    std::shared_ptr<ItemStore> memory_;
    std::shared_ptr<EmbeddedStore> embedded_;
    std::set<std::string> reported_;
};

} // namespace vorlan::security
