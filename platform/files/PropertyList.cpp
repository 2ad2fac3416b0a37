// SPDX-License-Identifier: Apache-2.0
#include "platform/files/PropertyList.h"

#include "platform/files/BinaryPropertyList.h"

#include <plist/plist.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <string_view>

namespace vorlan {

namespace {

struct FreeList {
    void operator()(void* list) const { plist_free(list); }
};

struct FreeBytes {
    void operator()(char* bytes) const { plist_to_bin_free(bytes); }
};

bool startsWith(std::span<const std::byte> bytes, std::string_view start) {
    return bytes.size() >= start.size() &&
           std::ranges::equal(bytes.first(start.size()), std::as_bytes(std::span(start)));
}

// Through libplist's binary form into ours: its functions for single values give integers without their sign.
Value readXML(std::span<const std::byte> bytes) {
    if (bytes.size() > std::numeric_limits<std::uint32_t>::max()) throw PropertyListError("it is too large");
    plist_t parsed = nullptr; // libplist does nothing unless the pointers that it fills are null
    plist_from_xml(reinterpret_cast<const char*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()),
                   &parsed);
    const std::unique_ptr<void, FreeList> list(parsed);
    if (!list) throw PropertyListError("it is no property list in XML");
    char* binary = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(list.get(), &binary, &size);
    const std::unique_ptr<char, FreeBytes> owner(binary);
    if (!owner) throw PropertyListError("it is no property list in XML");
    return bplist::read(std::as_bytes(std::span(binary, size)), bytes.size());
}

} // namespace

Value readPropertyList(std::span<const std::byte> bytes) {
    if (startsWith(bytes, bplist::magic)) return readBinaryPropertyList(bytes);
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (startsWith(bytes, byteOrderMark)) bytes = bytes.subspan(byteOrderMark.size());
    constexpr std::string_view blanks = " \t\r\n";
    while (!bytes.empty() && blanks.find(static_cast<char>(bytes[0])) != std::string_view::npos)
        bytes = bytes.subspan(1);
    if (startsWith(bytes, "<")) return readXML(bytes);
    throw PropertyListError("it is no property list");
}

} // namespace vorlan
