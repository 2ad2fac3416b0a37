// SPDX-License-Identifier: Apache-2.0
#include "platform/security/ItemAttributes.h"

#include "platform/values/UTF8.h"

#include <VorlanFoundation/Platform/Date.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <initializer_list>
#include <string_view>
#include <utility>

namespace vorlan::security {

namespace {

constexpr std::byte referenceVersion{1};
constexpr std::ptrdiff_t referencePrefix = 2;

// Readers take one entry's value into the attributes; false when it is not valid there.
using Reader = bool (*)(const Value& value, ItemAttributes& attributes);

template <std::optional<std::string> ItemAttributes::* member>
bool readText(const Value& value, ItemAttributes& attributes) {
    const auto* text = value.text();
    if (text == nullptr || text->size() > maximumNameSize || !utf8::isWellFormed(*text)) return false;
    attributes.*member = *text;
    return true;
}

template <std::optional<std::string> ItemAttributes::* member>
bool readTextOrBytes(const Value& value, ItemAttributes& attributes) {
    if (value.data() == nullptr) return readText<member>(value, attributes);
    if (value.data()->size() > maximumNameSize) return false;
    attributes.*member = textFromData(*value.data());
    return true;
}

template <std::optional<Data> ItemAttributes::* member, std::size_t maximumSize>
bool readBytes(const Value& value, ItemAttributes& attributes) {
    if (value.data() == nullptr || value.data()->size() > maximumSize) return false;
    attributes.*member = *value.data();
    return true;
}

template <bool ItemAttributes::* member>
bool readFlag(const Value& value, ItemAttributes& attributes) {
    const auto flag = value.as<bool>();
    attributes.*member = flag.value_or(false);
    return flag.has_value();
}

bool isOneOf(const std::optional<std::string>& text, std::initializer_list<std::string_view> known) {
    return text && std::ranges::find(known, *text) != known.end();
}

bool readClass(const Value& value, ItemAttributes& attributes) {
    return readText<&ItemAttributes::itemClass>(value, attributes) &&
           isOneOf(attributes.itemClass, {kSecClassGenericPassword, kSecClassInternetPassword,
                                          kSecClassCertificate, kSecClassKey, kSecClassIdentity});
}

bool readAccessible(const Value& value, ItemAttributes& attributes) {
    return readText<&ItemAttributes::accessible>(value, attributes) &&
           isOneOf(attributes.accessible,
                   {kSecAttrAccessibleAlways, kSecAttrAccessibleAlwaysThisDeviceOnly,
                    kSecAttrAccessibleWhenUnlocked, kSecAttrAccessibleWhenUnlockedThisDeviceOnly,
                    kSecAttrAccessibleAfterFirstUnlock, kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly});
}

bool readSynchronizable(const Value& value, ItemAttributes& attributes) {
    attributes.isAnySynchronizable = value.text() != nullptr && *value.text() == kSecAttrSynchronizableAny;
    if (!attributes.isAnySynchronizable) attributes.isSynchronizable = value.as<bool>();
    return attributes.isAnySynchronizable || attributes.isSynchronizable;
}

bool readReference(const Value& value, ItemAttributes& attributes) {
    if (value.data() != nullptr) attributes.reference = referenceFrom(*value.data());
    return attributes.reference.has_value();
}

bool readLimit(const Value& value, ItemAttributes& attributes) {
    if (value.text() == nullptr) return false;
    attributes.matchesAll = *value.text() == kSecMatchLimitAll;
    return attributes.matchesAll || *value.text() == kSecMatchLimitOne;
}

constexpr unsigned inItem = static_cast<unsigned>(Purpose::item);
constexpr unsigned inQuery = static_cast<unsigned>(Purpose::query);
constexpr unsigned inChange = static_cast<unsigned>(Purpose::change);

struct Entry {
    std::string_view key;
    unsigned purposes;
    Reader read;
};

constexpr std::array entries{
    Entry{kSecClass, inItem | inQuery, readClass},
    Entry{kSecAttrService, inItem | inQuery | inChange, readText<&ItemAttributes::service>},
    Entry{kSecAttrAccount, inItem | inQuery | inChange, readTextOrBytes<&ItemAttributes::account>},
    Entry{kSecAttrAccessGroup, inItem | inQuery | inChange, readText<&ItemAttributes::accessGroup>},
    Entry{kSecAttrAccessible, inItem | inQuery | inChange, readAccessible},
    Entry{kSecAttrGeneric, inItem | inQuery | inChange, readBytes<&ItemAttributes::generic, maximumNameSize>},
    Entry{kSecAttrSynchronizable, inItem | inQuery | inChange, readSynchronizable},
    Entry{kSecAttrLabel, inItem | inChange, readText<&ItemAttributes::label>},
    Entry{kSecValueData, inItem | inChange, readBytes<&ItemAttributes::value, maximumValueSize>},
    Entry{kSecValuePersistentRef, inQuery, readReference},
    Entry{kSecMatchLimit, inQuery, readLimit},
    Entry{kSecReturnData, inItem | inQuery, readFlag<&ItemAttributes::returnsData>},
    Entry{kSecReturnAttributes, inItem | inQuery, readFlag<&ItemAttributes::returnsAttributes>},
    Entry{kSecReturnPersistentRef, inItem | inQuery, readFlag<&ItemAttributes::returnsReference>},
};

Date dateFrom(std::int64_t microseconds) {
    return Date(std::chrono::system_clock::time_point(std::chrono::microseconds(microseconds)));
}

Value::Dictionary attributesOf(const KeychainItem& item) {
    Value::Dictionary attributes{{kSecClass, item.itemClass},
                                 {kSecAttrService, item.service},
                                 {kSecAttrAccount, dataFromText(item.account)},
                                 {kSecAttrAccessGroup, item.accessGroup},
                                 {kSecAttrSynchronizable, item.isSynchronizable},
                                 {kSecAttrAccessible, item.accessible},
                                 {kSecAttrLabel, item.label},
                                 {kSecAttrCreationDate, dateFrom(item.created)},
                                 {kSecAttrModificationDate, dateFrom(item.modified)}};
    if (item.generic) attributes.emplace(kSecAttrGeneric, *item.generic);
    return attributes;
}

} // namespace

Data bytesOf(const ItemReference& reference) {
    Data bytes(referencePrefix + reference.identifier.size());
    bytes[0] = referenceVersion;
    bytes[1] = static_cast<std::byte>(reference.store);
    std::ranges::copy(reference.identifier, bytes.begin() + referencePrefix);
    return bytes;
}

std::optional<ItemReference> referenceFrom(const Data& bytes) {
    ItemReference reference{};
    if (bytes.size() != referencePrefix + reference.identifier.size() || bytes[0] != referenceVersion)
        return std::nullopt;
    reference.store = static_cast<char>(bytes[1]);
    std::ranges::copy(bytes.begin() + referencePrefix, bytes.end(), reference.identifier.begin());
    return reference;
}

bool ItemAttributes::read(const Value::Dictionary& dictionary, Purpose purpose) {
    for (const auto& [key, given] : dictionary) {
        const auto entry = std::ranges::find(entries, std::string_view(key), &Entry::key);
        if (entry == entries.end() || (entry->purposes & static_cast<unsigned>(purpose)) == 0) return false;
        if (!entry->read(given, *this)) return false;
    }
    if (isAnySynchronizable && purpose != Purpose::query) return false;
    return !isContradictory();
}

bool ItemAttributes::isContradictory() const {
    return isSynchronizable.value_or(false) && accessible && accessible->ends_with('u'); // "this device only"
}

bool ItemAttributes::isOfOtherClass() const {
    return itemClass && *itemClass != kSecClassGenericPassword;
}

KeychainItem ItemAttributes::item() const {
    const auto now = nowInMicroseconds();
    return {.identifier = makeItemIdentifier(),
            .itemClass = itemClass.value_or(""),
            .service = service.value_or(""),
            .account = account.value_or(""),
            .accessGroup = accessGroup.value_or(""),
            .isSynchronizable = isSynchronizable.value_or(false),
            .accessible = accessible.value_or(kSecAttrAccessibleWhenUnlocked),
            .generic = generic,
            .label = label.value_or(""),
            .created = now,
            .modified = now,
            .value = value};
}

ItemMatch ItemAttributes::match() const {
    ItemMatch match{.itemClass = itemClass,
                    .service = service,
                    .account = account,
                    .accessGroup = accessGroup,
                    .accessible = accessible,
                    .generic = generic};
    if (reference) {
        match.identifier = reference->identifier; // says all, whether or not the item is synchronizable
    } else if (!isAnySynchronizable) {
        match.isSynchronizable = isSynchronizable.value_or(false);
    }
    return match;
}

ItemChange ItemAttributes::change() const {
    return {.value = value,
            .service = service,
            .account = account,
            .accessGroup = accessGroup,
            .isSynchronizable = isSynchronizable,
            .accessible = accessible,
            .generic = generic,
            .label = label};
}

Value ItemAttributes::result(const KeychainItem& item, char store) const {
    const auto ownReference = [&] { return bytesOf({store, item.identifier}); };
    if (returnsReference && !returnsData && !returnsAttributes) return ownReference();
    if (returnsData && !returnsReference && !returnsAttributes)
        return item.value ? Value(*item.value) : Value();
    Value::Dictionary several = returnsAttributes ? attributesOf(item) : Value::Dictionary();
    if (returnsReference) several.emplace(kSecValuePersistentRef, ownReference());
    if (returnsData && item.value) several.emplace(kSecValueData, *item.value);
    return several;
}

Value ItemAttributes::result(const std::vector<KeychainItem>& items, char store) const {
    if (!returnsAnything()) return {};
    if (!matchesAll) return result(items.front(), store);
    Value::Array all;
    for (const auto& item : items) all.push_back(result(item, store));
    return all;
}

} // namespace vorlan::security
