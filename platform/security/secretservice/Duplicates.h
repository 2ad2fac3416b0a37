// SPDX-License-Identifier: Apache-2.0
#pragma once

// What is done about one item that a keyring has several times: it does not keep writers from that, and not
// all of them need to have known of each other.

#include "platform/security/secretservice/Keyring.h"

#include <vector>

namespace vorlan::security::secretservice {

/// Items once each, oldest first, and those that they were found to replace.
struct Resolved {
    std::vector<StoredItem> items;
    Paths replaced;
};

/// Takes of all items of one identity that which was changed last.
Resolved resolve(std::vector<StoredItem> found);

} // namespace vorlan::security::secretservice
