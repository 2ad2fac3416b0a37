// SPDX-License-Identifier: Apache-2.0

// A host that keeps passwords for its user: in the desktop's keyring, or where there is none, in a sealed file.

#include "examples/secrets/HiddenInput.h"

#include <VorlanFoundation/Keychain.h>
#include <VorlanFoundation/Platform/KeychainStore.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using namespace vorlan;

namespace {

constexpr std::string_view service = "com.vorlan.example.secrets";
constexpr std::string_view usage = "Usage: vorlan-secrets COMMAND\n"
                                   "\n"
                                   "Keeps passwords in your keychain.\n"
                                   "\n"
                                   "  set NAME      keep a password, which is read from standard input\n"
                                   "  get NAME      write it to standard output\n"
                                   "  list          write the names\n"
                                   "  delete NAME   forget one\n"
                                   "  where         say where they are kept\n"
                                   "  --help        this text\n";

KeychainManager makeKeychain() {
    return KeychainManager::with([](KeychainSettings& settings) {
        settings.service = service;
        settings.synchronizable = false;
        settings.accessibility = Accessibility::unlocked({.thisDeviceOnly = true});
    });
}

int fail(std::string_view problem) {
    std::cerr << "vorlan-secrets: " << problem << '\n';
    return 1;
}

// A manager says that something did not work; why, the keychain itself says.
std::string reason(std::string_view name) {
    std::vector<std::string> names;
    const auto status = KeychainStore::keys(service, names);
    const bool isKnown = std::ranges::find(names, name) != names.end();
    if (status == errSecItemNotFound || (status == errSecSuccess && !isKnown))
        return "there is no password '" + std::string(name) + "'";
    return status == errSecSuccess ? "the password cannot be used" : SecCopyErrorMessageString(status);
}

int set(const std::string& name) {
    const auto password = secrets::readHiddenLine("Password for " + name + ": ");
    if (!password) return fail("no password was given");
    if (makeKeychain().insert(name, dataFromText(*password))) return 0;
    std::vector<std::string> names;
    const auto status = KeychainStore::keys(service, names);
    const bool isReachable = status == errSecSuccess || status == errSecItemNotFound;
    return fail(isReachable ? "the password could not be kept" : SecCopyErrorMessageString(status));
}

int get(const std::string& name) {
    auto keychain = makeKeychain();
    const std::optional<std::string> password = keychain[name];
    if (!password) return fail(reason(name));
    std::cout << *password << '\n';
    return 0;
}

int list(const std::string&) {
    std::vector<std::string> names;
    const auto status = KeychainStore::keys(service, names);
    if (status != errSecSuccess && status != errSecItemNotFound)
        return fail(SecCopyErrorMessageString(status));
    for (const auto& name : names) std::cout << name << '\n';
    return 0;
}

int forget(const std::string& name) {
    auto keychain = makeKeychain();
    if (!keychain.dataRef(name)) return fail(reason(name));
    return keychain.remove(name) ? 0 : fail("the password could not be deleted");
}

int where(const std::string&) {
    std::cout << KeychainStore::description() << '\n';
    return 0;
}

struct Command {
    std::string_view name;
    bool takesName;
    int (*run)(const std::string& name);
};

constexpr std::array commands{Command{"set", true, set}, Command{"get", true, get},
                              Command{"list", false, list}, Command{"delete", true, forget},
                              Command{"where", false, where}};

int refuse() {
    std::cerr << usage;
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 1 && arguments[0] == "--help") {
        std::cout << usage;
        return 0;
    }
    if (arguments.empty()) return refuse();
    const auto* command = std::ranges::find(commands, std::string_view(arguments[0]), &Command::name);
    if (command == commands.end() || arguments.size() != (command->takesName ? 2 : 1)) return refuse();
    // With someone at the keyboard, the desktop may ask to unlock its keyring.
    KeychainStore::configure({.allowsPrompts = isatty(STDIN_FILENO) != 0});
    return command->run(command->takesName ? arguments[1] : "");
}
