// SPDX-License-Identifier: Apache-2.0
#pragma once

// The members of a written object in the order of their names.

#include "platform/json/JSONWriterStorage.h"

#include <cstddef>

namespace vorlan {

/// Sorts the members of the innermost object, which begin at `memberStarts` from `firstMember` on, reach to the end of
/// the text, and have separators of so many bytes between them; members of the same name stay in their order. Takes
/// them off `memberStarts`.
void sortMembers(JSONWriterStorage& storage, std::size_t firstMember, std::size_t separatorLength);

} // namespace vorlan
