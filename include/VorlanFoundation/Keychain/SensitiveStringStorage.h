// SPDX-License-Identifier: Apache-2.0
#pragma once

// A place for secret texts, by key.

#include <VorlanFoundation/Platform/Subscript.h>

#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vorlan {

class SensitiveStringStorage;

namespace detail {

/// A text of the storage.
struct SensitiveString {
    template <std::same_as<std::string> T>
    std::optional<T> read() const;
    template <class T>
        requires std::constructible_from<std::string_view, T&&>
    void write(T&& text) const;
    void remove() const;

    SensitiveStringStorage& storage;
    std::string_view key;
};

} // namespace detail

/// Keeps secret texts by key: all that a host needs to know of a keychain that only keeps passwords in it.
///
///     void signIn(SensitiveStringStorage& secrets) {
///         std::optional<std::string> password = secrets["password"];
///
/// Threads: as the implementer's.
/// Errors:  a text that cannot be read is absent; one that cannot be kept is not told of.
class SensitiveStringStorage {
public:
    virtual ~SensitiveStringStorage() = default;

    /// The text under a key, to be read as std::optional<std::string> and assigned a text or std::nullopt.
    auto operator[](std::string_view key) { return Subscript(detail::SensitiveString{*this, key}); }

protected:
    SensitiveStringStorage() = default;
    SensitiveStringStorage(const SensitiveStringStorage&) = default;
    SensitiveStringStorage& operator=(const SensitiveStringStorage&) = default;

    /// What the subscript reads.
    virtual std::optional<std::string> readString(std::string_view key) = 0;
    /// What it does when assigned to; absent for removing.
    virtual void writeString(std::string_view key, std::optional<std::string_view> text) = 0;

    friend struct detail::SensitiveString;
};

template <std::same_as<std::string> T>
std::optional<T> detail::SensitiveString::read() const {
    return storage.readString(key);
}

template <class T>
    requires std::constructible_from<std::string_view, T&&>
void detail::SensitiveString::write(T&& text) const {
    storage.writeString(key, std::string_view(std::forward<T>(text)));
}

inline void detail::SensitiveString::remove() const {
    storage.writeString(key, std::nullopt);
}

} // namespace vorlan
