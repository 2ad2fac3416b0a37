// SPDX-License-Identifier: Apache-2.0
#pragma once

// Keychain items in the memory of the process.

#include "platform/security/ItemStore.h"

#include <mutex>
#include <vector>

namespace vorlan::security {

/// A store that is gone with the process.
///
/// Threads: safe from any thread.
class MemoryStore final : public ItemStore {
public:
    OSStatus add(const KeychainItem& item) override;
    OSStatus find(const ItemRequest& request, std::vector<KeychainItem>& found) override;
    OSStatus update(const ItemMatch& match, const ItemChange& change) override;
    OSStatus remove(const ItemMatch& match) override;
    bool needsLoneWriter() const override { return false; }
    bool isReady() override { return true; }
    std::string description() const override { return "the keychain in memory"; }

private:
    std::mutex mutex_;
    std::vector<KeychainItem> items_;
};

} // namespace vorlan::security
