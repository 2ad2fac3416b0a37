// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a keychain by key offers; for hosts that bring one of their own, in tests for example.

#include <VorlanFoundation/Keychain/SecurityClass.h>
#include <VorlanFoundation/Keychain/SensitiveStringStorage.h>
#include <VorlanFoundation/Platform/Data.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Subscript.h>

#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace vorlan {

class KeychainManageable;

namespace detail {

/// An item of a keychain, as bytes, a text or a Boolean.
struct KeychainEntry {
    template <class T>
        requires std::same_as<T, Data> || std::same_as<T, std::string> || std::same_as<T, bool>
    std::optional<T> read() const;
    void write(const Data& value) const;
    void write(std::string_view text) const;
    void write(const std::string& text) const { write(std::string_view(text)); }
    void write(const char* text) const { write(std::string_view(text)); }
    void write(std::same_as<bool> auto value) const;
    void remove() const;

    KeychainManageable& keychain;
    std::string_view key;
};

} // namespace detail

/// A store of bytes by key, whose keys are texts.
///
/// The subscripts are written once, here, in terms of the other operations; an implementer may replace them.
///
/// Threads: as the implementer's.
/// Errors:  by result: false or absent.
class VORLAN_EXPORT KeychainManageable : public SensitiveStringStorage {
public:
    /// A text that is to be kept under a name, and found by reference.
    struct NamedString {
        std::string_view containing;
        std::string_view called;
        std::optional<Data> previouslyReferencedBy =
            std::nullopt; ///< To be deleted once the new one is there.
    };
    /// Keys that are to stay.
    struct Keeping {
        std::vector<std::string> except;
    };

    /// Adds a text, and returns the reference that it can be read, checked and deleted by; absent when it was not added.
    virtual std::optional<Data> insertReference(const NamedString& string) = 0;
    /// Sets the value of a key; without one, the key has an item that holds nothing. Whether that is stored.
    virtual bool insert(std::string_view forKey, const std::optional<Data>& with) = 0;
    /// The text that a reference stands for; absent when there is none, or it is not UTF-8.
    virtual std::optional<std::string> string(const Data& from) = 0;
    /// The reference of a key's item.
    virtual std::optional<Data> dataRef(std::string_view forKey) = 0;
    /// The value of a key.
    virtual std::optional<Data> data(std::string_view forKey) = 0;
    /// The same as a text; absent when it is not UTF-8.
    virtual std::optional<std::string> string(std::string_view forKey) = 0;
    /// The same as a Boolean: whether its first byte is 1; absent when it is empty.
    virtual std::optional<bool> bool_(std::string_view forKey) = 0;
    /// Changes the value of a key. Whether that is stored.
    virtual bool update(std::string_view forKey, const std::optional<Data>& with) = 0;
    /// Removes a key. Whether it is gone, or was not there.
    virtual bool remove(std::string_view forKey) = 0;
    /// Removes all items of a class. Whether they are gone.
    virtual bool removeAllKeys(SecurityClass securityClass) = 0;
    /// Removes all keys. Whether they are gone.
    virtual bool removeAllKeys() = 0;
    /// Removes all keys but some: `removeAllKeys({.except = {"account"}})`.
    virtual void removeAllKeys(const Keeping& keeping) = 0;
    /// Removes all items of all classes.
    virtual void wipe() = 0;
    /// Whether there is an item of that reference, as far as can be told.
    virtual bool verifyReference(const Data& called) = 0;
    /// Deletes the item of a reference.
    virtual void removeReference(const Data& called) = 0;

    /// The value under a key, to be read as std::optional of Data, std::string or bool, and assigned one of these
    /// or std::nullopt, which removes the key. A Boolean is kept as one byte, 1 or 0.
    auto operator[](std::string_view key) { return Subscript(detail::KeychainEntry{*this, key}); }

protected:
    /// What the subscripts read, and do when assigned to.
    virtual std::optional<Data> readData(std::string_view key);
    virtual void writeData(std::string_view key, const Data& value);
    virtual std::optional<bool> readBool(std::string_view key);
    virtual void writeBool(std::string_view key, bool value);
    std::optional<std::string> readString(std::string_view key) override;
    void writeString(std::string_view key, std::optional<std::string_view> text) override;

    friend struct detail::KeychainEntry;
};

template <class T>
    requires std::same_as<T, Data> || std::same_as<T, std::string> || std::same_as<T, bool>
std::optional<T> detail::KeychainEntry::read() const {
    if constexpr (std::same_as<T, Data>) {
        return keychain.readData(key);
    } else if constexpr (std::same_as<T, bool>) {
        return keychain.readBool(key);
    } else {
        return keychain.readString(key);
    }
}

inline void detail::KeychainEntry::write(const Data& value) const {
    keychain.writeData(key, value);
}

inline void detail::KeychainEntry::write(std::string_view text) const {
    keychain.writeString(key, text);
}

void detail::KeychainEntry::write(std::same_as<bool> auto value) const {
    keychain.writeBool(key, value);
}

inline void detail::KeychainEntry::remove() const {
    keychain.remove(key);
}

} // namespace vorlan
