// SPDX-License-Identifier: Apache-2.0
#pragma once

// How the host hears of formats that do not fit their arguments.

#include <string>
#include <string_view>

namespace vorlan {

/// A format, or a part of one, in quotation marks; a long one is cut.
std::string quotedFormat(std::string_view format);

/// Tells the problem handler of a format, unless it was told of it already. `misfit` says what does not fit.
/// Of some hundred formats it is known that they were; beyond that, it is told anew. Safe from any thread.
void reportFormatOnce(std::string_view format, std::string_view misfit);

} // namespace vorlan
