// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Keychain/KeychainManageable.h>

namespace vorlan {

std::optional<Data> KeychainManageable::readData(std::string_view key) {
    return data(key);
}

void KeychainManageable::writeData(std::string_view key, const Data& value) {
    insert(key, value);
}

std::optional<bool> KeychainManageable::readBool(std::string_view key) {
    return bool_(key);
}

// One byte, as bool_() reads it: what one version of a host stores, the next reads.
void KeychainManageable::writeBool(std::string_view key, bool value) {
    insert(key, Data{value ? std::byte{1} : std::byte{0}});
}

std::optional<std::string> KeychainManageable::readString(std::string_view key) {
    return string(key);
}

void KeychainManageable::writeString(std::string_view key, std::optional<std::string_view> text) {
    if (text) {
        insert(key, dataFromText(*text));
    } else {
        remove(key);
    }
}

} // namespace vorlan
