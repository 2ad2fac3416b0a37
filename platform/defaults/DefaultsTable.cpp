// SPDX-License-Identifier: Apache-2.0
#include "platform/defaults/DefaultsTable.h"

#include <algorithm>

namespace vorlan::defaults {

template <class Content>
Content& DefaultsTable::at(Map<Content>& map, std::string_view key) {
    // Most entries that are set are there already, and then no key has to be made.
    const auto found = map.find(key);
    return found != map.end() ? found->second : map[std::string(key)];
}

const Value* DefaultsTable::find(std::string_view key) const {
    if (const auto found = entries_.find(key); found != entries_.end() && found->second.value)
        return &*found->second.value;
    return findRegistered(key);
}

const Value* DefaultsTable::findRegistered(std::string_view key) const {
    const auto found = registered_.find(key);
    return found != registered_.end() ? &found->second : nullptr;
}

void DefaultsTable::set(std::string_view key, std::optional<Value> value) {
    auto& entry = at(entries_, key);
    if (entry.number == 0) unsaved_.emplace_back(key);
    entry.value = std::move(value);
    entry.number = ++lastNumber_;
}

void DefaultsTable::registerDefault(const std::string& key, Value value) {
    at(registered_, key) = std::move(value);
}

std::vector<DefaultsTable::Unsaved> DefaultsTable::unsaved() const {
    std::vector<Unsaved> copies;
    copies.reserve(unsaved_.size());
    for (const auto& key : unsaved_) {
        const auto& entry = entries_.find(key)->second;
        copies.push_back({key, entry.value, entry.number});
    }
    return copies;
}

void DefaultsTable::markSaved(const std::vector<Unsaved>& saved) {
    for (const auto& [key, value, number] : saved) {
        const auto found = entries_.find(key);
        if (found == entries_.end() || found->second.number != number) continue;
        found->second.number = 0;
        if (!found->second.value) entries_.erase(found);
    }
    std::erase_if(unsaved_, [&](const std::string& key) {
        const auto found = entries_.find(key);
        return found == entries_.end() || found->second.number == 0;
    });
}

std::vector<std::string> DefaultsTable::replaceSaved(const Value::Dictionary& entries) {
    std::vector<std::string> changed;
    removeAllBut(entries, changed);
    for (const auto& [key, value] : entries)
        if (replace(key, value)) changed.push_back(key);
    return changed;
}

void DefaultsTable::removeAllBut(const Value::Dictionary& entries, std::vector<std::string>& changed) {
    for (auto entry = entries_.begin(); entry != entries_.end();) {
        if (entry->second.number != 0 || entries.contains(entry->first)) {
            ++entry;
            continue;
        }
        const auto* registered = findRegistered(entry->first);
        if (registered == nullptr || *registered != *entry->second.value) changed.push_back(entry->first);
        entry = entries_.erase(entry);
    }
}

// Whether the value, seen from outside, changed.
bool DefaultsTable::replace(const std::string& key, const Value& value) {
    const auto* former = find(key);
    const bool isChange = former == nullptr || *former != value;
    auto& entry = at(entries_, key);
    if (entry.number != 0) return false;
    // Also where the registered value is the same: that may be registered anew.
    if (isChange || !entry.value) entry.value = value;
    return isChange;
}

Value::Dictionary DefaultsTable::entries(bool withRegistered) const {
    Value::Dictionary all;
    for (const auto& [key, entry] : entries_)
        if (entry.value) all.emplace(key, *entry.value);
    if (withRegistered)
        for (const auto& [key, value] : registered_) all.emplace(key, value);
    return all;
}

} // namespace vorlan::defaults
