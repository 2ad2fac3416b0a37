// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/KeychainCase.h"

#include <chrono>
#include <utility>

namespace vorlan::tests {

using namespace std::chrono_literals;

std::string nameOfKeeper(const ::testing::TestParamInfo<Keeper>& info) {
    switch (info.param) {
    case Keeper::memory: return "Memory";
    case Keeper::embedded: return "Embedded";
    case Keeper::gnomeKeyring: return "GnomeKeyring";
    case Keeper::fakeService: break;
    }
    return "FakeService";
}

Dictionary operator+(const Dictionary& base, const Dictionary& more) {
    auto sum = more;
    sum.insert(base.begin(), base.end());
    return sum;
}

void KeychainCase::SetUp() {
    if (isOnTheBus()) bus_.emplace();
    if (GetParam() == Keeper::gnomeKeyring) {
        if (!GnomeKeyring::isInstalled()) GTEST_SKIP() << "gnome-keyring-daemon is not installed";
        keyring_.emplace(*bus_);
    }
    if (GetParam() == Keeper::fakeService) fake_.emplace(*bus_);
    configure();
}

void KeychainCase::TearDown() {
    KeychainStore::configure({});
}

void KeychainCase::configure(KeychainOptions options) {
    using Store = KeychainOptions::Store;
    options.store = isOnTheBus()                     ? Store::secretService
                    : GetParam() == Keeper::embedded ? Store::embedded
                                                     : Store::memory;
    KeychainStore::configure(std::move(options));
}

bool KeychainCase::isOnTheBus() const {
    return GetParam() == Keeper::gnomeKeyring || GetParam() == Keeper::fakeService;
}

OSStatus KeychainCase::add(const Dictionary& attributes, Value* result) {
    fault_.advance(5s);
    return SecItemAdd(attributes, result);
}

OSStatus KeychainCase::find(const Dictionary& query, Value* result) {
    fault_.advance(5s);
    return SecItemCopyMatching(query, result);
}

OSStatus KeychainCase::update(const Dictionary& query, const Dictionary& change) {
    fault_.advance(5s);
    return SecItemUpdate(query, change);
}

OSStatus KeychainCase::remove(const Dictionary& query) {
    fault_.advance(5s);
    return SecItemDelete(query);
}

Dictionary KeychainCase::item(const std::string& account, const Dictionary& more) {
    return Dictionary{{kSecClass, kSecClassGenericPassword},
                      {kSecAttrService, "service"},
                      {kSecAttrAccount, account}} +
           more;
}

Value::Array KeychainCase::items(Dictionary query) {
    query.insert(
        {{kSecClass, kSecClassGenericPassword}, {kSecAttrSynchronizable, kSecAttrSynchronizableAny}});
    Value result;
    const auto status = find(query + Dictionary{{kSecReturnAttributes, true},
                                                {kSecReturnData, true},
                                                {kSecMatchLimit, kSecMatchLimitAll}},
                             &result);
    if (status == errSecItemNotFound) return {};
    EXPECT_EQ(status, errSecSuccess);
    EXPECT_EQ(result.kind(), Value::Kind::array);
    return result.as<Value::Array>().value_or(Value::Array());
}

Texts KeychainCase::accounts(Dictionary query) {
    Texts accounts;
    for (const auto& item : items(std::move(query)))
        accounts.push_back(textFromData(item[kSecAttrAccount].as<Data>().value_or(Data())));
    return accounts;
}

Data KeychainCase::reference(const Dictionary& query) {
    Value result;
    EXPECT_EQ(find(query + Dictionary{{kSecReturnPersistentRef, true}}, &result), errSecSuccess);
    return result.as<Data>().value_or(Data());
}

} // namespace vorlan::tests
