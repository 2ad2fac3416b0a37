// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONErrorOf.h"

#include <VorlanFoundation/Platform/Codable.h>
#include <VorlanFoundation/Platform/JSONDecoder.h>
#include <VorlanFoundation/Platform/JSONEncoder.h>

#include <gtest/gtest.h>

#include <compare>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace vorlan;
using tests::decodingErrorOf;

namespace {

struct Address {
    std::string street;
    int number = 0;
    bool operator==(const Address&) const = default;
};
VORLAN_CODABLE(Address, street, number)

struct Profile {
    std::string name;
    std::optional<Date> born;
    std::vector<Address> addresses;
    std::map<std::string, Address> byName;
    bool operator==(const Profile&) const = default;
};
VORLAN_CODABLE(Profile, name, born, addresses, byName)

struct Nothing {
    bool operator==(const Nothing&) const = default;
};
VORLAN_CODABLE(Nothing)

struct Single {
    int only = 0;
};
VORLAN_CODABLE(Single, only)

// Not all of its members are coded.
struct Counted {
    int coded = 1;
    int left = 2;
};
VORLAN_CODABLE(Counted, coded)

struct Absent {
    std::optional<int> number = 5;
    std::unique_ptr<int> unique;
    std::shared_ptr<std::string> shared;
    std::optional<std::optional<int>> nested;
};
VORLAN_CODABLE(Absent, number, unique, shared, nested)

struct Node {
    int value = 0;
    std::unique_ptr<Node> next;
};
VORLAN_CODABLE(Node, value, next)

struct Tree {
    std::string name;
    std::vector<Tree> children;
    std::shared_ptr<Tree> twin;
};
VORLAN_CODABLE(Tree, name, children, twin)

struct Base {
    int inherited = 0;
};
struct Derived : Base {
    int own = 0;
};
VORLAN_CODABLE(Derived, inherited, own)

// Not described, though what it derives from is: its own member would be lost.
struct Undescribed : Single {
    int own = 0;
};
struct Redescribed : Undescribed {};
VORLAN_CODABLE(Redescribed, only, own)

class Outer {
public:
    struct Inner {
        int deep = 0;
        class Innermost {
        public:
            int deeper = 0;
        };
        Innermost innermost;
    };
    Inner inner;
};
VORLAN_CODABLE(Outer::Inner::Innermost, deeper)
VORLAN_CODABLE(Outer::Inner, deep, innermost)
VORLAN_CODABLE(Outer, inner)

template <class T>
std::string encoded(const T& value) {
    return JSONEncoder().encodeText(value);
}

template <class T>
T decoded(std::string_view text) {
    return JSONDecoder().decode<T>(text);
}

} // namespace

namespace company::product::details {
struct Version {
    int major = 0;
    int minor = 0;
    auto operator<=>(const Version&) const = default;
};
VORLAN_CODABLE(Version, major, minor)
} // namespace company::product::details

namespace {
struct Opaque {};
} // namespace

static_assert(Codable<Profile>);
static_assert(Codable<Nothing>);
static_assert(Codable<Node>);
static_assert(Codable<Outer::Inner::Innermost>);
static_assert(Codable<company::product::details::Version>);
static_assert(!Encodable<Opaque>);
static_assert(!Decodable<Opaque>);
static_assert(!Codable<const char*>);
static_assert(!Codable<Opaque*>);
static_assert(!Encodable<Undescribed>);
static_assert(!Decodable<Undescribed>);

TEST(Codable, DescribedTypeIsAnObjectOfItsMembersAsDeclared) {
    EXPECT_EQ(encoded(Address{"High Street", 7}), R"({"street":"High Street","number":7})");
    EXPECT_EQ(decoded<Address>(R"({"street":"High Street","number":7})"), (Address{"High Street", 7}));
}

TEST(Codable, DescribedTypesStandWithinOneAnother) {
    const Profile profile{"Ada", Date(1.5), {{"A", 1}, {"B", 2}}, {{"home", {"C", 3}}}};
    const std::string text = encoded(profile);
    EXPECT_EQ(text, R"({"name":"Ada","born":1.5,)"
                    R"("addresses":[{"street":"A","number":1},{"street":"B","number":2}],)"
                    R"("byName":{"home":{"street":"C","number":3}}})");
    EXPECT_EQ(decoded<Profile>(text), profile);
}

TEST(Codable, MembersMayStandInAnyOrder) {
    EXPECT_EQ(decoded<Address>(R"({"number":7,"street":"A"})"), (Address{"A", 7}));
    const auto profile = decoded<Profile>(R"({"byName":{},"addresses":[],"name":"Ada"})");
    EXPECT_EQ(profile, (Profile{"Ada", {}, {}, {}}));
}

