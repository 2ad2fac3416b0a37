// SPDX-License-Identifier: Apache-2.0
#pragma once

// Keychain items in a file of ours: names and values are sealed, so that the file alone tells nothing.

#include "platform/security/ItemStore.h"

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vorlan::security {

class EmbeddedDatabase;

/// What is to become of a database that is not there yet.
enum class MissingDatabase { make, fail };

/// Where an embedded store is.
struct EmbeddedFiles {
    std::filesystem::path database;
    std::filesystem::path key;

    /// Whether there is a database, of whatever kind, with anything in it.
    bool exist() const;
};

/// The embedded store: an SQLite database whose names and values are sealed by AES-256-GCM.
///
/// The files are opened on first use, and looked at as a guard would: they must be the user's own, for no one else.
///
/// Threads: safe from any thread, and from any number of processes.
/// Owns:    the open database, and the keys in memory, which are overwritten when they go.
/// Errors:  errSecInvalidKeychain for a database that is damaged, of a newer version, or missing although it was
///          recorded; errSecNotAvailable for a key that is missing or another's, for files that are not the
///          user's own, and when others keep the database busy; errSecDecode for a damaged item;
///          errSecInteractionNotAllowed for items whose key is locked.
class EmbeddedStore final : public ItemStore {
public:
    explicit EmbeddedStore(EmbeddedFiles files);
    ~EmbeddedStore() override;

    /// Which database is the recorded one: no other will do from now on.
    void expect(const ItemIdentifier& identifier);

    bool exists() const { return files_.exist(); }

    /// Opens the database, and makes it where there is none; its identifier, and whether it has items.
    OSStatus create(ItemIdentifier& identifier, bool& hasItems);

    OSStatus add(const KeychainItem& item) override;
    OSStatus find(const ItemRequest& request, std::vector<KeychainItem>& found) override;
    OSStatus update(const ItemMatch& match, const ItemChange& change) override;
    OSStatus remove(const ItemMatch& match) override;
    bool needsLoneWriter() const override { return false; }
    bool isReady() override { return true; }
    OSStatus lock() override;
    OSStatus unlock(std::string_view passphrase) override;
    OSStatus setPassphrase(std::optional<std::string_view> passphrase) override;
    std::string description() const override;

private:
    template <class Work>
    OSStatus with(const Work& work);
    EmbeddedDatabase& database(MissingDatabase missing);

    const EmbeddedFiles files_;
    std::mutex mutex_; ///< Of all that follows.
    std::optional<ItemIdentifier> expected_;
    std::pair<dev_t, ino_t> opened_{}; ///< The file that is open.
    std::unique_ptr<EmbeddedDatabase> database_;
};

} // namespace vorlan::security
