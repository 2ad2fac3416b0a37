// SPDX-License-Identifier: Apache-2.0
#include "platform/security/ItemStore.h"

#include "platform/security/RandomBytes.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <tuple>

namespace vorlan::security {

namespace {

template <class Wanted, class Actual>
bool agrees(const std::optional<Wanted>& wanted, const Actual& actual) {
    return !wanted || *wanted == actual;
}

template <class Change, class Target>
void set(const std::optional<Change>& change, Target& target) {
    if (change) target = *change;
}

} // namespace

bool ItemMatch::operator()(const KeychainItem& item) const {
    return agrees(identifier, item.identifier) && agrees(itemClass, item.itemClass) &&
           agrees(service, item.service) && agrees(account, item.account) &&
           agrees(accessGroup, item.accessGroup) && agrees(accessible, item.accessible) &&
           (!generic || generic == item.generic) && agrees(isSynchronizable, item.isSynchronizable);
}

bool ItemChange::isEmpty() const noexcept {
    return !value && !accessible && !generic && !label && !changesIdentity();
}

bool ItemChange::changesIdentity() const noexcept {
    return service || account || accessGroup || isSynchronizable;
}

void ItemChange::apply(KeychainItem& item) const {
    set(value, item.value);
    set(service, item.service);
    set(account, item.account);
    set(accessGroup, item.accessGroup);
    set(isSynchronizable, item.isSynchronizable);
    set(accessible, item.accessible);
    set(generic, item.generic);
    set(label, item.label);
}

ItemMatch identityOf(const KeychainItem& item) {
    return {.itemClass = item.itemClass,
            .service = item.service,
            .account = item.account,
            .accessGroup = item.accessGroup,
            .isSynchronizable = item.isSynchronizable};
}

bool isOlder(const KeychainItem& a, const KeychainItem& b) {
    return std::tie(a.created, a.identifier) < std::tie(b.created, b.identifier);
}

bool isContradictory(const KeychainItem& item) {
    return item.isSynchronizable &&
           item.accessible.ends_with('u'); // as all constants for this device only do
}

std::int64_t nowInMicroseconds() {
    static std::atomic<std::int64_t> last = 0;
    const auto clock = std::chrono::system_clock::now().time_since_epoch();
    const std::int64_t now = std::chrono::duration_cast<std::chrono::microseconds>(clock).count();
    auto former = last.load();
    while (!last.compare_exchange_weak(former, std::max(now, former + 1))) {}
    return std::max(now, former + 1);
}

ItemIdentifier makeItemIdentifier() {
    ItemIdentifier identifier;
    fillRandomly(identifier);
    return identifier;
}

} // namespace vorlan::security
