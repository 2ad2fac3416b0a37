// SPDX-License-Identifier: Apache-2.0
#pragma once

// The user's settings: entries by key that outlive the process.
//
//     auto& defaults = UserDefaults::standard();
//     defaults.registerDefaults({{"volume", 0.5}});
//     defaults["volume"] = 0.8;
//     std::optional<double> volume = defaults["volume"];
//     defaults[Setting::theme] = Theme::dark;     // key and value both by raw value
//     defaults["volume"] = std::nullopt;          // removed: 0.5 again
//     defaults[{.codable = "profile"}] = profile; // any type that JSON can express, as JSON

#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/FileURL.h>
#include <VorlanFoundation/Platform/FunctionRef.h>
#include <VorlanFoundation/Platform/JSONResult.h>
#include <VorlanFoundation/Platform/KeyValueObserving.h>
#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/Subscript.h>
#include <VorlanFoundation/Platform/Value.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vorlan {

class DefaultsDomain;
class UserDefaults;

namespace detail {

/// An entry of the store, read and written as a native value.
struct DefaultsEntry {
    template <class T>
    std::optional<T> read() const;
    template <class T>
        requires std::convertible_to<T&&, Value>
    void write(T&& value) const;
    void remove() const;

    UserDefaults& store;
    std::string_view key;
};

/// An entry of the store, read and written as JSON.
struct CodedDefaultsEntry {
    template <Decodable T>
    std::optional<T> read() const;
    template <class T>
        requires Encodable<std::remove_cvref_t<T>> && (!isOptional<std::remove_cvref_t<T>>)
    void write(T&& value) const;
    void remove() const;

    UserDefaults& store;
    std::string_view key;
};

} // namespace detail

/// The key of an entry that holds its value as JSON: `defaults[{.codable = "profile"}]`.
struct CodableKey {
    std::string_view codable;
};

/// A store of entries, each a value under a key; in a file of the user's, shared by all processes that open it.
///
/// The standard store is the application's, named by its bundle identifier, or by its executable where it has
/// none; other stores ("suites") are opened by name. The file is `$XDG_CONFIG_HOME/<name>/defaults.plist`, a
/// binary property list; beside it are `defaults.lock` and, while processes write, a journal of each.
///
/// What a write sets is there for every later read of this process at once. It is in the file, and seen by other
/// processes, a moment later; a process that ends or is killed before that loses nothing that a call had returned
/// from, since each write also goes to a journal beside the file, which the next process to open the store takes
/// over. Of two processes that write one key, the later one to save wins; entries under other keys are untouched.
///
/// Values are what property lists can hold: text, integers and numbers, Booleans, dates, data, and arrays and
/// dictionaries of these.
///
/// Threads:     safe from any thread, and from any number of processes. Not in a child that was forked without
///              exec.
/// Owns:        copies are handles of one store; what was read from the file is kept until the process ends.
/// Re-entrancy: handlers of changes may call anything, on this store too.
/// Time:        a change is saved, and made durable, some 50 ms after it; other processes hear of it by a
///              notification of the kernel, within a second.
/// Errors:      a value that no property list can hold (a null in an array, text that is not well-formed UTF-8)
///              throws std::invalid_argument, and nothing is changed. A file that is damaged is renamed to
///              `defaults.plist.damaged-<number>`, and reported (`setProblemHandler`); the store is then empty,
///              so that registered defaults count. One that may not be read is left alone, and reported. What
///              cannot be saved is reported, kept in memory, and tried again with the next write.
class VORLAN_EXPORT UserDefaults {
public:
    /// The application's own store.
    static UserDefaults& standard();

    /// The names of all stores of the user that have a file, in alphabetical order.
    static std::vector<std::string> suiteNames();

    /// Opens the store of a name, best in reverse-DNS form.
    ///
    /// Throws std::invalid_argument when `suiteName` is no name of a folder: empty, beginning with a dot, or with
    /// a slash or a NUL in it, or longer than 255 bytes.
    explicit UserDefaults(std::string_view suiteName);

    /// Its name.
    const std::string& name() const noexcept;

    /// The file that it is in, whether or not that is there yet.
    FileURL fileURL() const;

    /// The value under a key: of the store, else as registered; absent when there is neither.
    std::optional<Value> objectForKey(std::string_view key) const { return valueForKey<Value>(key); }

    /// The same as a T, as `Value::as` converts; absent also when it is of another type.
    template <class T>
    std::optional<T> valueForKey(std::string_view key) const;

    /// The Boolean under a key. A number is true unless it is zero; a text is true when, after blanks, signs and
    /// zeros, it begins with Y, y, T, t or a digit from 1 to 9. False for all else.
    bool boolForKey(std::string_view key) const;

    /// The integer under a key: a number without its fraction, a Boolean as 0 or 1, a text by the decimal digits
    /// that it begins with; nearest to the value where it has no such integer. 0 for all else.
    std::int64_t integerForKey(std::string_view key) const;

    /// The number under a key; texts and Booleans as in `integerForKey`, with fraction and exponent. 0 for all
    /// else.
    double doubleForKey(std::string_view key) const;
    float floatForKey(std::string_view key) const { return static_cast<float>(doubleForKey(key)); }

