// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Security.h>

#include "platform/security/ItemAttributes.h"
#include "platform/security/KeychainAccess.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace vorlan {

namespace {

using detail::KeychainOperation;
using security::ItemAttributes;
using security::KeychainAccess;
using security::KeychainItem;
using security::letterOf;
using security::OpenStore;
using security::Purpose;

bool isAllowedGroup(const ItemAttributes& attributes) {
    if (!attributes.accessGroup) return true;
    const auto session = KeychainAccess::shared().session();
    if (!session) return true;
    const auto& groups = session->options().accessGroups;
    return groups.empty() || std::ranges::find(groups, *attributes.accessGroup) != groups.end();
}

// What can be said of a query before any store is asked.
OSStatus check(ItemAttributes& attributes, const Value::Dictionary& query) {
    if (!attributes.read(query, Purpose::query)) return errSecParam;
    if (!isAllowedGroup(attributes)) return errSecMissingEntitlement;
    return attributes.isOfOtherClass() ? errSecItemNotFound : errSecSuccess;
}

OSStatus checkItem(ItemAttributes& attributes, const Value::Dictionary& item) {
    if (!attributes.read(item, Purpose::item)) return errSecParam;
    if (!attributes.itemClass || attributes.isOfOtherClass()) return errSecParam;
    return isAllowedGroup(attributes) ? errSecSuccess : errSecMissingEntitlement;
}

OSStatus checkChange(ItemAttributes& attributes, const Value::Dictionary& change,
                     const ItemAttributes& query) {
    if (!attributes.read(change, Purpose::change)) return errSecParam;
    if (!isAllowedGroup(attributes)) return errSecMissingEntitlement;
    // The two together: nothing becomes synchronizable that is for this device only, nor the other way round.
    auto both = attributes;
    if (!both.isSynchronizable) both.isSynchronizable = query.isSynchronizable;
    if (!both.accessible) both.accessible = query.accessible;
    return both.isContradictory() ? errSecParam : errSecSuccess;
}

// A reference that was given out while the items were in another store is good after they were moved.
bool isReachable(const ItemAttributes& attributes, const OpenStore& store) {
    return !attributes.reference || store.wasMoved || attributes.reference->store == letterOf(store.kind);
}

} // namespace

OSStatus SecItemAdd(const Value::Dictionary& attributes, Value* result) {
    ItemAttributes wanted;
    const auto status = checkItem(wanted, attributes);
    return KeychainAccess::shared().perform(KeychainOperation::add, status, [&](const OpenStore& store) {
        const auto item = wanted.item();
        const auto added = store.items->add(item);
        if (added == errSecSuccess && result != nullptr)
            *result = wanted.returnsAnything() ? wanted.result(item, letterOf(store.kind)) : Value();
        return added;
    });
}

OSStatus SecItemCopyMatching(const Value::Dictionary& query, Value* result) {
    ItemAttributes wanted;
    const auto status = check(wanted, query);
    return KeychainAccess::shared().perform(
        KeychainOperation::copyMatching, status, [&](const OpenStore& store) {
            if (!isReachable(wanted, store)) return errSecNotAvailable;
            std::vector<KeychainItem> items;
            const auto found = store.items->find({.match = wanted.match(),
                                                  .wantsAll = wanted.matchesAll,
                                                  .wantsAttributes = wanted.returnsAttributes,
                                                  .wantsValue = wanted.returnsData},
                                                 items);
            if (found == errSecSuccess && result != nullptr)
                *result = wanted.result(items, letterOf(store.kind));
            return found;
        });
}

OSStatus SecItemUpdate(const Value::Dictionary& query, const Value::Dictionary& attributesToUpdate) {
    ItemAttributes wanted;
    ItemAttributes change;
    auto status = check(wanted, query);
    if (status == errSecSuccess) status = checkChange(change, attributesToUpdate, wanted);
    return KeychainAccess::shared().perform(KeychainOperation::update, status, [&](const OpenStore& store) {
        if (!isReachable(wanted, store)) return errSecNotAvailable;
        return store.items->update(wanted.match(), change.change());
    });
}

OSStatus SecItemDelete(const Value::Dictionary& query) {
    ItemAttributes wanted;
    auto status = check(wanted, query);
    if (status == errSecSuccess && !wanted.itemClass && !wanted.reference) status = errSecParam;
    return KeychainAccess::shared().perform(KeychainOperation::remove, status, [&](const OpenStore& store) {
        if (!isReachable(wanted, store)) return errSecNotAvailable;
        return store.items->remove(wanted.match());
    });
}

std::string SecCopyErrorMessageString(OSStatus status) {
    constexpr std::array sentences{
        std::pair(errSecSuccess, "Done"),
        std::pair(errSecUnimplemented, "The store does not offer that"),
        std::pair(errSecDiskFull, "The disk is full"),
        std::pair(errSecIO, "The disk or the file system failed"),
        std::pair(errSecParam, "An attribute is not valid, or too large"),
        std::pair(errSecAllocate, "Memory is exhausted"),
        std::pair(errSecUserCanceled, "The user dismissed the question"),
        std::pair(errSecNotAvailable, "The keychain cannot be reached"),
        std::pair(errSecAuthFailed, "The passphrase is wrong"),
        std::pair(errSecInvalidKeychain, "The keychain is damaged, or of a newer version"),
        std::pair(errSecDuplicateItem, "There is such an item already"),
        std::pair(errSecItemNotFound, "There is no such item"),
        std::pair(errSecInteractionNotAllowed,
                  "The keychain is locked, and no one may be asked to unlock it"),
        std::pair(errSecDecode, "The item is damaged"),
        std::pair(errSecMissingEntitlement, "The access group is not one of the application's"),
    };
    const auto* found = std::ranges::find(sentences, status, &decltype(sentences)::value_type::first);
    return found != sentences.end() ? found->second : "Unknown status " + std::to_string(status);
}

} // namespace vorlan
