// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Object.h>

#include <VorlanFoundation/Execution.h>
#include <VorlanFoundation/Platform/FunctionRef.h>

#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

using namespace vorlan;

namespace {

struct First : virtual Object {};
struct Second : virtual Object {};
struct Both : First, Second {};
struct Plain {};

char key;
char otherKey;

// Asks its host once more while it dies with it.
struct LastQuestion {
    explicit LastQuestion(const Object& dying) : host(&dying) {}
    LastQuestion(LastQuestion&& other) noexcept : host(std::exchange(other.host, nullptr)) {}
    LastQuestion(const LastQuestion&) = delete;
    ~LastQuestion() {
        if (host != nullptr) associatedValue(*host, &otherKey, [] { return std::make_shared<int>(1); });
    }
    const Object* host;
};

} // namespace

TEST(Object, ObjectWithSeveralInterfacesIsOneObject) {
    const auto both = std::make_shared<Both>();
    const First& first = *both;
    const Second& second = *both;
    EXPECT_EQ(identityOf(first), identityOf(second));
    EXPECT_EQ(identityOf(first), identityOf(*both));
    EXPECT_EQ(&first.monitor(), &second.monitor());
    associatedValue(first, &key, [] { return 1; });
    EXPECT_EQ(associatedValue(second, &key, [] { return 2; }), 1);
}

TEST(Object, ThingsWithoutVirtualFunctionsAreToldByTheirAddress) {
    const Plain plain;
    EXPECT_EQ(identityOf(plain), &plain);
}

TEST(Object, SharedAndWeakReferencesFromWithinAreOfItsOwnType) {
    const auto both = std::make_shared<Both>();
    const std::shared_ptr<Second> second = shared(static_cast<Second*>(both.get()));
    EXPECT_EQ(second.get(), static_cast<Second*>(both.get()));
    EXPECT_EQ(both.use_count(), 2);
    const std::weak_ptr<First> first = weak(static_cast<First*>(both.get()));
    EXPECT_EQ(first.lock().get(), static_cast<First*>(both.get()));
}

TEST(Object, ThatDoesNotLiveInASharedPointerHasNoReferences) {
    Both both;
    EXPECT_THROW(shared(&both), std::bad_weak_ptr);
    EXPECT_TRUE(weak(&both).expired());
}

TEST(Object, MonitorIsRecursive) {
    const First object;
    const std::lock_guard outer(object.monitor());
    const std::lock_guard inner(object.monitor());
}

TEST(Object, ADyingAssociatedValueMayAskTheObjectOnceMore) {
    auto object = std::make_shared<First>();
    {
        const auto question = std::make_shared<LastQuestion>(*object);
        associatedValue(*object, &key, [&] { return question; });
    }
    object.reset(); // leaks the last answer if the object does not look again
}

TEST(Object, AssociatingAgainReplacesTheValue) {
    const First object;
    // The value that the inner call attaches is replaced by the one that the outer call returns.
    const int outer = associatedValue(object, &key, [&] {
        associatedValue(object, &key, [] { return 1; });
        return 2;
    });
    EXPECT_EQ(outer, 2);
    EXPECT_EQ(associatedValue(object, &key, [] { return 3; }), 2);
}

TEST(FunctionRef, CallsWhatItRefersTo) {
    int calls = 0;
    auto count = [&](int by) { return calls += by; };
    const FunctionRef<int(int)> reference = count;
    EXPECT_EQ(reference(2), 2);
    EXPECT_EQ(reference(3), 5);
    const auto copy = reference;
    EXPECT_EQ(copy(1), 6);
    const FunctionRef<std::string(std::unique_ptr<int>)> moving = [](std::unique_ptr<int> value) {
        return std::to_string(*value);
    };
    EXPECT_EQ(moving(std::make_unique<int>(7)), "7");
}
