// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Extensions/Collections.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <forward_list>
#include <functional>
#include <limits>
#include <list>
#include <memory>
#include <optional>
#include <random>
#include <ranges>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

using namespace vorlan;

namespace {

enum class Color { red, green, blue };

struct Shape {
    virtual ~Shape() = default;
};
struct Circle : Shape {};
struct Square : Shape {};
struct Coin : Circle {};

struct Plain {};
struct PlainChild : Plain {};

// Without order and without a copy.
struct Ticket {
    explicit Ticket(int theNumber) : number(theNumber) {}
    Ticket(const Ticket&) = delete;
    Ticket& operator=(const Ticket&) = delete;
    friend bool operator==(const Ticket& a, const Ticket& b) { return a.number == b.number; }
    int number;
};

struct Suit : Membership<Suit> {
    int number = 0;

    Suit() = default;
    explicit Suit(int theNumber) : number(theNumber) {}
    friend bool operator==(const Suit&, const Suit&) = default;
    friend auto operator<=>(const Suit&, const Suit&) = default;
};

struct Silent : Membership<Silent> {};

// Whose functions have the names of ours, and are not asked.
namespace host {

struct Mark {
    int number = 0;
    friend bool operator==(const Mark&, const Mark&) = default;
};
template <class... T>
void isOne(const T&...) = delete;
template <class... T>
void contains(const T&...) = delete;
template <class... T>
void containsOne(const T&...) = delete;
template <class... T>
void areEqual(const T&...) = delete;
template <class... T>
void elementsOf(T&...) = delete;
template <class... T>
void viewOf(const T&...) = delete;
template <class... T>
void isEqualToContent(const T&...) = delete;

} // namespace host

template <class T>
concept ComparesItself = requires(const T& value) { value == value; };

using Calls = std::vector<std::pair<int, int>>;

Calls callsFor(const std::vector<int>& sorted, int element) {
    Calls calls;
    collection::indexForInserting(sorted, element, [&](int a, int b) {
        calls.emplace_back(a, b);
        return a < b;
    });
    return calls;
}

} // namespace

TEST(CollectionsTest, IndexForInsertingKeepsTheOrder) {
    const std::vector sorted{1, 3, 7, 9};
    EXPECT_EQ(collection::indexForInserting(sorted, 5, std::less<>()), 2);
    EXPECT_EQ(collection::indexForInserting(sorted, 0, std::less<>()), 0);
    EXPECT_EQ(collection::indexForInserting(sorted, 10, std::less<>()), 4);
    EXPECT_EQ(collection::indexForInserting(sorted, 3, std::less<>()), 1);
    EXPECT_EQ(collection::indexForInserting(std::vector<int>(), 5, std::less<>()), 0);
    EXPECT_EQ(collection::indexForInserting(std::vector{5}, 5, std::less<>()), 0);
    EXPECT_EQ(collection::indexForInserting(std::vector{9, 7, 3, 1}, 5, std::greater<>()), 2);
    static_assert(
        std::is_same_v<decltype(collection::indexForInserting(sorted, 5, std::less<>())), std::int64_t>);
}

TEST(CollectionsTest, IndexForInsertingTakesAnySequenceWithPlaces) {
    std::array<std::string, 3> texts{"a", "c", "e"};
    EXPECT_EQ(collection::indexForInserting(texts, "d", std::less<>()), 2);
    EXPECT_EQ(collection::indexForInserting(std::span(texts), "b", std::less<>()), 1);
    EXPECT_EQ(collection::indexForInserting(std::deque{1.0, 2.0}, 3, std::less<>()), 2);
    EXPECT_EQ(collection::indexForInserting(std::vector{false, true}, true, std::less<>()), 1);
    EXPECT_EQ(collection::indexForInserting(std::views::iota(10, 20), 15, std::less<>()), 5);
    const int numbers[] = {1, 2, 4}; // NOLINT(*-avoid-c-arrays)
    EXPECT_EQ(collection::indexForInserting(numbers, 3, std::less<>()), 2);
}

TEST(CollectionsTest, IndexForInsertingTakesElementsThatCannotBeCopied) {
    std::array<std::unique_ptr<int>, 2> sorted{std::make_unique<int>(1), std::make_unique<int>(5)};
    const auto byNumber = [](const auto& a, const auto& b) { return *a < *b; };
    EXPECT_EQ(collection::indexForInserting(sorted, std::make_unique<int>(3), byNumber), 1);
}

