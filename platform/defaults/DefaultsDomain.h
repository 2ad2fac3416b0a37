// SPDX-License-Identifier: Apache-2.0
#pragma once

// A store of the user's settings, as this process has it open.

#include "platform/defaults/DefaultsFile.h"
#include "platform/defaults/DefaultsJournal.h"
#include "platform/defaults/DefaultsTable.h"
#include "platform/files/FolderWatch.h"

#include <VorlanFoundation/Platform/FunctionRef.h>
#include <VorlanFoundation/Platform/KeyValueObserving.h>
#include <VorlanFoundation/Platform/TimerSource.h>
#include <VorlanFoundation/Platform/Value.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan {

/// One store: its table in memory, its file, and the journal of what is in the one and not in the other. All handles
/// of a store in a process are of one of these, which stays until the process ends.
///
/// It is opened when it is first used: its file is read, what processes that are gone left behind is taken over, and
/// its folder is watched.
///
/// Threads: safe from any thread. Two locks: `saveMutex_` for everything that has to do with files but the journal,
///          taken first and held for as long as that takes; `tableMutex_` for the table and the journal, held
///          shortly. Observers and the handler of problems are called with neither.
class DefaultsDomain final : public KeyValueObserving {
public:
    /// The store of a name, made when it is asked for first.
    static std::shared_ptr<DefaultsDomain> named(std::string_view name);

    /// All stores of this process.
    static std::vector<std::shared_ptr<DefaultsDomain>> all();

    explicit DefaultsDomain(std::string name);

    const std::string& name() const noexcept { return name_; }

    /// The folder of a store; absent when the user has no home folder.
    static std::optional<std::filesystem::path> folderOf(std::string_view name);

    /// The operations of `UserDefaults`.
    bool read(std::string_view key, FunctionRef<void(const Value&)> use);
    void set(std::string_view key, std::optional<Value> value);
    void registerDefaults(Value::Dictionary defaults);
    Value::Dictionary entries(bool withRegistered);
    KeyValueObservation observeKey(std::string_view key, Handler handler);
    bool synchronize();

    /// Forgets all that belongs to the user's present folders: the next use opens the store anew.
    void leaveHome();

    /// Tells the observers of every key that its value may be another.
    void tellAll();

    /// Saves what is not saved yet, if the store was used at all.
    void saveIfOpen();

    /// The same without telling observers, for the end of the process.
    void saveQuietly();

private:
    /// Whether this process's own changes are saved too, or only those that the dead left behind.
    enum class Saving { own, onlyOrphans };

    void open();
    void openLocked();
    bool isOpen() const noexcept { return isOpen_.load(std::memory_order_acquire); }
    bool update(Saving saving);
    bool save(Saving saving, std::vector<std::string>& changed);
    bool merge(const std::vector<defaults::DefaultsTable::Unsaved>& unsaved, std::uint64_t journalEnd);
    bool isValue(std::string_view key, const std::optional<Value>& value) const;
    std::string journalName();
    bool makeFolder() const;
    bool fail(const char* what, int reason);
    std::optional<std::string> failure(const char* what, int reason);
    static void report(const defaults::Problems& problems);
    void tell(const std::vector<std::string>& changed);

    const std::string name_;

    std::mutex saveMutex_;
    std::optional<std::filesystem::path>
        folder_; ///< Changed with both locks held, so either is enough to read it.
    std::optional<defaults::DefaultsFile> file_;
    defaults::Problems problems_; ///< To be reported when the lock is released.
    std::unique_ptr<FolderWatch> watch_;
    std::atomic<bool> isOpen_ = false;

    std::shared_mutex tableMutex_;
    defaults::DefaultsTable table_;
    std::unique_ptr<defaults::DefaultsJournal> journal_;
    std::set<std::string, std::less<>> observed_; ///< Keys that were ever observed.
    bool isSaveDue_ = false;
    TimerSource saveTimer_;

    std::atomic<bool> hasFailed_ = false; ///< Whether a failure was reported that is not over yet.
};

} // namespace vorlan
