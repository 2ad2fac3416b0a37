// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>

/// A little work, and more of it with each of forty rounds: what the test does next meets what runs on other
/// threads at ever another point of it.
inline void dawdle(int round) {
    for (std::atomic<int> steps = 50 * (round % 40); steps > 0;) --steps;
}
