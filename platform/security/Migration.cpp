// SPDX-License-Identifier: Apache-2.0
#include "platform/security/Migration.h"

#include "platform/files/FileBytes.h"
#include "platform/security/Hexadecimal.h"
#include "platform/security/StoreRecord.h"

#include <unistd.h>

#include <cerrno>
#include <sstream>
#include <string>

namespace vorlan::security {

namespace {

bool isGone(OSStatus status) {
    return status == errSecSuccess || status == errSecItemNotFound;
}

// Deletes items by identifier alone, as which no item of others is meant.
OSStatus removeEach(ItemStore& store, const std::vector<ItemIdentifier>& identifiers) {
    for (const auto& identifier : identifiers)
        if (const auto status = store.remove({.identifier = identifier}); !isGone(status)) return status;
    return errSecSuccess;
}

std::vector<ItemIdentifier> identifiersOf(const std::vector<KeychainItem>& items) {
    std::vector<ItemIdentifier> identifiers;
    for (const auto& item : items) identifiers.push_back(item.identifier);
    return identifiers;
}

bool isSame(const KeychainItem& a, const KeychainItem& b) {
    return identityOf(a)(b) && a.identifier == b.identifier && a.accessible == b.accessible &&
           a.generic == b.generic && a.created == b.created && a.value == b.value;
}

} // namespace

OSStatus Migration::run(FunctionRef<OSStatus()> record) {
    if (const auto status = clearLeftovers(); status != errSecSuccess) return status;
    std::vector<KeychainItem> items;
    auto status = from_.find({.wantsAll = true, .wantsAttributes = true, .wantsValue = true}, items);
    if (!isGone(status)) return status;
    if (!writeList(items)) return statusOfFileError(errno);
    status = copyAll(items);
    if (status == errSecSuccess) status = record();
    auto& left = status == errSecSuccess ? from_ : to_;
    hasLeftovers_ = removeEach(left, identifiersOf(items)) != errSecSuccess;
    if (!hasLeftovers_) unlink(list_.c_str());
    return status;
}

OSStatus Migration::clearLeftovers() {
    std::vector<ItemIdentifier> identifiers;
    try {
        const auto bytes = readFile(list_);
        if (!bytes) return errSecSuccess;
        std::istringstream lines(textFromData(*bytes));
        for (std::string line; std::getline(lines, line);)
            if (const auto identifier = bytesFromHexadecimal<sizeof(ItemIdentifier)>(line))
                identifiers.push_back(*identifier);
    } catch (const std::filesystem::filesystem_error& error) {
        return statusOfFileError(error.code().value());
    }
    return removeEach(to_, identifiers);
}

bool Migration::writeList(const std::vector<KeychainItem>& items) const {
    std::string text;
    for (const auto& item : items) text += hexadecimal(item.identifier) + "\n";
    unlink(list_.c_str());
    return createFile(list_, std::as_bytes(std::span(text)));
}

OSStatus Migration::copyAll(const std::vector<KeychainItem>& items) {
    for (const auto& item : items)
        if (const auto failure = copy(item); failure != errSecSuccess) return failure;
    for (const auto& item : items)
        if (const auto failure = verify(item); failure != errSecSuccess) return failure;
    return errSecSuccess;
}

// What has the item's identity in the target is not the user's any more: the recorded store is the other one.
OSStatus Migration::copy(const KeychainItem& item) {
    if (const auto status = to_.remove(identityOf(item)); !isGone(status)) return status;
    return to_.add(item);
}

OSStatus Migration::verify(const KeychainItem& item) {
    std::vector<KeychainItem> found;
    const ItemRequest request{.match = {.identifier = item.identifier},
                              .wantsAll = true,
                              .wantsAttributes = true,
                              .wantsValue = true};
    const auto status = to_.find(request, found);
    if (status != errSecSuccess) return status;
    return found.size() == 1 && isSame(item, found.front()) ? errSecSuccess : errSecDecode;
}

} // namespace vorlan::security
