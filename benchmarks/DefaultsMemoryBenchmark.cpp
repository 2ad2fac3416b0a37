// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/DefaultsMemoryBenchmark.h"

#include "benchmarks/support/PlainFile.h"
#include "benchmarks/support/Rows.h"
#include "benchmarks/support/SampleEntries.h"
#include "platform/files/PropertyList.h"

#include <VorlanFoundation/Platform/UserDefaults.h>

#include <QtCore/QSettings>
#include <QtCore/QString>
#include <glib.h>

#include <sys/mman.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>

namespace vorlan::benchmarks {

namespace {

using std::filesystem::path;

/// Numbers of one length, so that every change has as many bytes.
constexpr std::int64_t firstNumber = 1'000'000'000;

/// The plainest store that several threads may use.
class PlainStore {
public:
    void set(std::string_view key, std::int64_t number) {
        const std::lock_guard lock(mutex_);
        put(key, number);
    }
    std::int64_t get(std::string_view key) const {
        const std::shared_lock lock(mutex_);
        const auto found = entries_.find(key);
        return found != entries_.end() ? found->second.as<std::int64_t>().value_or(0) : 0;
    }

protected:
    void put(std::string_view key, Value value) {
        const auto found = entries_.find(key);
        if (found != entries_.end()) {
            found->second = std::move(value);
        } else {
            entries_.emplace(key, std::move(value));
        }
    }

    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    mutable std::shared_mutex mutex_;
    std::unordered_map<std::string, Value, Hash, std::equal_to<>> entries_;
};

/// What ours appends to its journal for a setting: the change, and how long it is.
Data journalEntry(std::size_t index) {
    auto bytes = writeBinaryPropertyList(Value::Array{sampleKey(index), firstNumber});
    bytes.insert(bytes.end(), sizeof(std::uint32_t), std::byte{});
    return bytes;
}

/// The same, which loses nothing when the process is killed: what is set is written to a file as well, in the bytes
/// that ours writes. These are made once, and the file starts anew when it is as long as ours may be.
class WrittenStore : public PlainStore {
public:
    explicit WrittenStore(const path& folder) : file_(folder / "floor.journal", O_RDWR | O_CREAT | O_TRUNC) {
        for (std::size_t i = 0; i < sampleSize; ++i) bytes_.at(i) = journalEntry(i);
    }

    void set(std::size_t index, std::string_view key, std::int64_t number) {
        const std::lock_guard lock(mutex_);
        const auto& bytes = bytes_.at(index);
        file_.writeAt(end_, bytes.data(), bytes.size());
        end_ += static_cast<off_t>(bytes.size());
        constexpr off_t limit = 1'048'576;
        if (end_ > limit) {
            file_.truncate(0);
            end_ = 0;
        }
        put(key, number);
    }

private:
    PlainFile file_;
    off_t end_ = 0;
    std::array<Data, sampleSize> bytes_;
};

/// The same with the file mapped into memory, which a process that is killed leaves to the kernel as well. The file has
/// its full length from the start: a page without room on the disk would end the process when it is written to.
class MappedStore : public PlainStore {
public:
    explicit MappedStore(const path& folder) : file_(folder / "floor.mapped", O_RDWR | O_CREAT | O_TRUNC) {
        if (const int error = posix_fallocate(file_.descriptor(), 0, limit); error != 0)
            throw std::system_error(error, std::generic_category(), "room for a file of a benchmark");
        void* memory = mmap(nullptr, limit, PROT_READ | PROT_WRITE, MAP_SHARED, file_.descriptor(), 0);
        check(memory != MAP_FAILED);
        memory_ = static_cast<std::byte*>(memory);
        for (std::size_t i = 0; i < sampleSize; ++i) bytes_.at(i) = journalEntry(i);
    }
    MappedStore(const MappedStore&) = delete;
    MappedStore& operator=(const MappedStore&) = delete;
    ~MappedStore() { munmap(memory_, limit); }

    void set(std::size_t index, std::string_view key, std::int64_t number) {
        const std::lock_guard lock(mutex_);
        const auto& bytes = bytes_.at(index);
        if (end_ + bytes.size() > limit) end_ = 0;
        std::memcpy(memory_ + end_, bytes.data(), bytes.size());
        end_ += bytes.size();
        put(key, number);
    }

private:
    static constexpr std::size_t limit = 1'048'576;