TEST(Codable, OtherMembersMayStandBetween) {
    EXPECT_EQ(decoded<Address>(
                  R"({"x":[{"street":1}],"street":"A","y":null,"z":{"number":[]},"number":7,"w":"}"})"),
              (Address{"A", 7}));
}

TEST(Codable, NamesMayBeWrittenWithEscapes) {
    EXPECT_EQ(decoded<Address>(R"({"\u0073treet":"A","numbe\u0072":7})"), (Address{"A", 7}));
}

TEST(Codable, NamesMustBeTheWholeNames) {
    const auto error = decodingErrorOf<Address>(R"({"street":"A","numbe":7,"numbers":8,"Number":9,"":1})");
    EXPECT_EQ(error.kind(), JSONError::Kind::missingMember);
    EXPECT_EQ(error.path(), "$.number");
}

TEST(Codable, OfMembersWithOneNameTheLastCounts) {
    EXPECT_EQ(decoded<Address>(R"({"street":"A","number":1,"number":2,"street":"B","number":3})"),
              (Address{"B", 3}));
    const auto profile = decoded<Profile>(R"({"name":"a","born":1,"addresses":[{"street":"A","number":1}],
        "byName":{"a":{"street":"A","number":1}},"name":"b","born":null,"addresses":[],"byName":{}})");
    EXPECT_EQ(profile, (Profile{"b", {}, {}, {}}));
    EXPECT_EQ(decoded<std::vector<Address>>(R"([{"street":"A","number":1,"\u0073treet":"B"}])"),
              (std::vector<Address>{{"B", 1}}));
}

TEST(Codable, TypeWithoutMembersIsAnEmptyObject) {
    EXPECT_EQ(encoded(Nothing()), "{}");
    EXPECT_EQ(decoded<Nothing>("{}"), Nothing());
    EXPECT_EQ(decoded<Nothing>(R"({"a":1,"b":[{}]})"), Nothing());
    EXPECT_EQ(encoded(std::vector<Nothing>(2)), "[{},{}]");
    EXPECT_EQ(decodingErrorOf<Nothing>("[]").kind(), JSONError::Kind::typeMismatch);
    EXPECT_EQ(decodingErrorOf<Nothing>(R"({"a":})").kind(), JSONError::Kind::malformed);
}

TEST(Codable, TypeWithOneMember) {
    EXPECT_EQ(encoded(Single{3}), R"({"only":3})");
    EXPECT_EQ(decoded<Single>(R"({"only":3})").only, 3);
}

TEST(Codable, MembersThatAreNotDescribedStayAsTheyAreMade) {
    EXPECT_EQ(encoded(Counted{3, 4}), R"({"coded":3})");
    const auto counted = decoded<Counted>(R"({"coded":3,"left":4})");
    EXPECT_EQ(counted.coded, 3);
    EXPECT_EQ(counted.left, 2);
}

TEST(Codable, MembersThatAreAbsentAreLeftOut) {
    EXPECT_EQ(encoded(Absent{.number = {}}), "{}");
    Absent present{1, std::make_unique<int>(2), std::make_shared<std::string>("three"), {{4}}};
    EXPECT_EQ(encoded(present), R"({"number":1,"unique":2,"shared":"three","nested":4})");
}

TEST(Codable, MembersThatMayBeAbsentMayBeMissingOrNull) {
    const auto null = decoded<Absent>(R"({"number":null,"unique":null,"shared":null,"nested":null})");
    EXPECT_EQ(null.number, std::nullopt);
    EXPECT_EQ(null.unique, nullptr);
    EXPECT_EQ(null.shared, nullptr);
    EXPECT_EQ(null.nested, std::nullopt);
    const auto missing = decoded<Absent>("{}");
    EXPECT_EQ(missing.unique, nullptr);
    EXPECT_EQ(missing.shared, nullptr);
    EXPECT_EQ(missing.nested, std::nullopt);
    const auto there = decoded<Absent>(R"({"nested":4,"shared":"three","unique":2,"number":1})");
    EXPECT_EQ(there.number, 1);
    EXPECT_EQ(*there.unique, 2);
    EXPECT_EQ(*there.shared, "three");
    EXPECT_EQ(there.nested, std::optional<std::optional<int>>(4));
}

