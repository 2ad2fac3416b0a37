// SPDX-License-Identifier: Apache-2.0
#pragma once

// A hundred settings as the bytes of a file.

namespace vorlan::benchmarks {

/// Adds the rows of the form that settings have in files.
void addDefaultsCodecRows();

} // namespace vorlan::benchmarks