TEST(CollectionsTest, IndexForInsertingAsksTheMiddleElementFirst) {
    const std::vector sorted{1, 3, 7, 9};
    EXPECT_EQ(callsFor(sorted, 5), (Calls{{3, 5}, {7, 5}, {5, 7}}));
    EXPECT_EQ(callsFor(sorted, 3), (Calls{{3, 3}, {3, 3}}));
    EXPECT_EQ(callsFor(sorted, 0), (Calls{{3, 0}, {0, 3}, {1, 0}, {0, 1}}));
    EXPECT_EQ(callsFor(sorted, 10), (Calls{{3, 10}, {7, 10}, {9, 10}}));
    EXPECT_EQ(callsFor({}, 1), Calls());
}

TEST(CollectionsTest, EqualElementsEndTheSearchWhereTheyAreMet) {
    EXPECT_EQ(collection::indexForInserting(std::vector{2, 2, 2, 2, 2}, 2, std::less<>()), 2);
    EXPECT_EQ(collection::indexForInserting(std::vector{2, 2, 2, 2}, 2, std::less<>()), 1);
    EXPECT_EQ(collection::indexForInserting(std::vector{1, 2, 2, 2, 2}, 2, std::less<>()), 2);
    EXPECT_EQ(collection::indexForInserting(std::vector{0, 1, 1, 2, 2}, 2, std::less<>()), 3);
}

TEST(CollectionsTest, IndexForInsertingIsThatOfALinearSearch) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::vector<int> sorted;
    for (int round = 0; round < 100'000; ++round) {
        sorted.resize(random() % 24);
        for (auto& number : sorted) number = static_cast<int>(random() % 20);
        std::ranges::sort(sorted);
        const auto element = static_cast<int>(random() % 22) - 1;
        unsigned calls = 0;
        const auto index = collection::indexForInserting(sorted, element, [&](int a, int b) {
            ++calls;
            return a < b;
        });
        const auto below = std::ranges::count_if(sorted, [=](int number) { return number < element; });
        const auto equal = std::ranges::count(sorted, element);
        ASSERT_GE(index, below);
        ASSERT_LE(index, below + std::max<std::ptrdiff_t>(equal - 1, 0));
        ASSERT_LE(calls, 2U * static_cast<unsigned>(std::bit_width(sorted.size())));
    }
}

TEST(CollectionsTest, ValueIsOneOfThoseThatItEquals) {
    EXPECT_TRUE(isOne(Color::red, {.of = {Color::red, Color::blue}}));
    EXPECT_FALSE(isOne(Color::green, {.of = {Color::red, Color::blue}}));
    EXPECT_FALSE(isOne(3, {.of = {}}));
    EXPECT_TRUE(isOne(3, std::vector{1, 3}));
    EXPECT_TRUE(isOne(3, std::list{1L, 3L}));
    EXPECT_TRUE(
        isOne(3, std::vector{1, 2, 3, 4} | std::views::filter([](int number) { return number > 2; })));
    EXPECT_FALSE(isOne(3, std::vector<int>()));
    EXPECT_FALSE(
        isOne(std::numeric_limits<double>::quiet_NaN(), {.of = {std::numeric_limits<double>::quiet_NaN()}}));
    EXPECT_TRUE(isOne(std::optional(3), {.of = {std::nullopt, 3}}));
    static_assert(isOne(3, {.of = {1, 3}}));
}

TEST(CollectionsTest, ValueIsExceptedWhereItIsNone) {
    EXPECT_FALSE(except(Color::red, {.of = {Color::red, Color::blue}}));
    EXPECT_TRUE(except(Color::green, {.of = {Color::red, Color::blue}}));
    EXPECT_TRUE(except(3, {.of = {}}));
    EXPECT_FALSE(except(3, std::vector{1, 3}));
    EXPECT_TRUE(except(3, std::vector{1, 2}));
    static_assert(except(3, {.of = {1, 2}}));
}

TEST(CollectionsTest, TextsAreComparedByTheirLettersHoweverTheyAreKept) {
    const std::string text = "b";
    const char* const pointer = text.c_str();
    EXPECT_TRUE(isOne(text, {.of = {"a", "b"}}));
    EXPECT_TRUE(isOne(pointer, {.of = {"a", "b"}}));
    EXPECT_TRUE(isOne("b", {.of = {std::string("a"), std::string("b")}}));
    EXPECT_FALSE(isOne(std::string_view("c"), {.of = {"a", text}}));
    EXPECT_TRUE(isOne(pointer, std::vector{"a", "b"}));
    EXPECT_TRUE(isOne(text, std::vector<std::string_view>{"a", "b"}));
    EXPECT_TRUE(except(text, {.of = {"a", "bc"}}));
    EXPECT_FALSE(isOne(std::string("b\0c", 3), {.of = {"b"}}));
    EXPECT_FALSE(isOne(static_cast<const char*>(nullptr), {.of = {"a", "b"}}));
    EXPECT_TRUE(isOne(static_cast<const char*>(nullptr), {.of = {""}}));
}

