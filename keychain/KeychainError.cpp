// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Keychain/KeychainError.h>

#include <VorlanFoundation/Platform/NSError.h>

namespace vorlan {

std::string localizedDescription(KeychainError error) {
    return NSError("VorlanFoundation.KeychainError", static_cast<int>(error)).localizedDescription();
}

} // namespace vorlan
