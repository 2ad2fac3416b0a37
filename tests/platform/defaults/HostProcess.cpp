// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/defaults/HostProcess.h"

#include <utility>

namespace vorlan::tests {

namespace {

std::vector<std::string> commandFor(std::string_view store, std::vector<std::string> wrapper) {
    wrapper.emplace_back(VORLAN_DEFAULTS_HOST);
    wrapper.emplace_back(store);
    return wrapper;
}

} // namespace

HostProcess::HostProcess(std::string_view store, std::vector<std::string> wrapper)
    : child_(commandFor(store, std::move(wrapper))) {}

void HostProcess::tell(std::string_view command) {
    child_.send(std::string(command) + "\n");
}

std::string HostProcess::answer() {
    return child_.nextLine();
}

std::string HostProcess::ask(std::string_view command) {
    tell(command);
    return answer();
}

bool HostProcess::hasAnswered() {
    const auto& received = child_.received();
    return received.find('\n') != std::string::npos || (child_.receive(1) && received.ends_with('\n'));
}

std::size_t HostProcess::readAcknowledgements(std::size_t atLeast) {
    while (child_.received().size() < atLeast)
        if (!child_.receive()) break;
    return std::exchange(child_.received(), {}).size();
}

std::size_t HostProcess::kill() {
    child_.kill();
    finish();
    while (child_.receive()) {}
    return std::exchange(child_.received(), {}).size();
}

int HostProcess::finish() {
    return child_.wait();
}

} // namespace vorlan::tests
