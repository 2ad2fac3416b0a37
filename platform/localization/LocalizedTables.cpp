// SPDX-License-Identifier: Apache-2.0
#include "platform/localization/LocalizedTables.h"

#include "platform/localization/TableFolder.h"
#include "platform/values/PerThread.h"

#include <cstddef>
#include <mutex>
#include <utility>

namespace vorlan {

namespace {

using FolderPointer = std::shared_ptr<TableFolder>;

// All tables that are in use.
class TableFolders {
public:
    FolderPointer folder(const TablePlace& place) {
        const std::lock_guard lock(mutex_);
        if (const auto found = folders_.find(place); found != folders_.end()) return found->second;
        if (folders_.size() >= capacity) forgetUnused();
        return folders_.emplace(TableKey(place), std::make_shared<TableFolder>(place)).first->second;
    }

    void forgetLastLooks() {
        const std::lock_guard lock(mutex_);
        for (const auto& [place, folder] : folders_) folder->forgetLastLook();
    }

private:
    // Those that no thread has pinned. More than the capacity stay where threads have pinned more.
    void forgetUnused() {
        std::erase_if(folders_, [](const auto& entry) { return entry.second.use_count() == 1; });
    }

    static constexpr std::size_t capacity = 256;

    std::mutex mutex_;
    TableMap<FolderPointer> folders_;
};

// Stays until the process ends: threads that still run then may ask for it.
TableFolders& tableFolders() {
    static auto& instance = *new TableFolders;
    return instance;
}

// A table that a thread has used, and its texts as the thread knows them.
struct Pin {
    FolderPointer folder;
    std::shared_ptr<const FolderTexts> texts;
};

// The tables of a thread, which it finds without a lock, and uses without counting references that threads share.
class Pins {
public:
    Pin* find(const TablePlace& place) {
        const auto found = pins_.find(place);
        return found != pins_.end() ? &found->second : nullptr;
    }

    void add(const TablePlace& place, Pin pin) {
        if (pins_.size() >= capacity) pins_.clear();
        pins_.insert_or_assign(TableKey(place), std::move(pin));
    }

    // How many lookups are under way on the thread, one in another. What the outer ones use has to stay.
    int depth = 0;

private:
    static constexpr std::size_t capacity = 256;

    TableMap<Pin> pins_;
};

Pin makePin(const TablePlace& place) {
    Pin pin{.folder = tableFolders().folder(place)};
    pin.folder->refreshWhenDue();
    pin.texts = pin.folder->texts();
    return pin;
}

// A lookup among the tables of its thread.
class Lookup {
public:
    explicit Lookup(Pins& pins) noexcept : pins_(pins) { ++pins_.depth; }
    Lookup(const Lookup&) = delete;
    Lookup& operator=(const Lookup&) = delete;
    ~Lookup() { --pins_.depth; }

    void use(const TablePlace& place, FunctionRef<void(const FolderTexts&)> use) {
        if (auto* const pin = pins_.find(place)) return usePinned(*pin, use);
        const auto pin = makePin(place);
        if (isOutermost()) pins_.add(place, pin);
        use(*pin.texts);
    }

private:
    bool isOutermost() const noexcept { return pins_.depth == 1; }

    void usePinned(Pin& pin, FunctionRef<void(const FolderTexts&)> use) {
        pin.folder->refreshWhenDue();
        if (pin.folder->isCurrent(pin.texts.get())) return use(*pin.texts);
        const auto texts = pin.folder->texts();
        if (isOutermost()) pin.texts = texts;
        use(*texts);
    }

    Pins& pins_;
};

} // namespace

void useFolderTexts(const TablePlace& place, FunctionRef<void(const FolderTexts&)> use) {
    auto named = place;
    if (named.table.empty()) named.table = "Localizable";
    if (auto* const pins = PerThread<Pins>::get()) {
        Lookup(*pins).use(named, use);
    } else {
        use(*makePin(named).texts);
    }
}

bool useLocalizedEntry(const TablePlace& place, std::string_view key,
                       FunctionRef<void(const StringTableEntry*)> use) {
    bool isFound = false;
    const auto useIn = [&](std::string_view language) {
        useFolderTexts({place.resources, language, place.table}, [&](const FolderTexts& texts) {
            isFound = texts.isFolderThere;
            if (isFound) use(texts.find(key));
        });
    };
    if (!place.language.empty()) useIn(place.language);
    if (!isFound) useIn("Base");
    return isFound;
}

void recheckLocalizedTables() {
    tableFolders().forgetLastLooks();
}

} // namespace vorlan
