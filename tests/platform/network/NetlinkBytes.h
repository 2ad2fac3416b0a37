// SPDX-License-Identifier: Apache-2.0
#pragma once

// Builds netlink messages, whole or broken, byte by byte.

#include <linux/netlink.h>
#include <linux/rtnetlink.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace vorlan::network::fake {

using Bytes = std::vector<std::byte>;

template <class Record>
Bytes bytesOf(const Record& record) {
    Bytes bytes(sizeof(Record));
    std::memcpy(bytes.data(), &record, sizeof(Record));
    return bytes;
}

inline Bytes bytesOf(const std::string& text) {
    Bytes bytes(text.size());
    std::memcpy(bytes.data(), text.data(), text.size());
    return bytes;
}

inline Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

inline Bytes padded(Bytes bytes) {
    bytes.resize((bytes.size() + 3) & ~std::size_t{3});
    return bytes;
}

inline Bytes attributeWithLength(std::uint16_t length, std::uint16_t type, const Bytes& value) {
    return padded(bytesOf(nlattr{length, type}) + value);
}

inline Bytes attribute(std::uint16_t type, const Bytes& value) {
    return attributeWithLength(static_cast<std::uint16_t>(sizeof(nlattr) + value.size()), type, value);
}

inline Bytes messageWithLength(std::uint32_t length, std::uint16_t type, const Bytes& payload) {
    return padded(bytesOf(nlmsghdr{length, type, 0, 7, 9}) + payload);
}

inline Bytes message(std::uint16_t type, const Bytes& payload) {
    return messageWithLength(static_cast<std::uint32_t>(sizeof(nlmsghdr) + payload.size()), type, payload);
}

} // namespace vorlan::network::fake
