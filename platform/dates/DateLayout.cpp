// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/DateLayout.h"

#include <cstdint>
#include <string_view>

namespace vorlan {

namespace {

// With its length, so that no two lists of fields make the same text.
void append(std::string& key, std::string_view field) {
    key += std::to_string(field.size());
    key += ':';
    key += field;
}

void append(std::string& key, int number) {
    key += std::to_string(number);
    key += ';';
}

} // namespace

std::string DateLayout::key() const {
    std::string key;
    append(key, locale.identifier());
    append(key, std::to_string(reinterpret_cast<std::uintptr_t>(zone))); // which no other has
    append(key, static_cast<int>(calendar));
    append(key, week ? week->firstWeekday * 8 + week->minimumDaysInFirstWeek : 0);
    if (pattern) {
        append(key, *pattern);
        return key;
    }
    append(key, -1);
    append(key, static_cast<int>(dateStyle) * 8 + static_cast<int>(timeStyle));
    append(key, isRelative ? 1 : 0);
    append(key, dayName);
    return key;
}

} // namespace vorlan
