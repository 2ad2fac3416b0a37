// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Keychain/KeychainSettings.h>

namespace vorlan {

std::shared_ptr<KeychainSettings> KeychainSettings::with(FunctionRef<void(KeychainSettings&)> configure) {
    auto settings = std::make_shared<KeychainSettings>();
    configure(*settings);
    return settings;
}

} // namespace vorlan
