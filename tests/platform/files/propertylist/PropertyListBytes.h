// SPDX-License-Identifier: Apache-2.0
#pragma once

// Puts binary property lists together byte by byte, as other writers make them, whole or broken.

#include "platform/files/PropertyList.h"

#include <VorlanFoundation/Platform/Data.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan::tests {

inline Data raw(std::initializer_list<unsigned> bytes) {
    Data data;
    for (const auto byte : bytes) data.push_back(static_cast<std::byte>(byte));
    return data;
}

inline Data operator+(Data a, const Data& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

/// A number of so many bytes, the most significant first.
inline Data bigEndian(std::uint64_t number, std::size_t size) {
    Data data(size);
    for (std::size_t i = size; i-- > 0; number >>= 8) data[i] = static_cast<std::byte>(number);
    return data;
}

/// A text of fewer than 15 ASCII characters.
inline Data ascii(std::string_view text) {
    return raw({0x50U | static_cast<unsigned>(text.size())}) + dataFromText(text);
}

/// What is in the trailer, where it is not as the objects are.
struct ForeignLayout {
    unsigned offsetSize = 1;
    unsigned referenceSize = 1;
    std::uint64_t root = 0;
    std::optional<std::uint64_t> count{};
    std::optional<std::uint64_t> tableOffset{};
    /// Instead of the objects' own.
    std::optional<std::vector<std::uint64_t>> offsets{};
};

/// A list of objects, of which the first is the root unless the layout says so.
inline Data foreignList(const std::vector<Data>& objects, const ForeignLayout& layout = {}) {
    Data list = dataFromText("bplist00");
    std::vector<std::uint64_t> offsets;
    for (const auto& object : objects) {
        offsets.push_back(list.size());
        list = std::move(list) + object;
    }
    const auto tableOffset = list.size();
    for (const auto offset : layout.offsets.value_or(offsets))
        list = std::move(list) + bigEndian(offset, layout.offsetSize);
    return std::move(list) + bigEndian(0, 6) + raw({layout.offsetSize, layout.referenceSize}) +
           bigEndian(layout.count.value_or(objects.size()), 8) + bigEndian(layout.root, 8) +
           bigEndian(layout.tableOffset.value_or(tableOffset), 8);
}

inline Value readForeign(const std::vector<Data>& objects, const ForeignLayout& layout = {}) {
    return readBinaryPropertyList(foreignList(objects, layout));
}

/// Why a list is refused; "it was read" when it is not.
inline std::string refusalOfList(const Data& list) {
    try {
        (void)readPropertyList(list);
        return "it was read";
    } catch (const PropertyListError& error) {
        return error.what();
    }
}

inline std::string refusalOf(const std::vector<Data>& objects, const ForeignLayout& layout = {}) {
    return refusalOfList(foreignList(objects, layout));
}

} // namespace vorlan::tests
