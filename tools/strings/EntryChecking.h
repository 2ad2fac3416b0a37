// SPDX-License-Identifier: Apache-2.0
#pragma once

// Checks one text.

#include "tools/strings/Finding.h"
#include "tools/strings/PluralForms.h"

#include <VorlanFoundation/Platform/StringTable.h>

#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// What is wrong with a text.
struct Remark {
    Severity severity;
    std::string_view kind;
    std::string message;
};

/// What is wrong with the gaps of a text and of its forms, by themselves. A percent sign that begins no gap is an error
/// only where the original, null where there is none, has no such: as in "100%", it may be no format.
std::vector<Remark> remarksOnGaps(const vorlan::StringTableEntry& entry,
                                  const vorlan::StringTableEntry* original);

/// Where the arguments or the variables of a text are not those of the original. Nothing is said of texts whose gaps
/// are wrong by themselves.
std::vector<Remark> remarksOnTranslation(const vorlan::StringTableEntry& entry,
                                         const vorlan::StringTableEntry& original,
                                         const std::string& originalLanguage);

/// The forms that a text lacks or has in vain.
std::vector<Remark> remarksOnForms(const vorlan::StringTableEntry& entry, const PluralForms& forms,
                                   const std::string& language);

} // namespace tool
