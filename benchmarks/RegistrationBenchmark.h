// SPDX-License-Identifier: Apache-2.0
#pragma once

// Coming and going as an observer of an object that has others.

namespace vorlan::benchmarks {

/// Adds the rows of adding and removing one observer beside 0, 10 and 1000 others.
void addRegistrationRows();

} // namespace vorlan::benchmarks
