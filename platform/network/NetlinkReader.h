// SPDX-License-Identifier: Apache-2.0
#pragma once

// Walks the messages of a netlink datagram, and the attributes of a message, without ever leaving the bytes.
//
//     MessageReader messages(datagram);
//     while (auto message = messages.next()) {
//         AttributeReader attributes(message->payload.subspan(headerSize));
//         while (auto attribute = attributes.next()) use(*attribute);
//     }
//
// All lengths are kept as std::size_t: a 32-bit length above 0x7fffffff read as a signed number looks small,
// passes a check against the bytes that are left, and sends the walk out of the buffer.

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>

namespace vorlan::network {

/// Bytes that somebody else keeps.
using ByteView = std::span<const std::byte>;

/// What can be read by copying its bytes.
template <class Record>
concept PlainRecord = std::is_trivially_copyable_v<Record>;

/// The record of type `Record` at the start of `bytes`, whatever its alignment; nothing when it does not fit.
template <PlainRecord Record>
std::optional<Record> readRecord(ByteView bytes) noexcept {
    if (bytes.size() < sizeof(Record)) return std::nullopt;
    Record record;
    std::memcpy(&record, bytes.data(), sizeof(Record));
    return record;
}

/// The number that fills `bytes` exactly; nothing when the sizes differ.
template <std::integral Number>
std::optional<Number> readNumber(ByteView bytes) noexcept {
    return bytes.size() == sizeof(Number) ? readRecord<Number>(bytes) : std::nullopt;
}

/// The text up to the first NUL byte, or up to the end.
std::string_view readText(ByteView bytes) noexcept;

/// One message of a datagram.
struct NetlinkMessage {
    std::uint16_t type = 0;
    std::uint16_t flags = 0;
    std::uint32_t sequence = 0;
    std::uint32_t port = 0;
    ByteView payload;
};

/// Walks the messages of one datagram.
///
/// Threads: one thread at a time.
/// Owns:    nothing; the datagram must outlive the reader and the messages.
/// Errors:  stops at the first message that is not whole; `isDamaged()` tells that from the end.
class MessageReader {
public:
    /// Starts at the first message.
    explicit MessageReader(ByteView datagram) noexcept : rest_(datagram) {}

    /// The next message, or nothing at the end.
    std::optional<NetlinkMessage> next() noexcept;

    /// Whether the walk ended at bytes that are no message.
    bool isDamaged() const noexcept { return damaged_; }

private:
    ByteView rest_;
    bool damaged_ = false;
};

/// One attribute of a message or of a nest; the flag bits of its type are taken away.
struct NetlinkAttribute {
    std::uint16_t type = 0;
    ByteView value;
};

/// Walks the attributes of a message, or those nested in an attribute.
///
/// Threads: one thread at a time.
/// Owns:    nothing; the bytes must outlive the reader and the attributes.
/// Errors:  stops at the first attribute that is not whole.
class AttributeReader {
public:
    /// Starts at the first attribute.
    explicit AttributeReader(ByteView bytes) noexcept : rest_(bytes) {}

    /// The next attribute, or nothing at the end.
    std::optional<NetlinkAttribute> next() noexcept;

private:
    ByteView rest_;
};

} // namespace vorlan::network
