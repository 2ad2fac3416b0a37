// SPDX-License-Identifier: Apache-2.0
// The walk over any datagram ends, and never leaves its bytes.

#include "fuzz/Fuzzing.h"
#include "platform/network/NetlinkReader.h"

#include <cstdint>
#include <span>

using namespace vorlan::network;

namespace {

bool isWithin(ByteView part, ByteView whole) {
    return part.empty() || (part.data() >= whole.data() && part.size() <= whole.size() &&
                            part.data() + part.size() <= whole.data() + whole.size());
}

// Each attribute takes four bytes at least, so that there is an upper bound to their number, and each level of
// nests four bytes more.
void walk(ByteView bytes) {
    AttributeReader attributes(bytes);
    std::size_t count = 0;
    while (const auto attribute = attributes.next()) {
        fuzzing::require(++count <= bytes.size() / 4, "every step goes on");
        fuzzing::require(isWithin(attribute->value, bytes), "an attribute is within its message");
        fuzzing::require(readText(attribute->value).size() <= attribute->value.size(),
                         "a text is within its attribute");
        (void)readNumber<std::uint32_t>(attribute->value);
        walk(attribute->value);
    }
    fuzzing::require(!attributes.next().has_value(), "the end stays the end");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t largestDatagram = 4096; // nests within nests of one make many more of it
    const auto datagram = std::as_bytes(std::span(data, size < largestDatagram ? size : largestDatagram));
    MessageReader messages(datagram);
    std::size_t count = 0;
    while (const auto message = messages.next()) {
        fuzzing::require(++count <= datagram.size() / 16, "every step goes on");
        fuzzing::require(isWithin(message->payload, datagram), "a message is within its datagram");
        walk(message->payload);
        // What comes after the kernel's own headers of interfaces, addresses and routes.
        for (const std::size_t header : {8, 12, 16})
            if (message->payload.size() >= header) walk(message->payload.subspan(header));
    }
    fuzzing::require(!messages.next().has_value(), "the end stays the end");
    return 0;
}
