// SPDX-License-Identifier: Apache-2.0
#pragma once

// The bytes of a JSON text that is being written.

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

namespace vorlan {

/// Grows at its end. Unlike a std::string it lets its user write first and say afterwards how much that was, and never
/// fills with zeros what is overwritten anyway.
///
/// Threads: one thread at a time.
class JSONWriterBuffer {
public:
    char* data() noexcept { return bytes_.get(); }
    const char* data() const noexcept { return bytes_.get(); }
    std::size_t size() const noexcept { return size_; }
    std::size_t capacity() const noexcept { return capacity_; }
    std::string_view text() const noexcept { return {data(), size_}; }

    /// Its end, behind which there is room for so many bytes; valid until the next that grows it.
    char* room(std::size_t bytes) {
        if (bytes > capacity_ - size_) [[unlikely]]
            grow(bytes);
        return data() + size_;
    }

    /// Everything before `end` has been written.
    void setEnd(const char* end) noexcept { size_ = static_cast<std::size_t>(end - data()); }

    void append(char character) {
        *room(1) = character;
        ++size_;
    }
    void append(std::string_view text) {
        std::memcpy(room(text.size()), text.data(), text.size());
        size_ += text.size();
    }
    void append(std::size_t count, char character) {
        std::memset(room(count), character, count);
        size_ += count;
    }

    /// Keeps its room.
    void clear() noexcept { size_ = 0; }

private:
    struct Free {
        void operator()(char* bytes) const noexcept { std::free(bytes); }
    };

    void grow(std::size_t bytes);

    std::unique_ptr<char, Free> bytes_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace vorlan
