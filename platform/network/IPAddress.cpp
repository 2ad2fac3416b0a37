// SPDX-License-Identifier: Apache-2.0
#include "platform/network/IPAddress.h"

#include <arpa/inet.h>

#include <algorithm>

namespace vorlan::network {

IPAddress::IPAddress(Family family, std::span<const std::byte> bytes) noexcept : family_(family) {
    std::ranges::copy(bytes, bytes_.begin());
}

std::optional<IPAddress> IPAddress::fromBytes(Family family, std::span<const std::byte> bytes) {
    if (bytes.size() != (family == Family::v4 ? 4U : 16U)) return std::nullopt;
    return IPAddress(family, bytes);
}

std::optional<IPAddress> IPAddress::fromText(std::string_view text) {
    if (text.find('\0') != std::string_view::npos) return std::nullopt;
    const std::string terminated(text);
    std::array<std::byte, 16> bytes{};
    if (inet_pton(AF_INET, terminated.c_str(), bytes.data()) == 1)
        return IPAddress(Family::v4, std::span(bytes).first(4));
    if (inet_pton(AF_INET6, terminated.c_str(), bytes.data()) == 1) return IPAddress(Family::v6, bytes);
    return std::nullopt;
}

bool IPAddress::isUnspecified() const noexcept {
    return std::ranges::all_of(bytes_, [](std::byte b) { return b == std::byte{0}; });
}

bool IPAddress::isLoopback() const noexcept {
    if (family_ == Family::v4) return octet(0) == 127;
    const auto leading = std::span(bytes_).first(15);
    return octet(15) == 1 && std::ranges::all_of(leading, [](std::byte b) { return b == std::byte{0}; });
}

bool IPAddress::isLinkLocal() const noexcept {
    if (family_ == Family::v4) return octet(0) == 169 && octet(1) == 254;
    return octet(0) == 0xfe && (octet(1) & 0xc0U) == 0x80;
}

bool IPAddress::isMulticast() const noexcept {
    return family_ == Family::v4 ? (octet(0) & 0xf0U) == 0xe0 : octet(0) == 0xff;
}

bool IPAddress::isInside(const IPAddress& network, unsigned length) const noexcept {
    if (family_ != network.family_ || length > bitCount()) return false;
    const std::size_t whole = length / 8;
    if (!std::equal(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(whole),
                    network.bytes_.begin()))
        return false;
    const unsigned rest = length % 8;
    return rest == 0 || (octet(whole) >> (8 - rest)) == (network.octet(whole) >> (8 - rest));
}

std::string IPAddress::text() const {
    std::array<char, INET6_ADDRSTRLEN> buffer{};
    const int family = family_ == Family::v4 ? AF_INET : AF_INET6;
    const char* text = inet_ntop(family, bytes_.data(), buffer.data(), buffer.size());
    return text == nullptr ? std::string() : std::string(text);
}

} // namespace vorlan::network
