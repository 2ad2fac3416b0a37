// SPDX-License-Identifier: Apache-2.0
#include "platform/security/secretservice/Duplicates.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace vorlan::security::secretservice {

namespace {

auto identity(const KeychainItem& item) {
    return std::tie(item.itemClass, item.service, item.account, item.accessGroup, item.isSynchronizable);
}

/// By identity, and within one the last change first.
bool comesBefore(const StoredItem& a, const StoredItem& b) {
    if (identity(a.item) != identity(b.item)) return identity(a.item) < identity(b.item);
    return std::tie(a.item.modified, a.item.identifier) > std::tie(b.item.modified, b.item.identifier);
}

} // namespace

Resolved resolve(std::vector<StoredItem> found) {
    std::ranges::sort(found, comesBefore);
    Resolved resolved;
    for (auto& stored : found) {
        const bool isAgain =
            !resolved.items.empty() && identity(resolved.items.back().item) == identity(stored.item);
        if (isAgain)
            resolved.replaced.push_back(std::move(stored.path));
        else
            resolved.items.push_back(std::move(stored));
    }
    std::ranges::sort(resolved.items, isOlder, &StoredItem::item);
    return resolved;
}

} // namespace vorlan::security::secretservice
