// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NWPath.h>

#include <algorithm>
#include <tuple>
#include <utility>

namespace vorlan {

namespace {

// Types are a set; in one order and without repetition, equal sets compare equal.
std::shared_ptr<const NWPath::Description> normalised(NWPath::Description description) {
    auto& types = description.interfaceTypes;
    std::ranges::sort(types);
    types.erase(std::unique(types.begin(), types.end()), types.end());
    return std::make_shared<const NWPath::Description>(std::move(description));
}

auto compared(const NWPath::Description& d) {
    return std::tie(d.status, d.interfaceTypes, d.availableInterfaces, d.gateways, d.localAddresses,
                    d.supportsIPv4, d.supportsIPv6);
}

} // namespace

NWPath::NWPath() : NWPath(Description{}) {}

NWPath::NWPath(Description description) : description_(normalised(std::move(description))) {}

bool NWPath::usesInterfaceType(InterfaceType type) const noexcept {
    return std::ranges::binary_search(description_->interfaceTypes, type);
}

bool operator==(const NWPath& a, const NWPath& b) noexcept {
    return a.description_ == b.description_ || compared(*a.description_) == compared(*b.description_);
}

} // namespace vorlan