    /// The text under a key; a number as its digits, a Boolean as "1" or "0".
    std::optional<std::string> stringForKey(std::string_view key) const;

    /// What is under a key, absent when it is of another type.
    std::optional<Data> dataForKey(std::string_view key) const { return valueForKey<Data>(key); }
    std::optional<Date> dateForKey(std::string_view key) const { return valueForKey<Date>(key); }
    std::optional<Value::Array> arrayForKey(std::string_view key) const {
        return valueForKey<Value::Array>(key);
    }
    std::optional<std::vector<std::string>> stringArrayForKey(std::string_view key) const {
        return valueForKey<std::vector<std::string>>(key);
    }
    std::optional<Value::Dictionary> dictionaryForKey(std::string_view key) const {
        return valueForKey<Value::Dictionary>(key);
    }

    /// Sets the value under a key; null removes it, as no object does.
    void setObject(Value value, std::string_view forKey);

    /// Removes the store's value under a key, if there is one; a registered one counts from then on.
    void removeObjectForKey(std::string_view key);

    /// The entry under a key, to be read as an optional and assigned to.
    Subscript<detail::DefaultsEntry> operator[](std::string_view key) {
        return Subscript(detail::DefaultsEntry{*this, key});
    }

    /// The same, with a key that stands for its text.
    template <TextRepresentable Key>
    Subscript<detail::DefaultsEntry> operator[](Key key) {
        return (*this)[rawValue(key)];
    }

    /// The value that is under a key as JSON, read by a default decoder; absent when there is no data, or other data.
    template <Decodable T>
    std::optional<T> obtain(std::string_view forKey) const;

    /// Sets the value under a key as JSON, written by a default encoder. A value that cannot be encoded leaves the entry
    /// as it is.
    template <Encodable T>
    void store(const T& encodable, std::string_view forKey);

    /// The entry under a key as JSON: read as `obtain` does, assigned to as `store` does.
    Subscript<detail::CodedDefaultsEntry> operator[](CodableKey key) {
        return Subscript(detail::CodedDefaultsEntry{*this, key.codable});
    }

    /// Has a value count where the store has none, for each key of `defaults`, in this process until it ends.
    /// What was registered before stays, unless it is registered anew.
    void registerDefaults(Value::Dictionary defaults);

    /// Everything: what the store has, and what is registered for keys that it does not have.
    Value::Dictionary dictionaryRepresentation() const;

    /// Only what the store has.
    Value::Dictionary storedEntries() const;

    /// Has `handler` called after every change of the value under a key, until the registration is dropped: by
    /// this process, on the thread that made it, before the call returns; by another process, on a queue of the
    /// library. A handler that is called may find that the value is the same again.
    [[nodiscard]] KeyValueObservation observe(std::string_view key, std::function<void()> handler) const;

    /// The same, with each call of `handler` submitted to `queue`.
    [[nodiscard]] KeyValueObservation observe(std::string_view key, const Queue& queue,
                                              std::function<void()> handler) const;

    /// Saves all that was set so far, durably, and reads what other processes saved. False, after a report, when
    /// it could not be saved. Waits for other processes that are saving.
    ///
    /// There is no need to call it, but before another process is told to look.
    bool synchronize() const;

private:
    bool read(std::string_view key, FunctionRef<void(const Value&)> use) const;

    std::shared_ptr<DefaultsDomain> domain_;
};

template <class T>
std::optional<T> UserDefaults::valueForKey(std::string_view key) const {
    std::optional<T> found;
    read(key, [&](const Value& value) { found = value.as<T>(); });
    return found;
}

template <class T>
std::optional<T> detail::DefaultsEntry::read() const {
    return store.valueForKey<T>(key);
}

template <class T>
    requires std::convertible_to<T&&, Value>
void detail::DefaultsEntry::write(T&& value) const {
    store.setObject(std::forward<T>(value), key);
}

inline void detail::DefaultsEntry::remove() const {
    store.removeObjectForKey(key);
}

template <Decodable T>
std::optional<T> UserDefaults::obtain(std::string_view forKey) const {
    const auto data = dataForKey(forKey);
    if (!data) return std::nullopt;
    auto result = detail::decodingResult<T>(*data, JSONDecoder());
    return result ? std::optional<T>(*std::move(result)) : std::nullopt;
}

template <Encodable T>
void UserDefaults::store(const T& encodable, std::string_view forKey) {
    auto result = detail::encodingResult(encodable, JSONEncoder());
    if (result) setObject(*std::move(result), forKey);
}

namespace detail {

template <Decodable T>
std::optional<T> CodedDefaultsEntry::read() const {
    return store.obtain<T>(key);
}

template <class T>
    requires Encodable<std::remove_cvref_t<T>> && (!isOptional<std::remove_cvref_t<T>>)
void CodedDefaultsEntry::write(T&& value) const {
    store.store(value, key);
}

inline void CodedDefaultsEntry::remove() const {
    store.removeObjectForKey(key);
}

} // namespace detail

} // namespace vorlan
