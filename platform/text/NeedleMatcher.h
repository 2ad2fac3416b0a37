// SPDX-License-Identifier: Apache-2.0
#pragma once

// Finding a sequence in another that comes piece by piece.

#include <cstddef>
#include <utility>
#include <vector>

namespace vorlan {

/// Says after each unit whether the needle ends with it, in time that grows with the number of units alone (Knuth,
/// Morris and Pratt's way), whatever they are.
///
/// Threads: one thread at a time.
/// Owns:    the needle.
template <class Unit>
class NeedleMatcher {
public:
    /// @param needle Is not empty.
    explicit NeedleMatcher(std::vector<Unit> needle)
        : needle_(std::move(needle)), fallback_(needle_.size(), 0) {
        for (std::size_t at = 1, matched = 0; at < needle_.size(); ++at) {
            matched = next(matched, needle_[at]);
            fallback_[at] = matched;
        }
    }

    bool feed(Unit unit) {
        matched_ = next(matched_, unit);
        return matched_ == needle_.size();
    }

private:
    // How much of the needle is at the end of what was fed, when so much was and this unit comes.
    std::size_t next(std::size_t matched, Unit unit) const {
        if (matched == needle_.size()) matched = fallback_[matched - 1];
        while (matched > 0 && needle_[matched] != unit) matched = fallback_[matched - 1];
        return needle_[matched] == unit ? matched + 1 : matched;
    }

    std::vector<Unit> needle_;
    std::vector<std::size_t>
        fallback_; // for each unit: the longest proper start of the needle that ends with it
    std::size_t matched_ = 0;
};

} // namespace vorlan
