// SPDX-License-Identifier: Apache-2.0
#pragma once

// Connections over TCP, which are answered or not.

#include <string>
#include <vector>

namespace vorlan::benchmarks {

/// Whether one of the hosts, at one of its addresses, answers a connection within a second and a half. A refusal is an
/// answer: it comes from the host.
bool isAnswered(const std::vector<std::string>& hosts);

} // namespace vorlan::benchmarks
