// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Extensions/Then.h>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using namespace vorlan;

namespace {

struct Label : Then<Label> {
    bool bold = false;
    std::string text;

    friend bool operator==(const Label&, const Label&) = default;
    friend auto operator<=>(const Label&, const Label&) = default;
};

struct Link : Label {};

class Window : public Object, public Then<Window> {
public:
    int width = 0;
};

struct Plain {
    int number = 0;
};

[[noreturn]] void fail() {
    throw std::runtime_error("no");
}

template <class T>
concept HasThen = requires(T object) { object.then([](auto&) {}); };
template <class T>
concept TakesWith = requires(const T& value) { with(value, [](auto&) {}); };
template <class T>
concept TakesThen = requires(T object) { then(object, [](auto&) {}); };

} // namespace

TEST(ThenTest, WithChangesACopy) {
    const std::vector base{1, 2};
    const auto longer = with(base, [](std::vector<int>& numbers) { numbers.push_back(3); });
    EXPECT_EQ(longer, (std::vector{1, 2, 3}));
    EXPECT_EQ(base, (std::vector{1, 2}));
    static_assert(std::is_same_v<decltype(with(base, [](auto&) {})), std::vector<int>>);
    static_assert(with(1, [](int& number) { number += 1; }) == 2);
    static_assert(TakesWith<Label> && !TakesWith<Window>);
}

TEST(ThenTest, WithMovesWhatIsTemporary) {
    const auto pointer = with(std::make_unique<int>(1), [](std::unique_ptr<int>& number) { *number = 2; });
    EXPECT_EQ(*pointer, 2);
}

TEST(ThenTest, WithTakesBlocksThatMayRunOnce) {
    struct Once {
        void operator()(int& number) && { number = 5; }
    };
    EXPECT_EQ(with(1, Once()), 5);
}

TEST(ThenTest, FailureOfTheBlockPasses) {
    const Label label;
    EXPECT_THROW(with(label, [](Label&) { fail(); }), std::runtime_error);
    EXPECT_THROW(do_(label, [](const Label&) { fail(); }), std::runtime_error);
    EXPECT_THROW(then(std::make_shared<Label>(), [](Label&) { fail(); }), std::runtime_error);
    EXPECT_THROW(label.with([](Label&) { fail(); }), std::runtime_error);
    EXPECT_THROW(label.do_([](const Label&) { fail(); }), std::runtime_error);
    EXPECT_THROW(std::make_shared<Window>()->then([](Window&) { fail(); }), std::runtime_error);
}

TEST(ThenTest, DoCallsTheBlockWithTheValueItself) {
    int number = 1;
    do_(number, [&](int& same) {
        EXPECT_EQ(&same, &number);
        same = 2;
    });
    EXPECT_EQ(number, 2);
    do_(std::as_const(number), [&](const int& same) { EXPECT_EQ(&same, &number); });
    int calls = 0;
    do_(Label(), [&](const Label&) { return ++calls; });
    EXPECT_EQ(calls, 1);
    static_assert(std::is_void_v<decltype(do_(number, [](int) { return 1; }))>);
}

TEST(ThenTest, ThenGivesTheSameObject) {
    const auto plain = std::make_shared<Plain>();
    const auto same = then(plain, [](Plain& object) { object.number = 1; });
    EXPECT_EQ(same, plain);
    EXPECT_EQ(plain->number, 1);
    EXPECT_EQ(then(plain.get(), [](Plain& object) { object.number = 2; }), plain.get());
    const auto moved = then(std::make_unique<Plain>(), [](Plain& object) { object.number = 3; });
    EXPECT_EQ(moved->number, 3);
    EXPECT_EQ(plain->number, 2);
    std::shared_ptr<const Plain> constant = plain;
    EXPECT_EQ(then(constant, [](const Plain&) {}), constant);
}

TEST(ThenTest, ThenTakesObjectsByReference) {
    Window window;
    EXPECT_EQ(&then(window, [](Window& same) { same.width = 3; }), &window);
    EXPECT_EQ(window.width, 3);
}

TEST(ThenTest, ThenIsForReferencesOnly) {
    static_assert(!TakesThen<Plain>);
    static_assert(!TakesThen<Label>);
    static_assert(!HasThen<Label>);
    static_assert(HasThen<Window>);
    static_assert(TakesThen<std::shared_ptr<Plain>>);
}

TEST(ThenTest, TypesHaveTheOperationsOfTheirOwn) {
    const Label base;
    const auto label = base.with([](Label& copy) { copy.bold = true; });
    EXPECT_TRUE(label.bold);
    EXPECT_FALSE(base.bold);
    int calls = 0;
    base.do_([&](const Label& same) { calls += &same == &base ? 1 : 0; });
    Label changed;
    changed.do_([](Label& same) { same.text = "a"; });
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(changed.text, "a");
}

TEST(ThenTest, ObjectsHandThemselvesOut) {
    const auto window = std::make_shared<Window>();
    const std::shared_ptr<Window> same = window->then([](Window& object) { object.width = 7; });
    EXPECT_EQ(same, window);
    EXPECT_EQ(window->width, 7);
}

TEST(ThenTest, ObjectThatNobodyOwnsCannotHandItselfOut) {
    Window window;
    EXPECT_THROW(window.then([](Window& object) { object.width = 7; }), std::bad_weak_ptr);
    EXPECT_EQ(window.width, 0);
}

TEST(ThenTest, SubclassesCopyAllOfThemselvesByTheFunction) {
    const Link link;
    static_assert(std::is_same_v<decltype(link.with([](Label&) {})), Label>);
    static_assert(std::is_same_v<decltype(with(link, [](Label&) {})), Link>);
    EXPECT_TRUE(with(link, [](Link& copy) { copy.bold = true; }).bold);
}

TEST(ThenTest, OperationsTakeNoPartInComparisons) {
    const Label base;
    EXPECT_EQ(base, Label());
    EXPECT_NE(base, base.with([](Label& label) { label.bold = true; }));
    EXPECT_LT(base, base.with([](Label& label) { label.text = "a"; }));
}
