// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONWriterBuffer.h"

#include <algorithm>
#include <limits>
#include <new>

namespace vorlan {

void JSONWriterBuffer::grow(std::size_t bytes) {
    constexpr std::size_t least = 1024;
    constexpr auto most = std::numeric_limits<std::size_t>::max() / 2;
    if (bytes > most - size_) throw std::bad_alloc();
    const auto capacity = std::max({least, capacity_ * 2, size_ + bytes});
    // realloc moves large blocks by their pages, without a copy.
    auto* moved = static_cast<char*>(std::realloc(bytes_.get(), capacity));
    if (moved == nullptr) throw std::bad_alloc();
    static_cast<void>(bytes_.release());
    bytes_.reset(moved);
    capacity_ = capacity;
}

} // namespace vorlan
