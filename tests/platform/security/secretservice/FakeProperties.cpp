// SPDX-License-Identifier: Apache-2.0
// The properties of a fake keyring's objects.
#include "tests/platform/security/secretservice/FakeKeyring.h"

namespace vorlan::tests {

namespace {

constexpr char itemInterface[] = "org.freedesktop.Secret.Item";
constexpr char collectionInterface[] = "org.freedesktop.Secret.Collection";
constexpr char serviceInterface[] = "org.freedesktop.Secret.Service";
constexpr char collectionPath[] = "/org/freedesktop/secrets/collection/test";

using support::childOf;
using support::textOf;

void add(GVariantBuilder& builder, const char* name, GVariant* value) {
    g_variant_builder_add(&builder, "{sv}", name, value);
}

BusError unknownProperty(const std::string& name) {
    return {"org.freedesktop.DBus.Error.UnknownProperty", name};
}

} // namespace

support::Reference<GVariant> FakeKeyring::properties(const std::string& path, const std::string& interface) {
    if (interface == itemInterface) return itemProperties(itemAt(path));
    if (interface == collectionInterface) {
        requireCollection(path);
        return collectionProperties();
    }
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    if (interface == serviceInterface) add(builder, "Collections", support::objectPaths({collectionPath}));
    return support::owned(g_variant_builder_end(&builder));
}

support::Reference<GVariant> FakeKeyring::collectionProperties() const {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    add(builder, "Items", support::objectPaths(pathsOf({})));
    add(builder, "Label", g_variant_new_string("Test"));
    add(builder, "Locked", g_variant_new_boolean(isLocked ? TRUE : FALSE));
    add(builder, "Created", g_variant_new_uint64(time_));
    add(builder, "Modified", g_variant_new_uint64(time_));
    return support::owned(g_variant_builder_end(&builder));
}

support::Reference<GVariant> FakeKeyring::itemProperties(const Item& item) const {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    add(builder, "Locked", g_variant_new_boolean(isLocked ? TRUE : FALSE));
    add(builder, "Attributes", support::variantOf(item.attributes));
    add(builder, "Label", g_variant_new_string(item.label.c_str()));
    add(builder, "Created", g_variant_new_uint64(item.created));
    add(builder, "Modified", g_variant_new_uint64(item.modified));
    return support::owned(g_variant_builder_end(&builder));
}

FakeReply FakeKeyring::get(const FakeCall& call) {
    const auto all = properties(call.path, textOf(call.arguments, 0));
    const auto name = textOf(call.arguments, 1);
    const support::Reference<GVariant> value(g_variant_lookup_value(all.get(), name.c_str(), nullptr));
    if (!value) throw unknownProperty(name);
    return {.body = support::owned(g_variant_new("(v)", value.get()))};
}

FakeReply FakeKeyring::getAll(const FakeCall& call) {
    const auto all = properties(call.path, textOf(call.arguments, 0));
    return {.body = support::owned(g_variant_new("(@a{sv})", all.get()))};
}

FakeReply FakeKeyring::set(const FakeCall& call) {
    auto& item = itemAt(call.path);
    requireUnlocked();
    const auto name = textOf(call.arguments, 1);
    const auto boxed = childOf(call.arguments, 2);
    const support::Reference<GVariant> value(g_variant_get_variant(boxed.get()));
    if (name == "Label" && g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING)) {
        item.label = g_variant_get_string(value.get(), nullptr);
    } else if (name == "Attributes" && g_variant_is_of_type(value.get(), G_VARIANT_TYPE("a{ss}"))) {
        item.attributes = support::dictionaryOf(value.get());
    } else {
        throw unknownProperty(name);
    }
    item.modified = ++time_;
    return {.body = support::owned(g_variant_new("()"))};
}

} // namespace vorlan::tests
