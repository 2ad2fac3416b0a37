// SPDX-License-Identifier: Apache-2.0

// A host that runs until its input ends, and prints what a setting is whenever that changes.
//
// Usage: vorlan-observing-host DOMAIN KEY

#include <VorlanFoundation/Platform/UserDefaults.h>

#include <iostream>
#include <string>

namespace {

void print(const vorlan::UserDefaults& defaults, const std::string& key) {
    const auto value = defaults.objectForKey(key);
    std::cout << (value ? value->description() : "absent") + "\n" << std::flush;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const vorlan::UserDefaults defaults(argv[1]);
    const std::string key = argv[2];
    const auto observation = defaults.observe(key, [&defaults, &key] { print(defaults, key); });
    std::cout << "observing\n" << std::flush;
    for (std::string line; std::getline(std::cin, line);) {}
    return 0;
}
