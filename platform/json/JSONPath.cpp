// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONPath.h"

#include <VorlanFoundation/Platform/Describe.h>

#include <algorithm>

namespace vorlan {

void JSONPath::appendMember(std::string_view name) {
    const auto isPlain = [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
               (character >= '0' && character <= '9') || character == '_';
    };
    if (!name.empty() && std::ranges::all_of(name, isPlain)) {
        text_ += '.';
        text_ += name;
    } else {
        text_ += "[\"" + describe(name) + "\"]";
    }
}

} // namespace vorlan
