// SPDX-License-Identifier: Apache-2.0
#pragma once

// Values at random: of every kind that JSON has, every letter, every integer of 64 bits, every finite number.

#include <VorlanFoundation/Platform/Value.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>

namespace vorlan::tests {

class JSONRandomValues {
public:
    explicit JSONRandomValues(std::uint64_t seed) : random_(seed) {}

    /// An array or a dictionary, or for the depth 0 what is neither, with at most so many within one another.
    Value document(int depth);

    /// Anything, with at most so many arrays and dictionaries within one another.
    Value value(int depth);

    /// An integer of any size; small ones are as frequent as large ones.
    Value integer();

    /// Any 64 bits that are a finite number.
    double number();
    float smallNumber();

    /// Up to so many letters: half of them ASCII, some of those to be escaped, the others of all of Unicode.
    std::string text(std::size_t maximum);

    /// A number below `bound`, which is not 0.
    std::uint64_t below(std::uint64_t bound) { return random_() % bound; }

private:
    Value array(int depth);
    Value dictionary(int depth);

    std::mt19937_64 random_;
};

/// Puts the UTF-8 form of a letter behind a text.
void appendLetter(std::string& text, char32_t letter);

} // namespace vorlan::tests
