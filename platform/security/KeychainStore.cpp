// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/KeychainStore.h>

#include "platform/security/KeychainAccess.h"
#include "platform/values/UTF8.h"

#include <utility>

namespace vorlan {

namespace {

using security::KeychainAccess;
using security::OpenStore;
using Access = security::KeychainSession::Access;

} // namespace

void KeychainStore::configure(KeychainOptions options) {
    KeychainAccess::shared().configure(std::move(options));
}

KeychainOptions::Store KeychainStore::current() {
    const auto session = KeychainAccess::shared().session();
    return session ? session->current() : KeychainOptions::Store::automatic;
}

std::string KeychainStore::description() {
    const auto session = KeychainAccess::shared().session();
    return session ? session->description() : "no keychain in a forked child";
}

OSStatus KeychainStore::keys(std::string_view service, std::vector<std::string>& keys) {
    keys.clear();
    Value items;
    const auto status = SecItemCopyMatching({{kSecClass, kSecClassGenericPassword},
                                             {kSecAttrService, service},
                                             {kSecAttrSynchronizable, kSecAttrSynchronizableAny},
                                             {kSecMatchLimit, kSecMatchLimitAll},
                                             {kSecReturnAttributes, kCFBooleanTrue}},
                                            &items);
    if (status != errSecSuccess) return status;
    for (const auto& item : *items.array())
        if (auto key = textFromData(*item[kSecAttrAccount].data()); utf8::isWellFormed(key))
            keys.push_back(std::move(key));
    return errSecSuccess;
}

OSStatus KeychainStore::migrate(KeychainOptions::Store from, KeychainOptions::Store to) {
    const auto session = KeychainAccess::shared().session();
    return session ? session->migrate(from, to) : errSecNotAvailable;
}

OSStatus KeychainStore::lock() {
    const auto status = KeychainAccess::shared().manage(
        Access::reading, [](const OpenStore& store) { return store.items->lock(); });
    return status == errSecItemNotFound ? errSecUnimplemented : status; // nothing is kept anywhere yet
}

OSStatus KeychainStore::unlock(std::string_view passphrase) {
    auto& access = KeychainAccess::shared();
    const auto status = access.manage(
        Access::reading, [&](const OpenStore& store) { return store.items->unlock(passphrase); });
    if (status == errSecSuccess) access.endHoldOff(); // what was refused as locked need not be any longer
    return status == errSecItemNotFound ? errSecUnimplemented : status;
}

OSStatus KeychainStore::setPassphrase(std::optional<std::string_view> passphrase) {
    if (passphrase && passphrase->empty()) return errSecParam;
    return KeychainAccess::shared().manage(
        Access::adding, [&](const OpenStore& store) { return store.items->setPassphrase(passphrase); });
}

} // namespace vorlan
