// SPDX-License-Identifier: Apache-2.0
#include "platform/security/MemoryStore.h"

#include <algorithm>
#include <utility>

namespace vorlan::security {

OSStatus MemoryStore::add(const KeychainItem& item) {
    const std::lock_guard lock(mutex_);
    if (std::ranges::any_of(items_, identityOf(item))) return errSecDuplicateItem;
    items_.push_back(item);
    return errSecSuccess;
}

OSStatus MemoryStore::find(const ItemRequest& request, std::vector<KeychainItem>& found) {
    const std::lock_guard lock(mutex_);
    std::ranges::copy_if(items_, std::back_inserter(found), request.match);
    if (found.empty()) return errSecItemNotFound;
    std::ranges::sort(found, isOlder);
    if (!request.wantsAll) found.resize(1);
    return errSecSuccess;
}

OSStatus MemoryStore::update(const ItemMatch& match, const ItemChange& change) {
    const std::lock_guard lock(mutex_);
    auto changed = items_;
    std::vector<ItemMatch> identities;
    for (auto& item : changed) {
        if (!match(item)) continue;
        if (!change.isEmpty()) item.modified = nowInMicroseconds();
        change.apply(item);
        if (isContradictory(item)) return errSecParam;
        identities.push_back(identityOf(item));
    }
    if (identities.empty()) return errSecItemNotFound;
    const auto isTwice = [&](const ItemMatch& identity) {
        return std::ranges::count_if(changed, identity) > 1;
    };
    if (change.changesIdentity() && std::ranges::any_of(identities, isTwice)) return errSecDuplicateItem;
    items_ = std::move(changed);
    return errSecSuccess;
}

OSStatus MemoryStore::remove(const ItemMatch& match) {
    const std::lock_guard lock(mutex_);
    return std::erase_if(items_, match) == 0 ? errSecItemNotFound : errSecSuccess;
}

} // namespace vorlan::security
