// SPDX-License-Identifier: Apache-2.0
#pragma once

// Makes values of all kinds that a property list can hold.

#include "platform/values/UTF8.h"

#include <VorlanFoundation/Platform/Value.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <utility>

namespace vorlan::tests {

/// Random values, the same for the same seed. None is or holds a NaN, so that each equals itself.
class RandomValues {
public:
    explicit RandomValues(std::uint64_t seed) : random_(seed) {}

    Value next(int levels = 4) {
        switch (below(levels > 0 ? 9 : 7)) {
        case 0: return below(2) == 1;
        case 1: return integer<std::int64_t>();
        case 2: return integer<std::uint64_t>();
        case 3: return number();
        case 4: return text();
        case 5: return data();
        case 6: return Date(number());
        case 7: return array(levels - 1);
        default: return dictionary(levels - 1);
        }
    }

    std::uint64_t below(std::uint64_t bound) { return random_() % bound; }

private:
    // As many short ones as long ones.
    template <class Integer>
    Integer integer() {
        return static_cast<Integer>(static_cast<Integer>(random_()) >> below(64));
    }

    double number() {
        const auto any = std::bit_cast<double>(random_());
        return std::isnan(any) || below(2) == 0 ? static_cast<double>(integer<std::int64_t>()) / 8 : any;
    }

    std::size_t size() { return below(below(8) == 0 ? 300 : 20); }

    std::string text() {
        const char32_t bound = below(2) == 0 ? 0x80 : 0x110000;
        std::string text;
        for (auto left = size(); left > 0; --left) {
            const auto character = static_cast<char32_t>(below(bound));
            if (character < 0xD800 || character > 0xDFFF) utf8::append(text, character);
        }
        return text;
    }

    Data data() {
        Data data(size());
        for (auto& byte : data) byte = static_cast<std::byte>(random_());
        return data;
    }

    Value array(int levels) {
        Value::Array array;
        for (auto left = below(6); left > 0; --left) array.push_back(next(levels));
        return array;
    }

    Value dictionary(int levels) {
        Value::Dictionary dictionary;
        for (auto left = below(6); left > 0; --left) dictionary.insert_or_assign(text(), next(levels));
        return dictionary;
    }

    std::mt19937_64 random_;
};

} // namespace vorlan::tests
