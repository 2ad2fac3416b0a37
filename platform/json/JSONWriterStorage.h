// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a writer needs room for, and how one writer leaves it to the next.

#include "platform/json/JSONWriterBuffer.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace vorlan {

/// An array or object that is being written.
struct JSONWriterFrame {
    bool isObject = false;
    std::size_t count = 0;  ///< Of the elements or members that have begun.
    std::size_t nameAt = 0; ///< Where, in the text, the name of the last member begins, behind its quote.
    std::size_t firstMember = 0; ///< Of those in `JSONWriterStorage::memberStarts`.
};

/// Where, in the text, a member stands, from its name's quote.
struct JSONWriterMember {
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// Threads: one thread at a time.
struct JSONWriterStorage {
    JSONWriterBuffer text;
    std::vector<JSONWriterFrame> frames; ///< All but the innermost.
    // Only where members are sorted:
    std::vector<std::size_t> memberStarts; ///< Of all objects that are being written.
    std::vector<JSONWriterMember> members;
    JSONWriterBuffer sorted;

    /// One that this thread has left over, or a new one. Empty.
    static std::unique_ptr<JSONWriterStorage> take();

    /// Leaves it to the thread's next writer, unless it has become large or there is one already.
    static void leave(std::unique_ptr<JSONWriterStorage> storage) noexcept;
};

} // namespace vorlan
