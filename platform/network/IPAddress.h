// SPDX-License-Identifier: Apache-2.0
#pragma once

// An IPv4 or IPv6 address as a plain value.

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vorlan::network {

/// An address of one of the two families; the last twelve bytes of an IPv4 address are zero.
///
/// Threads: safe from any thread (a plain value).
class IPAddress {
public:
    /// Which of the two protocols an address belongs to.
    enum class Family : std::uint8_t { v4, v6 };

    /// The address in those bytes, in network order; nothing unless there are 4 or 16 as the family wants.
    static std::optional<IPAddress> fromBytes(Family family, std::span<const std::byte> bytes);

    /// The address of a dotted or colon-separated text; nothing when it is neither.
    static std::optional<IPAddress> fromText(std::string_view text);

    /// Which protocol it belongs to.
    Family family() const noexcept { return family_; }
    /// The 4 or 16 bytes, in network order.
    std::span<const std::byte> bytes() const noexcept { return std::span(bytes_).first(size()); }
    /// The number of bits: 32 or 128.
    unsigned bitCount() const noexcept { return static_cast<unsigned>(size() * 8); }

    /// 0.0.0.0 or ::.
    bool isUnspecified() const noexcept;
    /// 127.0.0.0/8 or ::1.
    bool isLoopback() const noexcept;
    /// 169.254.0.0/16 or fe80::/10.
    bool isLinkLocal() const noexcept;
    /// 224.0.0.0/4 or ff00::/8.
    bool isMulticast() const noexcept;
    /// Whether the first `length` bits are those of `network`, which is of the same family.
    bool isInside(const IPAddress& network, unsigned length) const noexcept;

    /// The usual text of the address.
    std::string text() const;

    /// Equal when family and bytes are.
    friend auto operator<=>(const IPAddress&, const IPAddress&) = default;

private:
    IPAddress(Family family, std::span<const std::byte> bytes) noexcept;
    std::size_t size() const noexcept { return family_ == Family::v4 ? 4 : 16; }
    unsigned octet(std::size_t position) const noexcept {
        return std::to_integer<unsigned>(bytes_[position]);
    }

    Family family_;
    std::array<std::byte, 16> bytes_{};
};

} // namespace vorlan::network
