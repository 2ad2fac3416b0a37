// SPDX-License-Identifier: Apache-2.0
#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/Keychain.h>
#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/KeychainStore.h>
#include <VorlanFoundation/Testing.h>

#include <optional>
#include <string>

using namespace vorlan;

namespace {

KeychainManager makeKeychain() {
    return KeychainManager::with([](KeychainSettings& settings) {
        settings.service = "com.vorlan.tour";
        settings.synchronizable = false;
        settings.accessibility = Accessibility::afterFirstUnlock({.thisDeviceOnly = true});
    });
}

// Only ever how long a secret is: what is on a terminal is in its history too.
std::string lengthOf(const std::optional<std::string>& secret) {
    return secret ? "a text of " + std::to_string(secret->size()) + " bytes" : "nothing";
}

bool showEntries() {
    auto keychain = makeKeychain();
    keychain["password"] = "correct horse";
    keychain["remembers"] = true;
    const std::optional<std::string> password = keychain["password"];
    const std::optional<bool> remembers = keychain["remembers"];
    tour::line("KeychainManager", "under \"password\" there is " + lengthOf(password) +
                                      ", under \"remembers\" " + describe(remembers));
    keychain.removeAllKeys({.except = {"remembers"}});
    const std::optional<std::string> gone = keychain["password"];
    tour::line("removeAllKeys", "all but one: under \"password\" there is " + lengthOf(gone) + " now");
    return password == "correct horse" && remembers == true && !gone;
}

bool showReferences() {
    auto keychain = makeKeychain();
    const auto reference = keychain.insertReference({.containing = "a backup key", .called = "backup"});
    if (!reference) return false;
    const auto found = keychain.string(*reference);
    keychain.removeReference(*reference);
    const bool isValid = keychain.verifyReference(*reference);
    tour::line("references", std::to_string(reference->size()) + " bytes stood for " + lengthOf(found) +
                                 (isValid ? "; they still do" : ", until it was removed"));
    return found == "a backup key" && !isValid;
}

} // namespace

bool tour::showKeychain() {
    title("Keychain");
    line("KeychainStore", "yours: " + KeychainStore::description());
    bool isComplete = true;
    {
        const vorlan::testing::TemporaryHome home; // the user's own secrets are left alone
        KeychainStore::configure({.store = KeychainOptions::Store::embedded});
        for (const auto show : {showEntries, showReferences}) isComplete &= show();
    }
    KeychainStore::configure({});
    return isComplete;
}
