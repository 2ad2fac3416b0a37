// SPDX-License-Identifier: Apache-2.0

// A process that adds items to the desktop's keyring when it is told to, in a race with others that add the same ones.
// It writes how often it heard that it had added one, that there was one, and anything else.

#include <VorlanFoundation/Platform/KeychainStore.h>
#include <VorlanFoundation/Platform/Security.h>

#include <cstdlib>
#include <iostream>
#include <string>

using namespace vorlan;

int main(int argc, char** argv) {
    if (argc != 3) return EXIT_FAILURE;
    const std::string service = argv[1];
    const int items = std::atoi(argv[2]); // NOLINT(cert-err34-c): the test's own number
    KeychainStore::configure({.store = KeychainOptions::Store::secretService});
    std::cout << "ready" << std::endl;
    std::string line;
    std::getline(std::cin, line);
    int added = 0;
    int known = 0;
    int failed = 0;
    for (int i = 0; i < items; ++i) {
        const auto status = SecItemAdd({{kSecClass, kSecClassGenericPassword},
                                        {kSecAttrService, service},
                                        {kSecAttrAccount, "account " + std::to_string(i)},
                                        {kSecValueData, dataFromText("secret")}});
        ++(status == errSecSuccess ? added : status == errSecDuplicateItem ? known : failed);
    }
    std::cout << added << " " << known << " " << failed << std::endl;
    return EXIT_SUCCESS;
}
