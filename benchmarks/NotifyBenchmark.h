// SPDX-License-Identifier: Apache-2.0
#pragma once

// Telling all observers of an object.

namespace vorlan::benchmarks {

/// Adds the rows of notifying 1, 10, 100 and 1000 observers.
void addNotifyRows();

} // namespace vorlan::benchmarks
