// SPDX-License-Identifier: Apache-2.0
#include "platform/security/embedded/ItemSealer.h"

#include "platform/security/StatusError.h"

#include <algorithm>

namespace vorlan::security::embedded {

namespace {

constexpr std::string_view yes = "1";
constexpr std::string_view no = "0";

std::string_view flag(bool isSet) {
    return isSet ? yes : no;
}

// An optional part: nothing, or its bytes after a mark.
Data marked(const std::optional<Data>& bytes) {
    Data part;
    if (!bytes) return part;
    part.push_back(std::byte{1});
    part.insert(part.end(), bytes->begin(), bytes->end());
    return part;
}

std::optional<Data> unmarked(std::span<const std::byte> part) {
    if (part.empty()) return std::nullopt;
    return Data(part.begin() + 1, part.end());
}

} // namespace

ItemIdentifier identifierFrom(std::span<const std::byte> bytes) {
    ItemIdentifier identifier;
    if (bytes.size() != identifier.size()) throw StatusError(errSecInvalidKeychain);
    std::ranges::copy(bytes, identifier.begin());
    return identifier;
}

Data ItemSealer::digestOf(std::string_view column, std::span<const std::byte> name) const {
    const auto found = digest(keys_.index(), {std::as_bytes(std::span(column)), name});
    return {found.begin(), found.end()};
}

Data ItemSealer::context(const ItemRow& row, std::string_view part) const {
    return Packer()
        .add("VK1 item")
        .add(part)
        .add(row.identifier)
        .add(row.itemClass)
        .add(row.service)
        .add(row.account)
        .add(row.accessGroup)
        .add(flag(row.isSynchronizable))
        .add(row.accessible)
        .take();
}

const Key& ItemSealer::valueKey(const ItemRow& row) const {
    return keys_.value(itemKeyOf(row.accessible), row.identifier);
}

Key ItemSealer::attributesKey(const ItemRow& row) const {
    return derivedKey(keys_.attributes(), "item", row.identifier);
}

ItemRow ItemSealer::row(const KeychainItem& item) const {
    ItemRow row{.identifier = item.identifier,
                .itemClass = item.itemClass,
                .service = digestOf("service", item.service),
                .account = digestOf("account", item.account),
                .accessGroup = digestOf("group", item.accessGroup),
                .isSynchronizable = item.isSynchronizable,
                .accessible = item.accessible,
                .created = item.created,
                .modified = item.modified};
    if (item.generic) row.generic = digestOf("generic", *item.generic);
    row.attributes = sealedAttributes(row, item);
    if (item.value) row.value = sealedValue(row, *item.value);
    return row;
}

Data ItemSealer::sealedAttributes(const ItemRow& row, const KeychainItem& item) const {
    const auto attributes = Packer()
                                .add(item.service)
                                .add(item.account)
                                .add(item.accessGroup)
                                .add(marked(item.generic))
                                .add(item.label)
                                .add(flag(item.value.has_value()))
                                .take();
    return seal(attributesKey(row), attributes, context(row, "attributes"));
}

Data ItemSealer::sealedValue(const ItemRow& row, std::span<const std::byte> value) const {
    return seal(valueKey(row), value, context(row, "value"));
}

KeychainItem ItemSealer::item(const ItemRow& row) const {
    const auto attributes = open(attributesKey(row), row.attributes, context(row, "attributes"));
    if (!attributes) throw StatusError(errSecDecode);
    Unpacker parts(*attributes);
    KeychainItem item{.identifier = row.identifier,
                      .itemClass = row.itemClass,
                      .service = textFromData(parts.next()),
                      .account = textFromData(parts.next()),
                      .accessGroup = textFromData(parts.next()),
                      .isSynchronizable = row.isSynchronizable,
                      .accessible = row.accessible,
                      .generic = unmarked(parts.next()),
                      .label = textFromData(parts.next()),
                      .created = row.created,
                      .modified = row.modified};
    const bool hasValue = textFromData(parts.next()) == yes;
    const auto generic = item.generic ? std::optional(digestOf("generic", *item.generic)) : std::nullopt;
    // The seal holds for the other columns, and for these two it is said here.
    if (generic != row.generic || hasValue != row.value.has_value()) throw StatusError(errSecDecode);
    return item;
}

std::optional<Data> ItemSealer::value(const ItemRow& row) const {
    if (!row.value) {
        item(row); // makes sure that there was none
        return std::nullopt;
    }
    auto value = open(valueKey(row), *row.value, context(row, "value"));
    if (!value) throw StatusError(errSecDecode);
    return value;
}

} // namespace vorlan::security::embedded
