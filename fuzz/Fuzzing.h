// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the targets share.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

/// The engine's entry, which each target defines.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzzing {

/// Stops the process, so that the engine keeps the input, where something does not hold. Unlike `assert`, in every
/// build type.
inline void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "It does not hold that %s\n", what);
    std::abort();
}

/// An input, from which what is needed is taken bit by bit: bytes that choose, numbers, and lines of text. Where it is at
/// its end, all of these are zero or empty.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

    std::uint8_t byte() {
        if (rest_.empty()) return 0;
        const auto first = static_cast<std::uint8_t>(rest_.front());
        rest_.remove_prefix(1);
        return first;
    }

    /// Of so many bytes, the highest first.
    std::uint64_t number(int bytes = 8) {
        std::uint64_t number = 0;
        for (; bytes > 0; --bytes) number = number << 8 | byte();
        return number;
    }

    std::string line() {
        const auto end = rest_.find('\n');
        std::string result(rest_.substr(0, end));
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        return result;
    }

private:
    std::string_view rest_;
};

} // namespace fuzzing