TEST(CollectionsTest, NullTextIsEmptyWhateverItIsComparedWith) {
    const char* const none = nullptr;
    const std::vector texts{none, "a"};
    EXPECT_TRUE(isOne(std::optional(std::string()), texts));
    EXPECT_TRUE(isOne(std::optional(none), std::vector{std::string()}));
    EXPECT_TRUE(isOne(std::optional(none), {.of = {"a", ""}}));
    EXPECT_TRUE(except(std::optional<std::string>(), texts)) << "there is none, not an empty one";
    EXPECT_TRUE(isOne(std::filesystem::path(), texts));
    EXPECT_TRUE(isOne("a", std::vector{std::filesystem::path("b"), std::filesystem::path("a")}));
    EXPECT_TRUE(isOne(none, std::vector{std::filesystem::path()}));
}

TEST(CollectionsTest, OptionalsAreComparedByWhatTheyHold) {
    const std::string text = "b";
    EXPECT_TRUE(isOne(std::optional(text.c_str()), {.of = {"a", "b"}}));
    EXPECT_TRUE(isOne(text, std::vector{std::optional<const char*>(), std::optional("b")}));
    EXPECT_TRUE(isOne(std::optional<int>(), {.of = {1, std::nullopt}}));
    EXPECT_FALSE(isOne(std::optional<int>(), std::vector{std::optional(0L)}));
    EXPECT_FALSE(isOne(std::optional(-1), std::vector{std::optional(4294967295U)}));
    EXPECT_TRUE(isOne(std::nullopt, std::vector{std::optional<int>()}));
}

TEST(CollectionsTest, TextsOfWideLettersAreNotComparedByAddress) {
    static_assert(!detail::ComparableForEquality<const wchar_t*, wchar_t*>);
    static_assert(!detail::ComparableForEquality<const char8_t(&)[3], const char8_t*>);
    static_assert(!detail::ComparableForEquality<const char16_t*, const char16_t*>);
    static_assert(!detail::ComparableForEquality<const char32_t*, const char32_t*>);
    EXPECT_TRUE(isOne(std::wstring(L"b"), std::vector{L"a", L"b"}));
}

TEST(CollectionsTest, IntegersAreComparedByTheirNumbers) {
    EXPECT_TRUE(isOne(std::size_t{3}, std::vector{1, 3}));
    EXPECT_FALSE(isOne(-1, std::vector{4294967295U}));
    EXPECT_FALSE(containsOne(std::vector{4294967295U}, std::vector{-1}));
    EXPECT_TRUE(except(std::uint8_t{255}, std::vector{std::int8_t{-1}}));
    EXPECT_TRUE(isOne('a', std::vector{97})) << "letters stand for numbers, as in the language";
}

TEST(CollectionsTest, FunctionsOfAHostAreNotMistakenForOurs) {
    const host::Mark mark{2};
    const std::vector marks{host::Mark{1}, host::Mark{2}};
    EXPECT_TRUE(vorlan::isOne(mark, {.of = {host::Mark{2}}}));
    EXPECT_TRUE(vorlan::isOne(mark, marks));
    EXPECT_FALSE(vorlan::except(mark, {.of = {host::Mark{2}}}));
    EXPECT_FALSE(vorlan::except(mark, marks));
    EXPECT_TRUE(vorlan::containsOne(marks, {.of = {host::Mark{2}}}));
    EXPECT_TRUE(vorlan::containsOne(marks, marks));
    EXPECT_TRUE(vorlan::isOne(std::optional(mark), marks));
    EXPECT_TRUE(vorlan::isOne<host::Mark>(mark));
}

TEST(CollectionsTest, ZeroBehindALiteralIsNoneOfItsLetters) {
    EXPECT_TRUE(isOne('e', "aeiou"));
    EXPECT_FALSE(isOne('\0', "aeiou"));
    EXPECT_FALSE(containsOne("xyz", "aeiou"));
    EXPECT_TRUE(containsOne("xyze", "aeiou"));
    EXPECT_TRUE(containsOne(std::string("hello"), "aeiou"));
    const char letters[] = {'a', 'b'}; // NOLINT(*-avoid-c-arrays)
    EXPECT_TRUE(isOne('b', letters));
    EXPECT_FALSE(isOne('c', letters));
}

