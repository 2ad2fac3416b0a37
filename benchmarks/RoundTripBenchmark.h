// SPDX-License-Identifier: Apache-2.0
#pragma once

// Handing over one piece of work and waiting until it ran.

namespace vorlan::benchmarks {

/// Adds the rows of going there and back.
void addRoundTripRows();

} // namespace vorlan::benchmarks
