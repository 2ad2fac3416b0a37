// SPDX-License-Identifier: Apache-2.0
#include "platform/security/secretservice/ItemAttributes.h"

#include "platform/security/Hexadecimal.h"
#include "platform/security/secretservice/Base64.h"
#include "platform/security/secretservice/Failure.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <system_error>

namespace vorlan::security::secretservice {

namespace {

constexpr std::string_view schema = "com.vorlan.foundation.Keychain";
constexpr std::string_view version = "1";
// No base64 is a single hyphen.
constexpr std::string_view nothing = "-";

[[noreturn]] void failAsDamaged() {
    throw Failure(Failure::Kind::other, errSecDecode);
}

bool canBeCarried(std::string_view text) {
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

std::string base64Of(std::span<const std::byte> bytes) {
    std::string text;
    appendBase64(text, bytes);
    return text;
}

void setName(Attributes& attributes, const std::string& key, const std::string& name) {
    const bool isText = canBeCarried(name);
    attributes[key] = isText ? name : base64Of(std::as_bytes(std::span(name)));
    attributes[key + "t"] = isText ? "s" : "b";
}

const std::string& attribute(const Attributes& attributes, const std::string& key) {
    const auto found = attributes.find(key);
    if (found == attributes.end()) failAsDamaged();
    return found->second;
}

Data bytesOf(const std::string& text) {
    auto bytes = fromBase64(text);
    if (!bytes) failAsDamaged();
    return std::move(*bytes);
}

std::string name(const Attributes& attributes, const std::string& key) {
    const auto& text = attribute(attributes, key);
    const auto& kind = attribute(attributes, key + "t");
    if (kind == "s") return text;
    if (kind != "b") failAsDamaged();
    return textFromData(bytesOf(text));
}

/// Where a UUID's text has its hyphens.
constexpr std::array hyphens{8, 13, 18, 23};

std::string textOf(const ItemIdentifier& identifier) {
    auto text = hexadecimal(identifier);
    for (const auto place : hyphens) text.insert(static_cast<std::size_t>(place), 1, '-');
    return text;
}

template <class Number>
Number numberIn(std::string_view text, int base) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc() || end != text.data() + text.size()) failAsDamaged();
    return number;
}

ItemIdentifier identifierIn(const std::string& text) {
    auto digits = text;
    std::erase(digits, '-');
    const auto identifier = bytesFromHexadecimal<sizeof(ItemIdentifier)>(digits);
    if (!identifier || textOf(*identifier) != text) failAsDamaged();
    return *identifier;
}

bool booleanIn(const std::string& text) {
    if (text != "0" && text != "1") failAsDamaged();
    return text == "1";
}

/// The text, or what is most like it of what the bus carries.
std::string carried(std::string text) {
    std::ranges::replace(text, '\0', ' ');
    if (canBeCarried(text)) return text;
    const TextOwner valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
    return valid.get();
}

std::string ordinaryLabel(const KeychainItem& item) {
    return carried(item.service + ": " + item.account);
}

/// Whether an item's label can be told from that which people see.
bool isToldByWhatIsShown(const KeychainItem& item) {
    return item.label.empty() || (canBeCarried(item.label) && item.label != ordinaryLabel(item));
}

} // namespace

Attributes attributesOf(const ItemMatch& match) {
    Attributes attributes{{"xdg:schema", std::string(schema)}, {"v", std::string(version)}};
    if (match.identifier) attributes["uuid"] = textOf(*match.identifier);
    if (match.itemClass) attributes["class"] = *match.itemClass;
    if (match.service) setName(attributes, "svc", *match.service);
    if (match.account) setName(attributes, "acct", *match.account);
    if (match.accessGroup) setName(attributes, "agrp", *match.accessGroup);
    if (match.accessible) attributes["acc"] = *match.accessible;
    if (match.generic) attributes["gena"] = base64Of(*match.generic);
    if (match.isSynchronizable) attributes["sync"] = *match.isSynchronizable ? "1" : "0";
    return attributes;
}

Attributes attributesOf(const KeychainItem& item) {
    auto match = identityOf(item);
    match.identifier = item.identifier;
    match.accessible = item.accessible;
    match.generic = item.generic;
    auto attributes = attributesOf(match);
    if (!item.generic) attributes["gena"] = nothing;
    attributes["cdat"] = std::to_string(item.created);
    attributes["mdat"] = std::to_string(item.modified);
    attributes["labl"] =
        isToldByWhatIsShown(item) ? std::string(nothing) : base64Of(std::as_bytes(std::span(item.label)));
    return attributes;
}

KeychainItem itemOf(const Attributes& attributes) {
    KeychainItem item;
    item.identifier = identifierIn(attribute(attributes, "uuid"));
    item.itemClass = attribute(attributes, "class");
    item.service = name(attributes, "svc");
    item.account = name(attributes, "acct");
    item.accessGroup = name(attributes, "agrp");
    item.isSynchronizable = booleanIn(attribute(attributes, "sync"));
    item.accessible = attribute(attributes, "acc");
    const auto& generic = attribute(attributes, "gena");
    if (generic != nothing) item.generic = bytesOf(generic);
    const auto& label = attribute(attributes, "labl");
    if (label != nothing) item.label = textFromData(bytesOf(label));
    item.created = numberIn<std::int64_t>(attribute(attributes, "cdat"), 10);
    item.modified = numberIn<std::int64_t>(attribute(attributes, "mdat"), 10);
    return item;
}

std::string labelOf(const KeychainItem& item, bool hidesLabels) {
    if (!item.label.empty()) return carried(item.label);
    return hidesLabels ? std::string() : ordinaryLabel(item);
}

std::string ownLabel(const KeychainItem& item, std::string shown) {
    if (!item.label.empty()) return item.label;
    if (shown == ordinaryLabel(item)) return {};
    return shown;
}

GVariant* variantOf(const Attributes& attributes) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{ss}"));
    for (const auto& [key, value] : attributes)
        g_variant_builder_add(&builder, "{ss}", key.c_str(), value.c_str());
    return g_variant_builder_end(&builder);
}

Attributes attributesIn(GVariant* variant) {
    Attributes attributes;
    GVariantIter entries;
    g_variant_iter_init(&entries, variant);
    const char* key = nullptr;
    const char* value = nullptr;
    while (g_variant_iter_next(&entries, "{&s&s}", &key, &value) != FALSE) attributes[key] = value;
    return attributes;
}

} // namespace vorlan::security::secretservice
