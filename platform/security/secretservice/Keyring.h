// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a service is asked in the course of one operation.

#include "platform/security/secretservice/ItemAttributes.h"
#include "platform/security/secretservice/SecretServiceConnection.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vorlan::security::secretservice {

/// Where items are in the service.
using Paths = std::vector<std::string>;

/// An item, and where it is.
struct StoredItem {
    std::string path;
    KeychainItem item; ///< Without its value.
};

/// The keyring during one operation: what is locked is unlocked where that needs no one's leave, or where the
/// user may be asked for it.
///
/// Threads: one thread at a time.
/// Errors:  Failure; locked means that it remained so.
class Keyring {
public:
    /// `hasWritten` is set once the service is asked to change anything.
    Keyring(std::shared_ptr<SecretServiceConnection> service, bool allowsPrompts, Deadline& deadline,
            bool& hasWritten)
        : service_(std::move(service)),
          allowsPrompts_(allowsPrompts),
          deadline_(deadline),
          hasWritten_(hasWritten) {}

    /// The items that have the attributes, unlocked. None is for certain: it was looked when new items could
    /// be added just before.
    Paths find(const Attributes& attributes);

    /// Where new items go, unlocked.
    std::string openDefault();

    /// Locks the place that new items go to.
    void lockDefault();

    /// The item at a path; none when it is gone.
    std::optional<StoredItem> read(const std::string& path);

    /// Gives items their values, and leaves out those that are gone.
    void readValues(std::vector<StoredItem>& items);

    /// Makes sure that items which turned out to be gone were deleted, and did not vanish with a keyring that
    /// was locked meanwhile.
    void confirmLoss() { openDefault(); }

    void add(const KeychainItem& item, const std::string& label);

    /// Each is false when the item is gone.
    bool remove(const std::string& path);
    bool setValue(const std::string& path, const std::optional<Data>& value);
    bool setAttributes(const std::string& path, const Attributes& attributes);
    bool setLabel(const std::string& path, const std::string& label);

private:
    VariantOwner call(const Method& method, GVariant* arguments, const char* answerType) const;
    VariantOwner callService(const char* name, GVariant* arguments, const char* answerType) const;
    bool change(const Method& method, GVariant* arguments, const char* answerType,
                VariantOwner* answer = nullptr);
    Paths search(const Attributes& attributes);
    std::string defaultPath() const;
    bool isLocked(const std::string& collection) const;
    void open(const Paths& paths);
    void finish(const std::string& prompt);
    bool setProperty(const std::string& path, const char* name, GVariant* value);
    void readSomeValues(std::span<StoredItem> items, std::vector<bool>::iterator hasValue);
    bool isStillThere(const StoredItem& stored);

    std::shared_ptr<SecretServiceConnection> service_;
    bool allowsPrompts_;
    Deadline& deadline_;
    std::string openedDefault_;
    bool& hasWritten_;
};

} // namespace vorlan::security::secretservice
