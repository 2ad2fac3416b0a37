// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/InMemoryKeychain.h>

#include <VorlanFoundation/Platform/KeychainStore.h>

namespace vorlan::testing {

InMemoryKeychain::InMemoryKeychain() {
    KeychainStore::configure({.store = KeychainOptions::Store::memory});
}

InMemoryKeychain::~InMemoryKeychain() {
    KeychainStore::configure({});
}

} // namespace vorlan::testing
