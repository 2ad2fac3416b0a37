// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/UUID.h>

#include <glib.h>

#include <memory>

namespace vorlan {

std::string makeUUIDString() {
    struct Release {
        void operator()(char* text) const { g_free(text); }
    };
    const std::unique_ptr<char, Release> lower(g_uuid_string_random());
    const std::unique_ptr<char, Release> upper(g_ascii_strup(lower.get(), -1));
    return upper.get();
}

} // namespace vorlan
