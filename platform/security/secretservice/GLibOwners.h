// SPDX-License-Identifier: Apache-2.0
#pragma once

// Owners of what GLib hands out.

#include <gio/gio.h>

#include <memory>

namespace vorlan::security::secretservice {

struct GLibRelease {
    void operator()(GVariant* variant) const noexcept { g_variant_unref(variant); }
    void operator()(gchar* text) const noexcept { g_free(text); }
    void operator()(GMainContext* context) const noexcept { g_main_context_unref(context); }
    // Every other type here is a class of GObject.
    void operator()(void* object) const noexcept { g_object_unref(object); }
};

/// Owns one reference of a GObject.
template <class Type>
using ObjectOwner = std::unique_ptr<Type, GLibRelease>;

using VariantOwner = std::unique_ptr<GVariant, GLibRelease>;
using TextOwner = std::unique_ptr<gchar, GLibRelease>;
using ContextOwner = std::unique_ptr<GMainContext, GLibRelease>;

/// Owns a variant that was just made, and that nobody owned so far.
inline VariantOwner ownVariant(GVariant* made) noexcept {
    return VariantOwner(g_variant_ref_sink(made));
}

} // namespace vorlan::security::secretservice
