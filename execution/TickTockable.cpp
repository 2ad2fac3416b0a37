// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/TickTockable.h>

namespace vorlan {

TickTockable::~TickTockable() = default;

} // namespace vorlan
