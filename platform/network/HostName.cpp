// SPDX-License-Identifier: Apache-2.0
#include "platform/network/HostName.h"

#include "platform/values/UTF8.h"

#include <glib.h>

#include <memory>

namespace vorlan::network {

namespace {

bool hasNameLength(std::string_view name) {
    if (name.ends_with('.')) name.remove_suffix(1);
    return !name.empty() && name.size() <= longestHostName;
}

} // namespace

std::optional<std::string> resolvableName(std::string_view name) {
    const bool isText = name.find('\0') == std::string_view::npos && utf8::isWellFormed(name);
    if (!isText || !hasNameLength(name)) return std::nullopt;
    std::string text(name);
    if (utf8::isASCII(text)) return text;
    const std::unique_ptr<char, decltype(&g_free)> encoded(g_hostname_to_ascii(text.c_str()), &g_free);
    if (!encoded || !hasNameLength(encoded.get())) return std::nullopt;
    std::string ascii(encoded.get());
    // GLib takes the final dot away, which tells resolvers not to look below the user's own domains.
    if (text.ends_with('.') && !ascii.ends_with('.')) ascii += '.';
    return ascii;
}

} // namespace vorlan::network
