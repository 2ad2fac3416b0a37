// SPDX-License-Identifier: Apache-2.0
#pragma once

// Values as they go over a message bus.

#include <gio/gio.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace support {

/// Gives up a reference to what GLib made.
struct Unreference {
    void operator()(GVariant* value) const noexcept { g_variant_unref(value); }
    void operator()(GDBusConnection* connection) const noexcept { g_object_unref(connection); }
    void operator()(GDBusMessage* message) const noexcept { g_object_unref(message); }
    void operator()(GMainContext* context) const noexcept { g_main_context_unref(context); }
    void operator()(GError* error) const noexcept { g_error_free(error); }
};

template <class Thing>
using Reference = std::unique_ptr<Thing, Unreference>;

/// Takes a value over that nobody owns yet.
inline Reference<GVariant> owned(GVariant* value) {
    return Reference<GVariant>(g_variant_ref_sink(value));
}

inline Reference<GVariant> childOf(GVariant* tuple, gsize index) {
    return Reference<GVariant>(g_variant_get_child_value(tuple, index));
}

inline std::string textOf(GVariant* tuple, gsize index) {
    return g_variant_get_string(childOf(tuple, index).get(), nullptr);
}

inline std::string bytesOf(GVariant* bytes) {
    gsize size = 0;
    const auto* data = g_variant_get_fixed_array(bytes, &size, 1);
    return size == 0 ? std::string() : std::string(static_cast<const char*>(data), size);
}

inline std::map<std::string, std::string> dictionaryOf(GVariant* variant) {
    std::map<std::string, std::string> dictionary;
    GVariantIter iterator;
    g_variant_iter_init(&iterator, variant);
    const gchar* name = nullptr;
    const gchar* value = nullptr;
    while (g_variant_iter_next(&iterator, "{&s&s}", &name, &value)) dictionary[name] = value;
    return dictionary;
}

inline GVariant* variantOf(const std::map<std::string, std::string>& dictionary) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{ss}"));
    for (const auto& [name, value] : dictionary)
        g_variant_builder_add(&builder, "{ss}", name.c_str(), value.c_str());
    return g_variant_builder_end(&builder);
}

inline GVariant* objectPaths(const std::vector<std::string>& paths) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("ao"));
    for (const auto& path : paths) g_variant_builder_add(&builder, "o", path.c_str());
    return g_variant_builder_end(&builder);
}

inline GVariant* byteArray(std::string_view bytes) {
    return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, bytes.data(), bytes.size(), 1);
}

} // namespace support
