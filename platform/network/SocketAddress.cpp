// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/SocketAddress.h>

#include "platform/network/Destination.h"

namespace vorlan {

std::optional<SocketAddress> SocketAddress::fromText(std::string_view text, std::uint16_t port) {
    const auto address = network::IPAddress::fromText(text);
    if (!address) return std::nullopt;
    return network::Destination{*address}.socketAddress(port);
}

std::string SocketAddress::description() const {
    if (const auto destination = network::Destination::asWritten(*this)) return destination->text();
    return "a socket address of family " + std::to_string(family) + " and length " + std::to_string(length);
}

} // namespace vorlan
