// SPDX-License-Identifier: Apache-2.0
#pragma once

// An open file, closed at the end.

#include <unistd.h>

#include <utility>

namespace vorlan {

/// A file descriptor of our own, or none.
///
/// Threads: one thread at a time.
/// Owns:    the descriptor.
class Descriptor {
public:
    Descriptor() noexcept = default;
    explicit Descriptor(int number) noexcept : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    // Linux closes whatever close() answers, and nothing that was written waits for it.
    ~Descriptor() {
        if (number_ >= 0) close(number_);
    }

    /// Whether there is one: false when it was made from the -1 of a failed call.
    explicit operator bool() const noexcept { return number_ >= 0; }

    int number() const noexcept { return number_; }

    /// Gives the descriptor away.
    int release() noexcept { return std::exchange(number_, -1); }

private:
    int number_ = -1;
};

} // namespace vorlan
