// SPDX-License-Identifier: Apache-2.0
#pragma once

// Items as the attributes that a keyring searches by.
//
// Every item has every attribute, since a search finds items that have the given ones and perhaps more. Names
// that the bus cannot carry, for they have zeros or are no UTF-8, are base64; a letter beside each says
// which.

#include "platform/security/ItemStore.h"
#include "platform/security/secretservice/GLibOwners.h"

#include <map>
#include <string>

namespace vorlan::security::secretservice {

using Attributes = std::map<std::string, std::string>;

/// All attributes of an item.
Attributes attributesOf(const KeychainItem& item);

/// The attributes of what is to be found.
Attributes attributesOf(const ItemMatch& match);

/// An item, but for its value, and for its label where that is told by what people see; a Failure when these
/// are not attributes of one.
KeychainItem itemOf(const Attributes& attributes);

/// What an item is called where people see it.
std::string labelOf(const KeychainItem& item, bool hidesLabels);

/// The label that an item was given, from that which people see: empty when it is one that it has by itself.
std::string ownLabel(const KeychainItem& item, std::string shown);

/// Attributes as the bus carries them (a{ss}), owned by nobody yet, and back.
GVariant* variantOf(const Attributes& attributes);
Attributes attributesIn(GVariant* variant);

} // namespace vorlan::security::secretservice
