// SPDX-License-Identifier: Apache-2.0
#pragma once

// How long it takes from a change of the kernel's to the callback that tells of it.

#include "benchmarks/support/KernelNetwork.h"

namespace vorlan::benchmarks {

/// Adds the rows: a default route that is deleted or added, a cable that is pulled out or plugged in.
void addReachabilityLatencyRows(Cable& cable);

/// Measures each row a number of times, and prints a table with their percentiles.
void printReachabilityLatencies(Cable& cable, unsigned rounds);

} // namespace vorlan::benchmarks