    PlainFile file_;
    std::byte* memory_ = nullptr;
    std::size_t end_ = 0;
    std::array<Data, sampleSize> bytes_;
};

/// GLib's, with a lock, as it has none of its own.
class GKeyFileStore {
public:
    GKeyFileStore() : file_(g_key_file_new()) {}
    GKeyFileStore(const GKeyFileStore&) = delete;
    GKeyFileStore& operator=(const GKeyFileStore&) = delete;
    ~GKeyFileStore() { g_key_file_unref(file_); }

    void set(const std::string& key, std::int64_t number) {
        const std::lock_guard lock(mutex_);
        g_key_file_set_int64(file_, "settings", key.c_str(), number);
    }
    std::int64_t get(const std::string& key) const {
        const std::shared_lock lock(mutex_);
        return g_key_file_get_int64(file_, "settings", key.c_str(), nullptr);
    }

private:
    mutable std::shared_mutex mutex_;
    GKeyFile* file_;
};

/// Which of the two is measured.
struct Part {
    const char* group;
    bool isSetting;
    bool isReading;
};

constexpr std::array parts{Part{"set and read a number", true, true}, Part{"set a number", true, false},
                           Part{"read a number", false, true}};

/// Sets or reads a key after the other.
template <class Set, class Get>
void measure(benchmark::State& state, Part part, const Set& set, const Get& get) {
    for (std::size_t i = 0; i < sampleSize; ++i) set(i, firstNumber);
    std::size_t index = 0;
    std::int64_t number = firstNumber;
    for ([[maybe_unused]] auto _ : state) {
        index = index + 1 < sampleSize ? index + 1 : 0;
        if (part.isSetting) set(index, ++number);
        if (!part.isReading) continue;
        auto found = get(index);
        if (found < firstNumber) state.SkipWithError("a setting is lost");
        benchmark::DoNotOptimize(found);
    }
}

const auto keys = sampleKeys();

void measurePlain(benchmark::State& state, Part part) {
    PlainStore store;
    measure(
        state, part, [&](std::size_t i, std::int64_t number) { store.set(keys.at(i), number); },
        [&](std::size_t i) { return store.get(keys.at(i)); });
}

template <class Store>
void measureKept(benchmark::State& state, Part part, const path& folder) {
    Store store(folder);
    measure(
        state, part, [&](std::size_t i, std::int64_t number) { store.set(i, keys.at(i), number); },
        [&](std::size_t i) { return store.get(keys.at(i)); });
}

void measureOurs(benchmark::State& state, Part part) {
    UserDefaults store("org.example.memory");
    const auto set = [&](std::size_t i, std::int64_t number) { store.setObject(number, keys.at(i)); };
    measure(state, part, set, [&](std::size_t i) { return store.integerForKey(keys.at(i)); });
    // So that the next row is not told of what this one left.
    if (!store.synchronize()) state.SkipWithError("cannot save");
}

void measureQt(benchmark::State& state, Part part, const path& folder) {
    std::array<QString, sampleSize> names;
    for (std::size_t i = 0; i < sampleSize; ++i) names.at(i) = QString::fromStdString(keys.at(i));
    QSettings store(QString::fromStdString(folder / "memory.ini"), QSettings::IniFormat);
    measure(
        state, part,
        [&](std::size_t i, std::int64_t number) { store.setValue(names.at(i), qlonglong{number}); },
        [&](std::size_t i) { return store.value(names.at(i)).toLongLong(); });
}

void measureGLib(benchmark::State& state, Part part) {
    GKeyFileStore store;
    measure(
        state, part, [&](std::size_t i, std::int64_t number) { store.set(keys.at(i), number); },
        [&](std::size_t i) { return store.get(keys.at(i)); });
}

} // namespace

// Ours saves on a thread of its own, which counts.
void addDefaultsMemoryRows(const path& folder) {
    for (const auto part : parts) {
        const auto add = [&](const char* name, auto measure) {
            addThreadedRow(part.group, name, [=](benchmark::State& state) { measure(state, part); });
        };
        add("floor: unordered_map and shared_mutex", measurePlain);
        if (part.isSetting) {
            add("floor: the same and pwrite of our bytes", [=](benchmark::State& state, Part which) {
                measureKept<WrittenStore>(state, which, folder);
            });
            add("note: the same and our bytes into a mapped file",
                [=](benchmark::State& state, Part which) { measureKept<MappedStore>(state, which, folder); });
        }
        add("ours: UserDefaults", measureOurs);
        add("peer: QSettings", [=](benchmark::State& state, Part which) { measureQt(state, which, folder); });
        add("peer: GKeyFile and shared_mutex", measureGLib);
    }
}

} // namespace vorlan::benchmarks
