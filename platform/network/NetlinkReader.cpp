// SPDX-License-Identifier: Apache-2.0
#include "platform/network/NetlinkReader.h"

#include <linux/netlink.h>
#include <sys/socket.h>

#include <algorithm>

namespace vorlan::network {

namespace {

// Messages and attributes both begin at multiples of four bytes; the last one may lack its padding.
ByteView after(ByteView bytes, std::size_t length) noexcept {
    const std::size_t padded = (length + 3) & ~std::size_t{3};
    return bytes.subspan(std::min(padded, bytes.size()));
}

} // namespace

std::string_view readText(ByteView bytes) noexcept {
    const auto end = std::ranges::find(bytes, std::byte{0});
    const auto length = static_cast<std::size_t>(end - bytes.begin());
    return {reinterpret_cast<const char*>(bytes.data()), length};
}

std::optional<NetlinkMessage> MessageReader::next() noexcept {
    if (rest_.empty()) return std::nullopt;
    const auto header = readRecord<nlmsghdr>(rest_);
    const std::size_t length = header ? header->nlmsg_len : 0;
    if (length < sizeof(nlmsghdr) || length > rest_.size()) {
        damaged_ = true;
        rest_ = {};
        return std::nullopt;
    }
    const ByteView payload = rest_.subspan(sizeof(nlmsghdr), length - sizeof(nlmsghdr));
    rest_ = after(rest_, length);
    return NetlinkMessage{header->nlmsg_type, header->nlmsg_flags, header->nlmsg_seq, header->nlmsg_pid,
                          payload};
}

std::optional<NetlinkAttribute> AttributeReader::next() noexcept {
    const auto header = readRecord<nlattr>(rest_);
    const std::size_t length = header ? header->nla_len : 0;
    // A length below the header's, zero included, would keep the walk where it is for ever.
    if (length < sizeof(nlattr) || length > rest_.size()) {
        rest_ = {};
        return std::nullopt;
    }
    const ByteView value = rest_.subspan(sizeof(nlattr), length - sizeof(nlattr));
    rest_ = after(rest_, length);
    return NetlinkAttribute{static_cast<std::uint16_t>(header->nla_type & NLA_TYPE_MASK), value};
}

} // namespace vorlan::network
