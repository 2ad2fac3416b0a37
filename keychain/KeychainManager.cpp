// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Keychain/KeychainManager.h>

#include "platform/values/UTF8.h"

#include <VorlanFoundation/Keychain/KeychainError.h>
#include <VorlanFoundation/Keychain/SecurityClass.h>
#include <VorlanFoundation/Platform/FatalError.h>
#include <VorlanFoundation/Platform/Security.h>

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <span>
#include <utility>

namespace vorlan {

namespace {

template <class T>
const T& required(const std::optional<T>& setting, std::string_view name) {
    if (!setting) fatalError("the settings have no " + std::string(name), "VorlanFoundation/KeychainManager");
    return *setting;
}

// For whoever looks at the program's output while it is made: never with a secret in it.
void printDebug(const std::string& message) {
    std::cout << std::quoted(message) << '\n' << std::flush;
}

std::optional<std::string> decoded(std::span<const std::byte> bytes) {
    auto text = textFromData(bytes);
    return utf8::isWellFormed(text) ? std::optional(std::move(text)) : std::nullopt;
}

bool isGone(OSStatus status) {
    return status == errSecSuccess || status == errSecItemNotFound;
}

} // namespace

KeychainManager::KeychainManager(const KeychainSettings& settings)
    : service_(required(settings.service, "service")),
      accessGroup_(settings.accessGroup),
      synchronizable_(required(settings.synchronizable, "synchronizable flag")),
      accessibility_(required(settings.accessibility, "accessibility")) {}

KeychainManager KeychainManager::with(FunctionRef<void(KeychainSettings&)> configure) {
    return KeychainManager(*KeychainSettings::with(configure));
}

Value::Dictionary KeychainManager::serviceQuery(std::string_view securityClass) const {
    Value::Dictionary query{{kSecClass, securityClass}, {kSecAttrService, service_}};
    if (accessGroup_) query[kSecAttrAccessGroup] = *accessGroup_;
    return query;
}

Value::Dictionary KeychainManager::baseQuery(std::optional<std::string_view> forKey,
                                             bool anySynchronizable) const {
    auto query = serviceQuery(kSecClassGenericPassword);
    query[kSecAttrAccessible] = accessibility_.securityConstant();
    query[kSecAttrSynchronizable] =
        anySynchronizable ? Value(kSecAttrSynchronizableAny) : Value(synchronizable_);
    if (forKey) {
        query[kSecAttrGeneric] = dataFromText(*forKey);
        query[kSecAttrAccount] = *forKey;
    }
    return query;
}

bool KeychainManager::insert(std::string_view forKey, const std::optional<Data>& with) {
    auto query = baseQuery(forKey, false);
    if (with) query[kSecValueData] = *with;
    query[kSecReturnPersistentRef] = kCFBooleanTrue;
    const auto status = SecItemAdd(query);
    if (status == errSecDuplicateItem) return update(forKey, with);
    return status == errSecSuccess;
}

bool KeychainManager::update(std::string_view forKey, const std::optional<Data>& with) {
    Value::Dictionary attributes;
    if (with) attributes[kSecValueData] = *with;
    if (SecItemUpdate(baseQuery(forKey, false), attributes) == errSecSuccess) return true;
    // What cannot be changed is replaced; what cannot be replaced takes the whole service along, so that no host goes on
    // with secrets that are half old and half new.
    if (remove(forKey) && insert(forKey, with)) return true;
    wipe();
    return false;
}

std::optional<Data> KeychainManager::find(std::string_view forKey, const char* returned) const {
    auto query = baseQuery(forKey, false);
    query[kSecMatchLimit] = kSecMatchLimitOne;
    query[returned] = kCFBooleanTrue;
    Value result;
    if (SecItemCopyMatching(query, &result) != errSecSuccess) return std::nullopt;
    return result.as<Data>();
}

std::optional<Data> KeychainManager::data(std::string_view forKey) {
    return find(forKey, kSecReturnData);
}

std::optional<Data> KeychainManager::dataRef(std::string_view forKey) {
    return find(forKey, kSecReturnPersistentRef);
}

std::optional<std::string> KeychainManager::string(std::string_view forKey) {
    const auto found = data(forKey);
    return found ? decoded(*found) : std::nullopt;
}

std::optional<bool> KeychainManager::bool_(std::string_view forKey) {
    const auto found = data(forKey);
    if (!found || found->empty()) return std::nullopt;
    return found->front() == std::byte{1};
}

// Neither the accessibility nor the generic attribute: a key is gone however it was written.
bool KeychainManager::remove(std::string_view forKey) {
    auto query = serviceQuery(kSecClassGenericPassword);
    query[kSecAttrSynchronizable] = kSecAttrSynchronizableAny;
    query[kSecAttrAccount] = forKey;
    return isGone(SecItemDelete(query));
}

bool KeychainManager::removeAllKeys(SecurityClass securityClass) {
    return isGone(SecItemDelete(serviceQuery(rawValue(securityClass))));
}

bool KeychainManager::removeAllKeys() {
    return removeAllKeys(SecurityClass::genericPassword);
}

void KeychainManager::wipe() {
    for (const auto securityClass : allCases<SecurityClass>()) removeAllKeys(securityClass);
}

std::vector<std::string> KeychainManager::allKeys() const {
    auto query = baseQuery(std::nullopt, true);
    query[kSecReturnAttributes] = kCFBooleanTrue;
    query[kSecMatchLimit] = kSecMatchLimitAll;
    Value result;
    if (SecItemCopyMatching(query, &result) != errSecSuccess) throw KeychainError::unexpected;
    const auto isNoDictionary = [](const Value& item) { return item.dictionary() == nullptr; };
    if (result.array() == nullptr || std::ranges::any_of(*result.array(), isNoDictionary))
        throw KeychainError::emptyResults;
    std::vector<std::string> keys;
    for (const auto& item : *result.array())
        if (const auto* account = item[kSecAttrAccount].data(); account != nullptr)
            if (auto key = decoded(*account)) keys.push_back(*std::move(key));
    return keys;
}

void KeychainManager::removeAllKeys(const Keeping& keeping) {
    try {
        for (const auto& key : allKeys())
            if (std::ranges::find(keeping.except, key) == keeping.except.end()) remove(key);
    } catch (KeychainError error) {
        printDebug("Failed to remove keys. Reason: " + localizedDescription(error));
    }
}

std::optional<Data> KeychainManager::insertReference(const NamedString& string) {
    auto query = baseQuery(std::nullopt, false);
    query[kSecAttrAccount] = string.called;
    query[kSecValueData] = dataFromText(string.containing);
    query[kSecReturnPersistentRef] = kCFBooleanTrue;
    Value result;
    const auto status = SecItemAdd(query, &result);
    if (status != errSecSuccess || result.isNull()) {
        printDebug("Unable to add data to keychain: " + std::to_string(status));
        return std::nullopt;
    }
    if (string.previouslyReferencedBy) removeReference(*string.previouslyReferencedBy);
    return result.as<Data>();
}

std::optional<std::string> KeychainManager::string(const Data& from) {
    Value result;
    const auto status = SecItemCopyMatching({{kSecClass, kSecClassGenericPassword},
                                             {kSecReturnData, kCFBooleanTrue},
                                             {kSecValuePersistentRef, from}},
                                            &result);
    return status == errSecSuccess && result.data() != nullptr ? decoded(*result.data()) : std::nullopt;
}

bool KeychainManager::verifyReference(const Data& called) {
    Value unread;
    return SecItemCopyMatching({{kSecClass, kSecClassGenericPassword}, {kSecValuePersistentRef, called}},
                               &unread) != errSecItemNotFound;
}

void KeychainManager::removeReference(const Data& called) {
    const auto status = SecItemDelete({{kSecValuePersistentRef, called}});
    if (status != errSecSuccess)
        printDebug("Unable to remove reference from keychain: " + std::to_string(status));
}

} // namespace vorlan
