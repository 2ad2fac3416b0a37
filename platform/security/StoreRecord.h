// SPDX-License-Identifier: Apache-2.0
#pragma once

// Which store the user's items are in, for good: a small text file, written when the first item is added.

#include "platform/security/ItemStore.h"

#include <VorlanFoundation/Platform/KeychainStore.h>

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vorlan::security {

/// What is recorded.
struct RecordedStore {
    KeychainOptions::Store store;
    ItemIdentifier identifier; ///< Of the embedded store's file; for others made when it was recorded.
    bool wasMoved = false;     ///< From the other store: references into that are good in this.
};

/// The record. Without it a store would be chosen by what happens to answer at the moment, and all items would seem
/// lost when the keyring is slow.
///
/// Threads: one thread at a time.
/// Errors:  a status; a record that cannot be understood is errSecInvalidKeychain, one that cannot be read errSecNotAvailable.
class StoreRecord {
public:
    explicit StoreRecord(std::filesystem::path path) : path_(std::move(path)) {}

    /// Reads the record if it has changed; absent when there is none.
    OSStatus read(std::optional<RecordedStore>& recorded);

    /// How often it was another than before when it was read.
    std::uint64_t version() const noexcept { return version_; }

    /// Makes the record; errSecDuplicateItem when there is one already.
    OSStatus create(const RecordedStore& recorded);

    /// Replaces it.
    OSStatus replace(const RecordedStore& recorded);

private:
    struct Identity {
        dev_t device = 0;
        ino_t file = 0;
        off_t size = -1;
        std::int64_t modified = 0;

        friend bool operator==(const Identity&, const Identity&) = default;
    };

    Identity identity() const;

    std::filesystem::path path_;
    Identity seen_;
    std::uint64_t version_ = 0;
    OSStatus status_ = errSecSuccess;
    std::optional<RecordedStore> recorded_;
};

/// How stores are called in the record and in the environment.
std::optional<KeychainOptions::Store> storeOfName(std::string_view name);
std::string_view nameOf(KeychainOptions::Store store);

/// The letter of a store in references.
char letterOf(KeychainOptions::Store store);

/// What an operation of the file system that failed with `error` (errno) comes to.
OSStatus statusOfFileError(int error);

} // namespace vorlan::security
