// SPDX-License-Identifier: Apache-2.0
#pragma once

// The groups of the topic on texts.

#include "benchmarks/support/Translations.h"

namespace vorlan::benchmarks {

/// Digests as text.
void addDigestRows();
/// Translations, from one thread and from many; the rows keep a reference to them.
void addLocalizedRows(const Translations& translations);
/// Sentences with a count.
void addPluralRows();
/// Texts in texts.
void addTextSearchRows();
/// Formats with gaps, and numbers.
void addTextFormatRows();
/// Places in sorted sequences.
void addInsertionRows();

} // namespace vorlan::benchmarks
