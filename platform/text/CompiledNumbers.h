// SPDX-License-Identifier: Apache-2.0
#pragma once

// ICU's number formatters, made ready for many threads.

#include <unicode/numberformatter.h>

namespace vorlan {

/// Has ICU do at once what it does otherwise at the third number that a formatter writes, whichever thread that is in.
/// From then on nothing in it changes; a copy begins anew.
inline void compile(const icu::number::LocalizedNumberFormatter& formatter) {
    UErrorCode status = U_ZERO_ERROR;
    for (int use = 0; use < 4; ++use) static_cast<void>(formatter.formatInt(use, status));
}

} // namespace vorlan
