// SPDX-License-Identifier: Apache-2.0
#pragma once

// How late a timer fires.

namespace vorlan::benchmarks {

/// Adds the rows of the lateness of a single event.
void addFiringRows();

} // namespace vorlan::benchmarks
