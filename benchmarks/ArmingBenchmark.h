// SPDX-License-Identifier: Apache-2.0
#pragma once

// A timer that is made, armed and dropped before it fires, as time limits of requests are.

namespace vorlan::benchmarks {

/// Adds the rows of timers that come and go.
void addArmingRows();

} // namespace vorlan::benchmarks
