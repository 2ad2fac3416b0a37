// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Object.h>

#include <utility>
#include <vector>

namespace vorlan {

// Objects have very few associations, so a list is the fastest table.
struct detail::ObjectExtras {
    std::recursive_mutex monitor;
    std::vector<std::pair<const void*, std::unique_ptr<AssociatedValue>>> associations;
};

detail::AssociatedValue::~AssociatedValue() = default;

Object::~Object() {
    // A dying associated value may ask the object once more, which makes new extras.
    while (auto* extras = extras_.exchange(nullptr, std::memory_order_acquire)) delete extras;
}

std::recursive_mutex& Object::monitor() const {
    return extras().monitor;
}

detail::AssociatedValue* Object::association(const void* key) const {
    for (const auto& [known, value] : extras().associations)
        if (known == key) return value.get();
    return nullptr;
}

void Object::associate(const void* key, std::unique_ptr<detail::AssociatedValue> value) const {
    for (auto& [known, old] : extras().associations) {
        if (known != key) continue;
        old.swap(value); // The old value dies with the argument, when the table is in order again.
        return;
    }
    extras().associations.emplace_back(key, std::move(value));
}

detail::ObjectExtras& Object::extras() const {
    if (auto* known = extras_.load(std::memory_order_acquire)) return *known;
    auto fresh = std::make_unique<detail::ObjectExtras>();
    detail::ObjectExtras* current = nullptr;
    if (extras_.compare_exchange_strong(current, fresh.get(), std::memory_order_acq_rel))
        return *fresh.release();
    return *current;
}

} // namespace vorlan
