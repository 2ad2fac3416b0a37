// SPDX-License-Identifier: Apache-2.0
#include "platform/security/secretservice/Failure.h"
#include "platform/security/secretservice/Keyring.h"
#include "platform/security/secretservice/Prompt.h"

#include <algorithm>

namespace vorlan::security::secretservice {

namespace {

constexpr char itemInterface[] = "org.freedesktop.Secret.Item";
constexpr char collectionInterface[] = "org.freedesktop.Secret.Collection";

/// How many values are asked for at once. The bus carries no message of more than some tens of megabytes, and
/// closes the connection of who would send one.
constexpr std::size_t valuesAtOnce = 16;

[[noreturn]] void failAsDamaged() {
    throw Failure(Failure::Kind::other, errSecDecode);
}

VariantOwner property(GVariant* properties, const char* name, const char* type) {
    return VariantOwner(g_variant_lookup_value(properties, name, G_VARIANT_TYPE(type)));
}

KeychainItem itemWith(GVariant* properties) {
    const auto attributes = property(properties, "Attributes", "a{ss}");
    if (!attributes) failAsDamaged();
    auto item = itemOf(attributesIn(attributes.get()));
    if (const auto label = property(properties, "Label", "s"))
        item.label = ownLabel(item, g_variant_get_string(label.get(), nullptr));
    return item;
}

bool saysLocked(GVariant* properties) {
    const auto locked = property(properties, "Locked", "b");
    return locked && g_variant_get_boolean(locked.get()) != FALSE;
}

GVariant* propertiesOf(const KeychainItem& item, const std::string& label) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&builder, "{sv}", "org.freedesktop.Secret.Item.Label",
                          g_variant_new_string(label.c_str()));
    g_variant_builder_add(&builder, "{sv}", "org.freedesktop.Secret.Item.Attributes",
                          variantOf(attributesOf(item)));
    return g_variant_builder_end(&builder);
}

GVariant* pathsOf(std::span<const StoredItem> items) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("ao"));
    for (const auto& stored : items) g_variant_builder_add(&builder, "o", stored.path.c_str());
    return g_variant_builder_end(&builder);
}

} // namespace

std::optional<StoredItem> Keyring::read(const std::string& path) try {
    const auto answer =
        call({path.c_str(), propertiesInterface, "GetAll"}, g_variant_new("(s)", itemInterface), "(a{sv})");
    const VariantOwner properties(g_variant_get_child_value(answer.get(), 0));
    // Some services tell of locked items, in place of the attributes, what these were scrambled to.
    if (saysLocked(properties.get())) throw Failure(Failure::Kind::locked, errSecInteractionNotAllowed);
    deadline_.renew();
    return StoredItem{path, itemWith(properties.get())};
} catch (const Failure& failure) {
    if (failure.kind() != Failure::Kind::gone) throw;
    return std::nullopt;
}

void Keyring::readValues(std::vector<StoredItem>& items) {
    std::vector<bool> hasValue(items.size());
    for (std::size_t first = 0; first < items.size(); first += valuesAtOnce) {
        const auto count = std::min(valuesAtOnce, items.size() - first);
        const std::span some(items.data() + first, count);
        readSomeValues(some, hasValue.begin() + static_cast<std::ptrdiff_t>(first));
        deadline_.renew();
    }
    std::vector<StoredItem> there;
    for (std::size_t i = 0; i < items.size(); ++i)
        if (hasValue[i] || isStillThere(items[i])) there.push_back(std::move(items[i]));
    items = std::move(there);
}

void Keyring::readSomeValues(std::span<StoredItem> items, std::vector<bool>::iterator hasValue) {
    const auto answer = callService(
        "GetSecrets", g_variant_new("(@aoo)", pathsOf(items), service_->sessionPath()), "(a{o(oayays)})");
    const VariantOwner secrets(g_variant_get_child_value(answer.get(), 0));
    for (auto& stored : items) {
        const VariantOwner secret(g_variant_lookup_value(secrets.get(), stored.path.c_str(), nullptr));
        if (secret) stored.item.value = service_->open(secret.get());
        *hasValue++ = secret != nullptr;
    }
}

// A service leaves values out of its answer without a word.
bool Keyring::isStillThere(const StoredItem& stored) {
    if (!read(stored.path)) return false;
    failAsDamaged();
}

void Keyring::add(const KeychainItem& item, const std::string& label) {
    const auto collection = openedDefault_.empty() ? openDefault() : openedDefault_;
    const auto secret = service_->seal(item.value);
    VariantOwner answer;
    const bool isThere = change(
        {collection.c_str(), collectionInterface, "CreateItem"},
        g_variant_new("(@a{sv}@(oayays)b)", propertiesOf(item, label), secret.get(), FALSE), "(oo)", &answer);
    if (!isThere) throw Failure(Failure::Kind::locked, errSecInteractionNotAllowed);
    const VariantOwner prompt(g_variant_get_child_value(answer.get(), 1));
    finish(g_variant_get_string(prompt.get(), nullptr));
}

bool Keyring::remove(const std::string& path) {
    VariantOwner answer;
    if (!change({path.c_str(), itemInterface, "Delete"}, nullptr, "(o)", &answer)) return false;
    const VariantOwner prompt(g_variant_get_child_value(answer.get(), 0));
    finish(g_variant_get_string(prompt.get(), nullptr));
    return true;
}

bool Keyring::setValue(const std::string& path, const std::optional<Data>& value) {
    const auto secret = service_->seal(value);
    return change({path.c_str(), itemInterface, "SetSecret"}, g_variant_new("(@(oayays))", secret.get()),
                  "()");
}

bool Keyring::setAttributes(const std::string& path, const Attributes& attributes) {
    return setProperty(path, "Attributes", variantOf(attributes));
}

bool Keyring::setLabel(const std::string& path, const std::string& label) {
    return setProperty(path, "Label", g_variant_new_string(label.c_str()));
}

bool Keyring::setProperty(const std::string& path, const char* name, GVariant* value) {
    return change({path.c_str(), propertiesInterface, "Set"},
                  g_variant_new("(ssv)", itemInterface, name, value), "()");
}

bool Keyring::change(const Method& method, GVariant* arguments, const char* answerType,
                     VariantOwner* answer) try {
    hasWritten_ = true;
    auto given = call(method, arguments, answerType);
    if (answer != nullptr) *answer = std::move(given);
    deadline_.renew();
    return true;
} catch (const Failure& failure) {
    if (failure.kind() != Failure::Kind::gone) throw;
    return false;
}

} // namespace vorlan::security::secretservice
