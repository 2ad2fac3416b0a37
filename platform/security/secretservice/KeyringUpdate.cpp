// SPDX-License-Identifier: Apache-2.0
#include "platform/security/secretservice/KeyringUpdate.h"

#include "platform/security/secretservice/Duplicates.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <utility>

namespace vorlan::security::secretservice {

namespace {

/// What an item becomes, but for its value, which is not left lying about.
KeychainItem changed(const KeychainItem& item, const ItemChange& change) {
    KeychainItem result = item;
    change.apply(result);
    if (result.value) OPENSSL_cleanse(result.value->data(), result.value->size());
    result.value.reset();
    return result;
}

bool wouldContradictItself(const Resolved& resolved, const ItemChange& change) {
    return std::ranges::any_of(resolved.items, [&](const StoredItem& stored) {
        return isContradictory(changed(stored.item, change));
    });
}

/// Whether one of the items would become what another is, among them or elsewhere.
bool wouldCollide(Keyring& keyring, const Resolved& resolved, const Paths& paths, const ItemChange& change) {
    const auto isOfOthers = [&](const std::string& path) {
        return std::ranges::find(paths, path) == paths.end();
    };
    std::vector<Attributes> identities;
    for (const auto& stored : resolved.items) {
        auto identity = attributesOf(identityOf(changed(stored.item, change)));
        if (std::ranges::find(identities, identity) != identities.end()) return true;
        if (std::ranges::any_of(keyring.find(identity), isOfOthers)) return true;
        identities.push_back(std::move(identity));
    }
    return false;
}

/// False when the item is gone. The attributes go last: with them the time of modification, which services
/// keep in whole seconds only.
bool write(Keyring& keyring, const StoredItem& stored, const ItemChange& change, bool hidesLabels) {
    auto item = changed(stored.item, change);
    item.modified = nowInMicroseconds();
    if (change.value && !keyring.setValue(stored.path, change.value)) return false;
    const bool touchesLabel = change.label || change.changesIdentity();
    if (touchesLabel && !keyring.setLabel(stored.path, labelOf(item, hidesLabels))) return false;
    return keyring.setAttributes(stored.path, attributesOf(item));
}

OSStatus statusFor(Keyring& keyring, std::ptrdiff_t written, std::ptrdiff_t wanted) {
    if (written < wanted) keyring.confirmLoss();
    return written == 0 ? errSecItemNotFound : errSecSuccess;
}

} // namespace

OSStatus update(Keyring& keyring, const Paths& paths, const ItemChange& change, bool hidesLabels) {
    std::vector<StoredItem> items;
    for (const auto& path : paths)
        if (auto stored = keyring.read(path)) items.push_back(std::move(*stored));
    const auto resolved = resolve(std::move(items));
    if (wouldContradictItself(resolved, change)) return errSecParam;
    if (change.changesIdentity() && wouldCollide(keyring, resolved, paths, change))
        return errSecDuplicateItem;
    const auto count = std::ranges::count_if(
        resolved.items, [&](const auto& stored) { return write(keyring, stored, change, hidesLabels); });
    for (const auto& path : resolved.replaced) keyring.remove(path);
    return statusFor(keyring, count, std::ssize(resolved.items));
}

} // namespace vorlan::security::secretservice
