// SPDX-License-Identifier: Apache-2.0
#include "platform/security/secretservice/SecretServiceStore.h"

#include "platform/security/secretservice/CommonConnection.h"
#include "platform/security/secretservice/Duplicates.h"
#include "platform/security/secretservice/Failure.h"
#include "platform/security/secretservice/Keyring.h"
#include "platform/security/secretservice/KeyringUpdate.h"

#include <algorithm>
#include <utility>

namespace vorlan::security {

using secretservice::attributesOf;
using secretservice::Deadline;
using secretservice::Failure;
using secretservice::Keyring;
using secretservice::Paths;
using secretservice::StoredItem;

namespace {

/// The items that a request means, without those that were deleted while they were read.
std::vector<StoredItem> read(Keyring& keyring, const ItemRequest& request, const Paths& paths) {
    std::vector<StoredItem> items;
    for (const auto& path : paths)
        if (auto stored = keyring.read(path)) items.push_back(std::move(*stored));
    bool isComplete = items.size() == paths.size();
    items = secretservice::resolve(std::move(items)).items;
    if (!request.wantsAll && items.size() > 1) items.resize(1);
    const auto count = items.size();
    if (request.wantsValue) keyring.readValues(items);
    isComplete = isComplete && items.size() == count;
    if (!isComplete) keyring.confirmLoss();
    return items;
}

DispatchTimeInterval shorter(DispatchTimeInterval a, DispatchTimeInterval b) {
    return a.nanoseconds() < b.nanoseconds() ? a : b;
}

} // namespace

SecretServiceStore::SecretServiceStore(SecretServiceOptions options)
    : options_(options), connection_(std::make_unique<secretservice::CommonConnection>()) {}

SecretServiceStore::~SecretServiceStore() = default;

OSStatus SecretServiceStore::add(const KeychainItem& item) {
    return perform(options_, [&](Keyring& keyring) {
        if (!keyring.find(attributesOf(identityOf(item))).empty()) return errSecDuplicateItem;
        keyring.add(item, secretservice::labelOf(item, options_.hidesLabels));
        return errSecSuccess;
    });
}

OSStatus SecretServiceStore::find(const ItemRequest& request, std::vector<KeychainItem>& found) {
    return perform(options_, [&](Keyring& keyring) {
        for (;;) {
            const auto paths = keyring.find(attributesOf(request.match));
            if (paths.empty()) return errSecItemNotFound;
            auto items = read(keyring, request, paths);
            // All of them were deleted meanwhile; others may have been added in their place.
            if (items.empty()) continue;
            for (auto& stored : items) found.push_back(std::move(stored.item));
            return errSecSuccess;
        }
    });
}

OSStatus SecretServiceStore::update(const ItemMatch& match, const ItemChange& change) {
    return perform(options_, [&](Keyring& keyring) {
        const auto paths = keyring.find(attributesOf(match));
        if (paths.empty()) return errSecItemNotFound;
        if (change.isEmpty()) return errSecSuccess;
        return secretservice::update(keyring, paths, change, options_.hidesLabels);
    });
}

OSStatus SecretServiceStore::remove(const ItemMatch& match) {
    return perform(options_, [&](Keyring& keyring) {
        const auto paths = keyring.find(attributesOf(match));
        const auto count =
            std::ranges::count_if(paths, [&](const auto& path) { return keyring.remove(path); });
        if (count < std::ssize(paths)) keyring.confirmLoss();
        return count == 0 ? errSecItemNotFound : errSecSuccess;
    });
}

bool SecretServiceStore::isReady() {
    auto options = options_;
    options.allowsPrompts = false;
    options.wait = shorter(options.wait, options.callLimit);
    const auto status = perform(options, [](Keyring& keyring) {
        keyring.openDefault();
        return errSecSuccess;
    });
    return status == errSecSuccess;
}

OSStatus SecretServiceStore::lock() {
    return perform(options_, [](Keyring& keyring) {
        keyring.lockDefault();
        return errSecSuccess;
    });
}

OSStatus SecretServiceStore::unlock(std::string_view passphrase) {
    if (!passphrase.empty()) return errSecParam;
    return perform(options_, [](Keyring& keyring) {
        keyring.openDefault();
        return errSecSuccess;
    });
}

OSStatus SecretServiceStore::perform(const SecretServiceOptions& options, Work work) {
    Deadline deadline(options.callLimit);
    for (int attempts = 1;; ++attempts) {
        std::shared_ptr<secretservice::SecretServiceConnection> service;
        bool hasWritten = false;
        try {
            service = connection_->get(deadline, options.wait);
            Keyring keyring(service, options.allowsPrompts, deadline, hasWritten);
            const auto status = work(keyring);
            service->settle();
            return status;
        } catch (const Failure& failure) {
            if (failure.kind() != Failure::Kind::lost || !service) return failure.status();
            connection_->drop(service);
            // Whether a change was made before the service ended cannot be known; made again, it would be
            // made twice.
            if (hasWritten || attempts == 2) return failure.status();
        }
    }
}

} // namespace vorlan::security
