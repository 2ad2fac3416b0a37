// SPDX-License-Identifier: Apache-2.0
#pragma once

// Secrets by key, in the user's keychain.
//
//     auto keychain = KeychainManager::with([](KeychainSettings& settings) {
//         settings.service = "com.example.mail";
//         settings.synchronizable = false;
//         settings.accessibility = Accessibility::afterFirstUnlock({.thisDeviceOnly = true});
//     });
//     keychain["password"] = "correct horse";
//     std::optional<std::string> password = keychain["password"];

#include <VorlanFoundation/Keychain/Accessibility.h>
#include <VorlanFoundation/Keychain/KeychainError.h>
#include <VorlanFoundation/Keychain/KeychainManageable.h>
#include <VorlanFoundation/Keychain/KeychainManager.h>
#include <VorlanFoundation/Keychain/KeychainSettings.h>
#include <VorlanFoundation/Keychain/SecurityClass.h>
#include <VorlanFoundation/Keychain/SensitiveStringStorage.h>
