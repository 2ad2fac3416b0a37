// SPDX-License-Identifier: Apache-2.0
#include "platform/defaults/DefaultsDomain.h"

#include "platform/defaults/Change.h"
#include "platform/defaults/OrphanedJournal.h"
#include "platform/files/FileLock.h"
#include "platform/files/UserFolders.h"

#include <VorlanFoundation/Platform/FileManager.h>
#include <VorlanFoundation/Platform/Problems.h>
#include <VorlanFoundation/Platform/Queue.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <iterator>
#include <map>
#include <system_error>
#include <utility>

namespace vorlan {

using defaults::Change;
using defaults::DefaultsJournal;
using defaults::DefaultsTable;
using defaults::OrphanedJournal;

namespace {

// How long changes are gathered before they are saved together: too short for a user to notice, and long enough
// that a slider which is dragged does not keep the disk busy.
constexpr auto saveDelay = std::chrono::milliseconds(50);

// A journal that is longer is saved before the next change is taken, so that it cannot outgrow the saving.
constexpr std::uint64_t journalLimit = 1'048'576;

struct Registry {
    // Never destroyed: stores may be used at the very end of the process.
    static Registry& shared() {
        static auto* const registry = new Registry;
        return *registry;
    }

    std::mutex mutex;
    std::map<std::string, std::shared_ptr<DefaultsDomain>, std::less<>> domains;
};

// What is still gathered when the process ends is saved then, which is no duty but tidy: else the next process that
// opens the store would have to. What the host might be told of now, it may have no objects left for.
void saveAtExit() {
    setProblemHandler(nullptr);
    for (const auto& domain : DefaultsDomain::all()) domain->saveQuietly();
}

Value::Dictionary applied(const std::vector<Change>& changes, Value::Dictionary entries) {
    for (const auto& [key, value] : changes) {
        if (value) {
            entries.insert_or_assign(key, *value);
        } else {
            entries.erase(key);
        }
    }
    return entries;
}

} // namespace

std::shared_ptr<DefaultsDomain> DefaultsDomain::named(std::string_view name) {
    auto& registry = Registry::shared();
    const std::lock_guard lock(registry.mutex);
    if (registry.domains.empty()) std::atexit(saveAtExit);
    const auto found = registry.domains.find(name);
    if (found != registry.domains.end()) return found->second;
    auto domain = std::make_shared<DefaultsDomain>(std::string(name));
    registry.domains.emplace(name, domain);
    return domain;
}

std::vector<std::shared_ptr<DefaultsDomain>> DefaultsDomain::all() {
    auto& registry = Registry::shared();
    const std::lock_guard lock(registry.mutex);
    std::vector<std::shared_ptr<DefaultsDomain>> all;
    all.reserve(registry.domains.size());
    for (const auto& [name, domain] : registry.domains) all.push_back(domain);
    return all;
}

DefaultsDomain::DefaultsDomain(std::string name)
    : name_(std::move(name)),
      journal_(std::make_unique<DefaultsJournal>()),
      saveTimer_(Queue::global(QualityOfService::utility)) {
    saveTimer_.setEventHandler([this] { saveIfOpen(); });
    saveTimer_.resume();
}

std::optional<std::filesystem::path> DefaultsDomain::folderOf(std::string_view name) {
    auto folder = folders::configuration();
    if (folder) *folder /= name;
    return folder;
}

bool DefaultsDomain::read(std::string_view key, FunctionRef<void(const Value&)> use) {
    open();
    const std::shared_lock lock(tableMutex_);
    const auto* value = table_.find(key);
    if (value == nullptr) return false;
    use(*value);
    return true;
}

void DefaultsDomain::set(std::string_view key, std::optional<Value> value) {
    open();
    const auto change = defaults::encodeChange(key, value);
    int error = 0;
    bool isTooLong = false;
    bool isNews = false;
    {
        const std::lock_guard lock(tableMutex_);
        if (!folder_ || !journal_->append(*folder_, change)) error = folder_ ? errno : ENOENT;
        isTooLong = journal_->end() > journalLimit;
        isNews = observed_.contains(key) && !isValue(key, value);
        table_.set(key, std::move(value));
        if (!std::exchange(isSaveDue_, true))
            saveTimer_.schedule({.deadline = DispatchTime::now() + saveDelay});
    }
    if (error != 0)
        if (const auto message = failure("keep a journal", error)) report({*message});
    if (isTooLong) synchronize();
    if (isNews) didChangeValueForKey(key);
}

bool DefaultsDomain::isValue(std::string_view key, const std::optional<Value>& value) const {
    const auto* former = table_.find(key);
    const auto* next = value ? &*value : table_.findRegistered(key);
    return former == nullptr || next == nullptr ? former == next : *former == *next;
}

void DefaultsDomain::registerDefaults(Value::Dictionary defaults) {
    open();
    std::vector<std::string> changed;
    {
        const std::lock_guard lock(tableMutex_);
        for (auto& [key, value] : defaults) {
            const auto* former = table_.find(key);
            const bool isSame = former != nullptr && *former == value;
            const bool counts = former == table_.findRegistered(key);
            table_.registerDefault(key, std::move(value));
            if (counts && !isSame) changed.push_back(key);
        }
    }
    tell(changed);
}

Value::Dictionary DefaultsDomain::entries(bool withRegistered) {
    open();
    const std::shared_lock lock(tableMutex_);
    return table_.entries(withRegistered);
}

KeyValueObservation DefaultsDomain::observeKey(std::string_view key, Handler handler) {
    open();
    const std::lock_guard lock(tableMutex_);
    observed_.emplace(key);
    return observe(std::string(key), std::move(handler));
}

bool DefaultsDomain::synchronize() {
    open();
    return update(Saving::own);
}

void DefaultsDomain::saveIfOpen() {
    if (isOpen()) update(Saving::own);
}

void DefaultsDomain::saveQuietly() {
    const std::lock_guard lock(saveMutex_);
    std::vector<std::string> untold;
    if (isOpen() && save(Saving::own, untold)) {
        const std::lock_guard tableLock(tableMutex_);
        if (!table_.hasUnsaved()) journal_ = std::make_unique<DefaultsJournal>(); // the empty one is removed
    }
    report(std::exchange(problems_, {}));
}

void DefaultsDomain::open() {
    if (isOpen()) return;
    defaults::Problems problems;
    {
        const std::lock_guard lock(saveMutex_);
        if (!isOpen()) openLocked();
        problems.swap(problems_);
    }
    report(problems);
}

void DefaultsDomain::openLocked() {
    {
        const std::lock_guard lock(tableMutex_);
        folder_ = folderOf(name_);
    }
    if (folder_) {
        file_.emplace(*folder_, problems_);
        // From here on changes are told, so that none falls between this look and the first notification.
        watch_ = std::make_unique<FolderWatch>(*folder_, [this] { update(Saving::onlyOrphans); });
        std::vector<std::string> changed; // nobody has seen anything yet
        save(Saving::onlyOrphans, changed);
    }
    isOpen_.store(true, std::memory_order_release);
}

bool DefaultsDomain::update(Saving saving) {
    std::vector<std::string> changed;
    defaults::Problems problems;
    bool isDone = false;
    {
        const std::lock_guard lock(saveMutex_);
        // The home may have been left while this waited.
        isDone = !isOpen() || save(saving, changed);
        problems.swap(problems_);
    }
    report(problems);
    tell(changed);
    return isDone;
}

bool DefaultsDomain::save(Saving saving, std::vector<std::string>& changed) {
    std::vector<DefaultsTable::Unsaved> unsaved;
    std::uint64_t journalEnd = 0;
    {
        const std::lock_guard lock(tableMutex_);
        journal_->leaveIfRemoved();
        if (saving == Saving::own) {
            isSaveDue_ = false;
            unsaved = table_.unsaved();
            journalEnd = journal_->end();
        }
    }
    if (!folder_) return unsaved.empty();
    bool isNew = file_->refresh();
    bool isDone = true;
    if (!unsaved.empty() || file_->isDamaged() || OrphanedJournal::mayBeIn(*folder_, journalName())) {
        isDone = merge(unsaved, journalEnd);
        isNew = true;
    }
    if (!isNew) return true;
    const std::lock_guard lock(tableMutex_);
    if (isDone) table_.markSaved(unsaved);
    changed = table_.replaceSaved(file_->entries());
    return isDone;
}

// Everything that changes files of the store is done under its lock, so that the newest version is always the one
// that is changed. The journals of the dead come before our own changes: those are younger.
bool DefaultsDomain::merge(const std::vector<DefaultsTable::Unsaved>& unsaved, std::uint64_t journalEnd) {
    if (!unsaved.empty() && !makeFolder()) return fail("make its folder", errno);
    const FileLock lock(*folder_ / "defaults.lock");
    if (!lock) return fail("lock it", errno);
    file_->refresh();
    if (file_->readError() != 0) return fail("read its file", file_->readError());
    file_->moveDamagedAside();
    auto orphans = OrphanedJournal::allIn(*folder_, journalName());
    std::vector<Change> changes;
    for (auto& orphan : orphans) std::ranges::move(orphan.changes(), std::back_inserter(changes));
    for (const auto& [key, value, number] : unsaved) changes.push_back({key, value});
    if (!changes.empty() && !file_->replace(applied(changes, file_->entries())))
        return fail("save it", errno);
    for (const auto& orphan : orphans) orphan.discard(problems_);
    // Still under the lock: should this process end here, the next to hold it finds nothing old in our journal that
    // it would take for news.
    const std::lock_guard tableLock(tableMutex_);
    journal_->forgetBefore(journalEnd);
    hasFailed_ = false;
    return true;
}

std::string DefaultsDomain::journalName() {
    const std::shared_lock lock(tableMutex_);
    return std::string(journal_->name());
}

bool DefaultsDomain::makeFolder() const try {
    FileManager::defaultManager().createDirectoryAtURL(FileURL(*folder_),
                                                       {.withIntermediateDirectories = true});
    return true;
} catch (const std::filesystem::filesystem_error& error) {
    errno = error.code().value();
    return false;
}

bool DefaultsDomain::fail(const char* what, int reason) {
    if (auto message = failure(what, reason)) problems_.push_back(*std::move(message));
    return false;
}

// Told once until something was saved again: a full disk would fill the log of problems too.
std::optional<std::string> DefaultsDomain::failure(const char* what, int reason) {
    if (hasFailed_.exchange(true)) return std::nullopt;
    return "the changes of the store " + name_ + " are not saved yet; cannot " + what + ": " +
           std::generic_category().message(reason);
}

void DefaultsDomain::report(const defaults::Problems& problems) {
    for (const auto& problem : problems) detail::reportProblem(problem, "VorlanFoundation/UserDefaults");
}

void DefaultsDomain::tell(const std::vector<std::string>& changed) {
    std::vector<std::string> observed;
    {
        const std::shared_lock lock(tableMutex_);
        for (const auto& key : changed)
            if (observed_.contains(key)) observed.push_back(key);
    }
    for (const auto& key : observed) didChangeValueForKey(key);
}

void DefaultsDomain::leaveHome() {
    saveIfOpen();
    const std::lock_guard lock(saveMutex_);
    const std::lock_guard tableLock(tableMutex_);
    isOpen_ = false;
    watch_.reset();
    file_.reset();
    folder_.reset();
    table_ = DefaultsTable();
    journal_ = std::make_unique<DefaultsJournal>();
    hasFailed_ = false;
}

void DefaultsDomain::tellAll() {
    std::set<std::string, std::less<>> keys;
    {
        const std::shared_lock lock(tableMutex_);
        keys = observed_;
    }
    for (const auto& key : keys) didChangeValueForKey(key);
}

} // namespace vorlan
