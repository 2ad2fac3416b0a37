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

/// What is wrong with the gaps of a text and of its forms, by themselves. A percent sign that begins no gap is only a
/// warning where the original, null where there is none, may be no format.
std::vector<Remark> remarksOnGaps(const vorlan::StringTableEntry& entry,
                                  const vorlan::StringTableEntry* original);

/// Where the arguments or the variables of a text are not those of the original, which is only a warning where that may
/// be no format. Nothing is said of texts whose gaps are wrong by themselves.
std::vector<Remark> remarksOnTranslation(const vorlan::StringTableEntry& entry,
                                         const vorlan::StringTableEntry& original,
                                         const std::string& originalLanguage);

/// The forms that a text lacks or has in vain. The original, null where it is not known, may have variables that the
/// text has not.
std::vector<Remark> remarksOnForms(const vorlan::StringTableEntry& entry,
                                   const vorlan::StringTableEntry* original, const PluralForms& forms,
                                   const std::string& language);

} // namespace tool
