// SPDX-License-Identifier: Apache-2.0
#pragma once

// Changing items in a keyring.

#include "platform/security/secretservice/Keyring.h"

namespace vorlan::security::secretservice {

/// Changes the items at some paths, at least one; of several of one identity only the last changed remains.
/// Nothing is changed with errSecDuplicateItem, when one would become what another is, and errSecParam, when
/// one would contradict itself.
OSStatus update(Keyring& keyring, const Paths& paths, const ItemChange& change, bool hidesLabels);

} // namespace vorlan::security::secretservice