TEST(Codable, MissingMembersAreAbsentWhateverTheTypeIsMadeWith) {
    EXPECT_EQ(Absent().number, 5);
    EXPECT_EQ(decoded<Absent>("{}").number, std::nullopt);
    EXPECT_EQ(decoded<Absent>(R"({"number":null})").number, std::nullopt);
    EXPECT_EQ(decoded<Absent>(encoded(Absent{.number = {}})).number, std::nullopt);
    EXPECT_EQ(decoded<Absent>(encoded(Absent())).number, 5);
}

TEST(Codable, AllOtherMembersMustBeThere) {
    const auto first = decodingErrorOf<Address>(R"({"number":7})");
    EXPECT_EQ(first.kind(), JSONError::Kind::missingMember);
    EXPECT_EQ(first.path(), "$.street");
    EXPECT_EQ(first.message(), "is missing");
    EXPECT_EQ(decodingErrorOf<Address>(R"({"street":"A"})").path(), "$.number");
    EXPECT_EQ(decodingErrorOf<Profile>(R"({"name":"Ada","addresses":[]})").path(), "$.byName");
    EXPECT_EQ(decodingErrorOf<Address>(R"({"street":null,"number":7})").kind(),
              JSONError::Kind::typeMismatch);
}

TEST(Codable, MissingMembersOfInnerObjectsAreNamedByTheWholePath) {
    EXPECT_EQ(decodingErrorOf<Profile>(
                  R"({"name":"Ada","addresses":[{"street":"A","number":1},{"street":"B"}],"byName":{}})")
                  .path(),
              "$.addresses[1].number");
    EXPECT_EQ(
        decodingErrorOf<Profile>(R"({"name":"Ada","addresses":[],"byName":{"at home":{"number":1}}})").path(),
        R"($.byName["at home"].street)");
}

TEST(Codable, ListByUniquePointersComesBack) {
    Node list{1, std::make_unique<Node>(2, std::make_unique<Node>(3, nullptr))};
    const std::string text = encoded(list);
    EXPECT_EQ(text, R"({"value":1,"next":{"value":2,"next":{"value":3}}})");
    const auto again = decoded<Node>(text);
    EXPECT_EQ(again.next->next->value, 3);
    EXPECT_EQ(again.next->next->next, nullptr);
    EXPECT_EQ(encoded(again), text);
}

TEST(Codable, TreeBySharedPointersAndVectorsComesBack) {
    const Tree leaf{"leaf", {}, nullptr};
    const Tree tree{
        "root", {leaf, {"branch", {leaf}, std::make_shared<Tree>(leaf)}}, std::make_shared<Tree>(leaf)};
    const std::string text = encoded(tree);
    const auto again = decoded<Tree>(text);
    EXPECT_EQ(again.children[1].twin->name, "leaf");
    EXPECT_EQ(again.children[0].twin, nullptr);
    EXPECT_EQ(encoded(again), text);
}

TEST(Codable, MembersOfABaseAreMembers) {
    Derived value;
    value.inherited = 1;
    value.own = 2;
    EXPECT_EQ(encoded(value), R"({"inherited":1,"own":2})");
    EXPECT_EQ(decoded<Derived>(R"({"own":4,"inherited":3})").inherited, 3);
}

TEST(Codable, TypeThatDerivesFromADescribedOneIsAsItIsDescribedItself) {
    Redescribed value;
    value.only = 1;
    value.own = 2;
    EXPECT_EQ(encoded(value), R"({"only":1,"own":2})");
    EXPECT_EQ(decoded<Redescribed>(R"({"only":3,"own":4})").own, 4);
}

TEST(Codable, TypesWithinClassesAreDescribedBesideThese) {
    Outer outer;
    outer.inner = {1, {}};
    outer.inner.innermost.deeper = 2;
    const std::string text = encoded(outer);
    EXPECT_EQ(text, R"({"inner":{"deep":1,"innermost":{"deeper":2}}})");
    EXPECT_EQ(decoded<Outer>(text).inner.innermost.deeper, 2);
}

TEST(Codable, TypesInOtherNamespacesAreDescribedThere) {
    using company::product::details::Version;
    EXPECT_EQ(encoded(std::vector<Version>{{1, 2}}), R"([{"major":1,"minor":2}])");
    EXPECT_EQ(decoded<Version>(R"({"major":1,"minor":2})"), (Version{1, 2}));
}

TEST(Codable, NullIsNoDescribedType) {
    const auto error = decodingErrorOf<Profile>("null");
    EXPECT_EQ(error.kind(), JSONError::Kind::typeMismatch);
    EXPECT_EQ(error.message(), "expected an object, found null");
    EXPECT_EQ(decodingErrorOf<std::vector<Address>>("[null]").path(), "$[0]");
}
