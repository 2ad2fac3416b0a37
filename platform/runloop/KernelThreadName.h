// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace vorlan {

/// Gives the calling thread the name that the system's tools show: the first 15 bytes, or as many of them as
/// are whole characters.
void setKernelThreadName(const std::string& name);

} // namespace vorlan
