// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Observation/WeakBox.h>

#include "tests/support/WorkerThreads.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <unordered_set>

using namespace vorlan;

namespace {

struct Left {
    virtual ~Left() = default;
};
struct Right {
    virtual ~Right() = default;
};
struct Both : Left, Right {};

} // namespace

TEST(WeakBox, HoldsItsObjectWeakly) {
    auto object = std::make_shared<std::string>("text");
    const WeakBox<std::string> box(object);
    EXPECT_EQ(object.use_count(), 1);
    EXPECT_EQ(*box.object(), "text");
    EXPECT_FALSE(box.isEmpty());
    object.reset();
    EXPECT_EQ(box.object(), nullptr);
    EXPECT_TRUE(box.isEmpty());
}

TEST(WeakBox, RemembersTheAddressAlsoAfterTheObjectDied) {
    auto object = std::make_shared<int>(1);
    const auto address = static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(object.get()));
    const WeakBox<int> box(object);
    const WeakBox<int> same(object);
    object.reset();
    EXPECT_EQ(box.memoryAddress(), address);
    EXPECT_EQ(box.hash(), address);
    EXPECT_TRUE(box.isEqual(same));
    EXPECT_EQ(box, same);
}

TEST(WeakBox, ObjectsThatAreEqualByValueAreTwo) {
    const auto first = std::make_shared<std::string>("same");
    const auto second = std::make_shared<std::string>("same");
    EXPECT_NE(WeakBox<std::string>(first), WeakBox<std::string>(second));
}

TEST(WeakBox, IsEqualOnlyToAPresentBoxOfTheSameElementType) {
    const auto object = std::make_shared<Both>();
    const WeakBox<Both> box(object);
    EXPECT_TRUE(box.isEqual(std::optional(WeakBox<Both>(object))));
    EXPECT_TRUE(box.isEqual(&box));
    EXPECT_FALSE(box.isEqual(std::optional<WeakBox<Both>>()));
    EXPECT_FALSE(box.isEqual(std::nullopt));
    EXPECT_FALSE(box.isEqual(nullptr));
    EXPECT_FALSE(box.isEqual(static_cast<const WeakBox<Both>*>(nullptr)));
    EXPECT_FALSE(box.isEqual(WeakBox<Left>(object)));
    EXPECT_FALSE(box.isEqual(5));
    EXPECT_FALSE(box.isEqual(std::string("box")));
}

TEST(WeakBox, AddressIsThatOfTheWholeObject) {
    const auto object = std::make_shared<Both>();
    const std::shared_ptr<Right> right = object;
    EXPECT_NE(static_cast<const void*>(right.get()), object.get());
    EXPECT_EQ(WeakBox<Right>(right).memoryAddress(), WeakBox<Both>(object).memoryAddress());
}

TEST(WeakBox, LivesInHashedSets) {
    const auto object = std::make_shared<int>(1);
    std::unordered_set<WeakBox<int>> boxes{WeakBox<int>(object), WeakBox<int>(object)};
    EXPECT_EQ(boxes.size(), 1U);
}

TEST(WeakBox, IsNotMadeWithoutAnObject) {
    static_assert(!std::is_default_constructible_v<WeakBox<int>>);
}

TEST(WeakBoxDeathTest, NullPointerStopsTheProcess) {
    support::useWorkerThreads();
    EXPECT_DEATH(WeakBox<int>(std::shared_ptr<int>()),
                 "VorlanFoundation/WeakBox: Fatal error: a weak box of no object");
}
