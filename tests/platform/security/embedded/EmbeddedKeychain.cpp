// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/embedded/EmbeddedKeychain.h"

#include <VorlanFoundation/Platform/Problems.h>

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <utility>

namespace vorlan::tests {

namespace fs = std::filesystem;

namespace {

Value::Dictionary queryFor(std::string_view account) {
    return {{kSecClass, kSecClassGenericPassword},
            {kSecAttrService, EmbeddedKeychain::service},
            {kSecAttrAccount, account}};
}

} // namespace

Data dataOf(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::byte*>(text.data());
    return {bytes, bytes + text.size()};
}

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator(stream), {}};
}

void overwrite(const fs::path& file, std::string_view content) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << content;
}

EmbeddedKeychain::EmbeddedKeychain(KeychainOptions::Store store) : store_(store) {
    setProblemHandler([](std::string_view, std::string_view) {}); // what is expected here, the statuses tell
    reopen();
}

EmbeddedKeychain::~EmbeddedKeychain() {
    KeychainStore::configure({});
    setProblemHandler(nullptr);
}

fs::path EmbeddedKeychain::folder() const {
    return fs::path(std::getenv("XDG_DATA_HOME")) / "vorlan" / "keychain"; // NOLINT(concurrency-mt-unsafe)
}

void EmbeddedKeychain::reopen() {
    KeychainStore::configure({.store = store_});
}

void EmbeddedKeychain::close() {
    KeychainStore::configure({.store = KeychainOptions::Store::memory});
}

OSStatus EmbeddedKeychain::settle(OSStatus status) {
    endHoldOff();
    return status;
}

void EmbeddedKeychain::endHoldOff() {
    clock_.advance(std::chrono::seconds(10));
}

OSStatus EmbeddedKeychain::add(std::string_view account, std::string_view secret, Value::Dictionary extra) {
    extra.merge(queryFor(account));
    extra[kSecValueData] = dataOf(secret);
    return settle(SecItemAdd(extra));
}

Secret EmbeddedKeychain::read(std::string_view account) {
    auto query = queryFor(account);
    query[kSecReturnData] = true;
    Value found;
    Secret secret{.status = settle(SecItemCopyMatching(query, &found))};
    if (const auto* bytes = found.data(); bytes != nullptr)
        secret.text.emplace(reinterpret_cast<const char*>(bytes->data()), bytes->size());
    return secret;
}

OSStatus EmbeddedKeychain::update(std::string_view account, std::string_view secret) {
    return settle(SecItemUpdate(queryFor(account), {{kSecValueData, dataOf(secret)}}));
}

OSStatus EmbeddedKeychain::remove(std::string_view account) {
    return settle(SecItemDelete(queryFor(account)));
}

FolderCopy::FolderCopy(fs::path folder) : folder_(std::move(folder)) {
    for (const auto& entry : fs::directory_iterator(folder_))
        files_.emplace(entry.path().filename(), contentOf(entry.path()));
}

void FolderCopy::restore() const {
    for (const auto& entry : fs::directory_iterator(folder_)) {
        const auto kept = files_.contains(entry.path().filename());
        if (!kept || !entry.is_regular_file() || entry.is_symlink()) fs::remove_all(entry.path());
    }
    for (const auto& [name, content] : files_) {
        overwrite(folder_ / name, content);
        fs::permissions(folder_ / name, fs::perms::owner_read | fs::perms::owner_write);
    }
}

} // namespace vorlan::tests