TEST(CollectionsTest, ValuesThatCannotBeCopiedAreLookedForInSequences) {
    std::list<Ticket> tickets;
    tickets.emplace_back(1);
    tickets.emplace_back(2);
    EXPECT_TRUE(isOne(Ticket(2), tickets));
    EXPECT_TRUE(except(Ticket(3), tickets));
    EXPECT_TRUE(containsOne(tickets, tickets));
}

TEST(CollectionsTest, ObjectIsOfItsOwnClassOnly) {
    const Circle circle;
    const Coin coin;
    const Shape& shape = circle;
    EXPECT_TRUE((isOne<Circle, Square>(shape)));
    EXPECT_TRUE((isOne<Square, Circle>(shape)));
    EXPECT_FALSE(isOne<Square>(shape));
    EXPECT_FALSE(isOne<Shape>(shape)) << "a circle is of a subclass";
    EXPECT_FALSE((isOne<Circle, Square>(static_cast<const Shape&>(coin)))) << "and so is a coin";
    EXPECT_TRUE(isOne<Coin>(static_cast<const Shape&>(coin)));
    EXPECT_TRUE(isOne<const Circle>(shape));
}

TEST(CollectionsTest, PointersStandForTheirObjects) {
    const std::shared_ptr<Shape> shared = std::make_shared<Circle>();
    const std::unique_ptr<const Shape> unique = std::make_unique<Coin>();
    const Shape* const bare = shared.get();
    EXPECT_TRUE((isOne<Circle, Square>(shared)));
    EXPECT_TRUE(isOne<Circle>(bare));
    EXPECT_FALSE(isOne<Circle>(unique));
    EXPECT_TRUE(isOne<Coin>(unique));
    EXPECT_FALSE(isOne<Shape>(std::shared_ptr<Shape>()));
    EXPECT_FALSE(isOne<Shape>(static_cast<const Shape*>(nullptr)));
    static_assert(detail::ObjectClass<const Circle> && !detail::ObjectClass<const std::shared_ptr<Circle>> &&
                  !detail::ObjectClass<Circle*>);
}

TEST(CollectionsTest, ClassesWithoutVirtualsAreKnownByDeclaration) {
    const PlainChild child;
    const Plain& plain = child;
    EXPECT_TRUE(isOne<Plain>(plain));
    EXPECT_FALSE(isOne<PlainChild>(plain));
    EXPECT_FALSE(isOne<Plain>(3));
}

TEST(CollectionsTest, SequenceContainsOneThatIsListed) {
    const std::vector numbers{1, 3, 5};
    EXPECT_TRUE(containsOne(numbers, {.of = {2, 3}}));
    EXPECT_FALSE(containsOne(numbers, {.of = {2, 4}}));
    EXPECT_FALSE(containsOne(numbers, {.of = {}}));
    EXPECT_FALSE(containsOne(std::vector<int>(), {.of = {1}}));
    EXPECT_TRUE(containsOne(numbers, std::list{2, 5}));
    EXPECT_FALSE(containsOne(numbers, std::forward_list{2, 4}));
    EXPECT_FALSE(containsOne(numbers, std::vector<int>()));
    EXPECT_FALSE(containsOne(std::vector<int>(), numbers));
    EXPECT_TRUE(containsOne(std::vector<std::string>{"a", "b"}, {.of = {"b"}}));
    EXPECT_TRUE(containsOne(std::vector{true}, {.of = {true}}));
    EXPECT_FALSE(containsOne(std::vector{true}, std::vector{false}));
}

TEST(CollectionsTest, SequenceThatCanBeReadOnceWillDo) {
    std::istringstream input("1 3 5 7");
    EXPECT_TRUE(containsOne(std::views::istream<int>(input), {.of = {4, 3}}));
    int next = 0;
    EXPECT_TRUE(input >> next);
    EXPECT_EQ(next, 5) << "nothing is read behind what was found";
}

TEST(CollectionsTest, TypesAskForThemselves) {
    const Suit two(2);
    EXPECT_TRUE(two.isOne({.of = {Suit(1), Suit(2)}}));
    EXPECT_FALSE(two.isOne({.of = {Suit(1)}}));
    EXPECT_TRUE(two.isOne(std::vector{Suit(2)}));
    EXPECT_TRUE(two.isOne<Suit>());
    EXPECT_FALSE(two.isOne<Circle>());
    EXPECT_TRUE(two.except({.of = {Suit(1)}}));
    EXPECT_FALSE(two.except(std::vector{Suit(2)}));
}

TEST(CollectionsTest, MembershipTakesNoPartInComparisons) {
    EXPECT_NE(Suit(1), Suit(2));
    EXPECT_LT(Suit(1), Suit(2));
    static_assert(!ComparesItself<Silent>, "what has no comparison gets none");
    static_assert(sizeof(Suit) == sizeof(int));
}
