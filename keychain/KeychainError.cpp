// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Keychain/KeychainError.h>

namespace vorlan {

std::string localizedDescription(KeychainError error) {
    return "The operation couldn’t be completed. (VorlanFoundation.KeychainError error " +
           std::to_string(static_cast<int>(error)) + ".)";
}

} // namespace vorlan
