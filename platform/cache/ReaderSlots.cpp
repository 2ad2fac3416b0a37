// SPDX-License-Identifier: Apache-2.0
#include "platform/cache/ReaderSlots.h"

namespace vorlan {

constinit std::array<ReaderSlot::Place, ReaderSlot::count> ReaderSlot::places{};

} // namespace vorlan
