// SPDX-License-Identifier: Apache-2.0
#include "platform/values/Checksum.h"

#include <VorlanFoundation/Platform/Data.h>

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <span>
#include <string>

using namespace vorlan;

namespace {

std::uint64_t checksumOf(std::span<const std::byte> bytes) {
    Checksum sum;
    sum.add(bytes);
    return sum.value();
}

Data randomData(std::mt19937_64& random, std::size_t size) {
    Data data(size);
    for (auto& byte : data) byte = static_cast<std::byte>(random());
    return data;
}

} // namespace

TEST(Checksum, EqualBytesHaveEqualSums) {
    const auto data = dataFromText("the same bytes, long enough for several steps");
    const Data copy = data;
    EXPECT_EQ(checksumOf(data), checksumOf(copy));
    EXPECT_NE(checksumOf(data), 0U);
}

TEST(Checksum, EverySingleBitCounts) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    for (std::size_t size = 1; size <= 40; ++size) {
        auto data = randomData(random, size);
        const auto whole = checksumOf(data);
        for (std::size_t bit = 0; bit < 8 * size; ++bit) {
            const auto mask = static_cast<std::byte>(1U << (bit % 8));
            data[bit / 8] ^= mask;
            EXPECT_NE(checksumOf(data), whole) << "bit " << bit << " of " << size << " bytes";
            data[bit / 8] ^= mask;
        }
    }
}

TEST(Checksum, LengthCounts) {
    std::set<std::uint64_t> sums;
    for (std::size_t size = 0; size <= 64; ++size) sums.insert(checksumOf(Data(size)));
    EXPECT_EQ(sums.size(), 65U);
}

TEST(Checksum, PiecesDifferFromTheWhole) {
    const auto data = dataFromText("sixteen bytes ..");
    const std::span<const std::byte> bytes(data);
    Checksum pieces;
    pieces.add(bytes.first(8));
    pieces.add(bytes.subspan(8));
    EXPECT_NE(pieces.value(), checksumOf(data));
}
