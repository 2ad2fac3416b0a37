// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/embedded/KeychainProcess.h"

#include <utility>

namespace vorlan::tests {

namespace {

std::vector<std::string> commandFor(std::string_view store, std::vector<std::string> wrapper) {
    wrapper.emplace_back(VORLAN_KEYCHAIN_HOST);
    wrapper.emplace_back(store);
    return wrapper;
}

} // namespace

KeychainProcess::KeychainProcess(std::string_view store, std::vector<std::string> wrapper)
    : child_(commandFor(store, std::move(wrapper))) {}

void KeychainProcess::tell(std::string_view command) const {
    child_.send(std::string(command) + "\n");
}

std::string KeychainProcess::answer() {
    return child_.nextLine();
}

std::string KeychainProcess::ask(std::string_view command) {
    tell(command);
    return answer();
}

std::size_t KeychainProcess::readAcknowledgements(std::size_t atLeast) {
    while (child_.received().size() < atLeast)
        if (!child_.receive()) break;
    return std::exchange(child_.received(), {}).size();
}

std::size_t KeychainProcess::kill() {
    child_.kill();
    child_.wait();
    while (child_.receive()) {}
    return std::exchange(child_.received(), {}).size();
}

} // namespace vorlan::tests
