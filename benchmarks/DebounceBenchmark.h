// SPDX-License-Identifier: Apache-2.0
#pragma once

// A call that replaces work that is already pending, and puts it off.

namespace vorlan::benchmarks {

/// Adds the rows of calls while one is pending.
void addDebounceRows();

} // namespace vorlan::benchmarks
