// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Extensions/Occupiable.h>

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <ranges>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

using namespace vorlan;

namespace {

class Playlist : public OccupiableOperations<Playlist> {
public:
    Playlist() = default;
    explicit Playlist(int songs) : songs_(songs) {}
    bool isEmpty() const { return songs_ == 0; }
    friend bool operator==(const Playlist&, const Playlist&) = default;

private:
    int songs_ = 0;
};

// Whose own word counts, not what the standard would ask.
struct Basket {
    static bool isEmpty() { return false; }
    static bool empty() { return true; }
};

// Whose functions have the names of ours, and are not asked.
namespace host {

struct Box {
    static bool isEmpty() { return true; }
};
template <class T>
bool isEmpty(const T&) = delete;
template <class T>
bool isNilOrEmpty(const T&) = delete;

} // namespace host

struct Emptied {
    void empty() {}
};

template <class... Types>
constexpr bool areOccupiable = (Occupiable<Types> && ...);

} // namespace

TEST(OccupiableTest, TextsAndContainersSayWhetherTheyAreEmpty) {
    EXPECT_TRUE(isEmpty(std::string()));
    EXPECT_TRUE(isEmpty(std::string_view()));
    EXPECT_TRUE(isEmpty(std::vector<int>()));
    EXPECT_TRUE(isEmpty(std::array<int, 0>()));
    EXPECT_TRUE(isEmpty(std::map<int, int>()));
    EXPECT_TRUE(isEmpty(std::unordered_map<int, int>()));
    EXPECT_TRUE(isEmpty(std::set<int>()));
    EXPECT_TRUE(isEmpty(std::unordered_set<int>()));
    EXPECT_FALSE(isEmpty(std::string("a")));
    EXPECT_FALSE(isEmpty(std::map<int, int>{{1, 2}}));
    EXPECT_TRUE(isNotEmpty(std::set{1}));
    EXPECT_FALSE(isNotEmpty(std::span<int>()));
    static_assert(isEmpty(std::string_view()) && isNotEmpty(std::array{1}));
}

TEST(OccupiableTest, TypesOfAHostSayItThemselves) {
    EXPECT_TRUE(isEmpty(Playlist()));
    EXPECT_FALSE(isEmpty(Playlist(3)));
    EXPECT_TRUE(isNotEmpty(Playlist(3)));
    EXPECT_TRUE(Playlist(3).isNotEmpty());
    EXPECT_FALSE(Playlist().isNotEmpty());
    EXPECT_FALSE(isEmpty(Basket()));
    EXPECT_NE(Playlist(1), Playlist(2)) << "whose comparison is as it was defaulted";
}

TEST(OccupiableTest, FunctionsOfAHostAreNotMistakenForOurs) {
    EXPECT_FALSE(vorlan::isNotEmpty(host::Box()));
    EXPECT_TRUE(vorlan::isNilOrEmpty(std::optional<host::Box>()));
    EXPECT_FALSE(vorlan::isNotNilNotEmpty(std::optional(host::Box())));
}

TEST(OccupiableTest, OtherTypesAreNotOccupiable) {
    static_assert(areOccupiable<std::string, const std::string, std::vector<int>, Playlist, Basket>);
    static_assert(!Occupiable<int> && !Occupiable<Emptied> && !Occupiable<std::optional<std::string>>);
    static_assert(!Occupiable<decltype(std::vector<int>() | std::views::filter([](int) { return true; }))>);
    static_assert(!OccupiableOptional<std::optional<int>> && !OccupiableOptional<int*>);
    static_assert(!OccupiableOptional<std::string> && !OccupiableOptional<std::string[3]>);
}

TEST(OccupiableTest, OptionalsAreNilOrEmpty) {
    std::optional<std::string> name;
    EXPECT_TRUE(isNilOrEmpty(name));
    EXPECT_FALSE(isNotNilNotEmpty(name));
    name = "";
    EXPECT_TRUE(isNilOrEmpty(name));
    EXPECT_FALSE(isNotNilNotEmpty(name));
    name = "a";
    EXPECT_FALSE(isNilOrEmpty(name));
    EXPECT_TRUE(isNotNilNotEmpty(name));
    EXPECT_TRUE(isNilOrEmpty(std::optional<Playlist>()));
    EXPECT_TRUE(isNilOrEmpty(std::optional(Playlist())));
    EXPECT_TRUE(isNotNilNotEmpty(std::optional(Playlist(1))));
    static_assert(isNilOrEmpty(std::optional<std::string_view>()));
}

TEST(OccupiableTest, PointersAreNilOrEmpty) {
    const std::vector<int> none;
    const std::vector one{1};
    const std::vector<int>* numbers = nullptr;
    EXPECT_TRUE(isNilOrEmpty(numbers));
    EXPECT_TRUE(isNilOrEmpty(&none));
    EXPECT_TRUE(isNotNilNotEmpty(&one));
    EXPECT_TRUE(isNilOrEmpty(std::shared_ptr<Playlist>()));
    EXPECT_TRUE(isNilOrEmpty(std::make_shared<Playlist>()));
    EXPECT_TRUE(isNotNilNotEmpty(std::make_unique<Playlist>(1)));
}

TEST(OccupiableTest, TextsOfCSayWhetherTheyAreEmpty) {
    const char* const none = nullptr;
    EXPECT_TRUE(isEmpty(none));
    EXPECT_FALSE(isNotEmpty(none));
    static_assert(isEmpty("") && isNotEmpty("a") && !isEmpty("a") && !isNotEmpty(""));
}

TEST(OccupiableTest, TextsOfCAreNilOrEmpty) {
    const char* text = nullptr;
    EXPECT_TRUE(isNilOrEmpty(text));
    EXPECT_FALSE(isNotNilNotEmpty(text));
    text = "";
    EXPECT_TRUE(isNilOrEmpty(text));
    text = "a";
    EXPECT_TRUE(isNotNilNotEmpty(text));
}
