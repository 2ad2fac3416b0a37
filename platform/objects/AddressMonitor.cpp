// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/AddressMonitor.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace vorlan {

struct AddressMonitor::Entry {
    std::recursive_mutex mutex;
    std::size_t users = 0; ///< Holders and waiters; guarded by the table.
};

struct AddressMonitor::Table {
    std::mutex mutex;
    std::unordered_map<const void*, std::unique_ptr<Entry>> entries;
};

AddressMonitor::Table& AddressMonitor::table() {
    // Never destroyed: static objects may lock while the process ends.
    static auto& table = *new Table;
    return table;
}

AddressMonitor::AddressMonitor(const void* address) : address_(address) {
    {
        const std::lock_guard lock(table().mutex);
        auto& entry = table().entries[address];
        if (!entry) entry = std::make_unique<Entry>();
        entry_ = entry.get();
        ++entry_->users;
    }
    entry_->mutex.lock();
}

AddressMonitor::~AddressMonitor() {
    entry_->mutex.unlock();
    const std::lock_guard lock(table().mutex);
    if (--entry_->users == 0) table().entries.erase(address_);
}

} // namespace vorlan
