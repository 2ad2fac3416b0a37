// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Describe.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

using namespace vorlan;

namespace {

struct Base {
    virtual ~Base() = default;
};
struct Derived : Base {};
struct Plain {
    struct Inner {};
};
template <class T>
struct Box {
    template <class U>
    struct Lid {};
};
struct Named {
    std::string description() const { return "a name"; }
};

} // namespace

TEST(Describe, NumbersReadBackAsTheSameNumber) {
    EXPECT_EQ(describe(0), "0");
    EXPECT_EQ(describe(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(describe(1.0), "1.0");
    EXPECT_EQ(describe(0.1), "0.1");
    EXPECT_EQ(describe(0.1F), "0.1");
    EXPECT_EQ(describe(-0.0), "-0.0");
    EXPECT_EQ(describe(1e300), "1e+300");
    EXPECT_EQ(describe(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(describe(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(describe(std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(std::stod(describe(0.1 + 0.2)), 0.1 + 0.2);
}

TEST(Describe, BooleansTextsAndAbsentValues) {
    EXPECT_EQ(describe(true), "true");
    EXPECT_EQ(describe(false), "false");
    EXPECT_EQ(describe(std::string("text")), "text");
    EXPECT_EQ(describe("text"), "text");
    EXPECT_EQ(describe(std::string_view("te\0xt", 5)), std::string("te\0xt", 5));
    EXPECT_EQ(describe(static_cast<const char*>(nullptr)), "nil");
    EXPECT_EQ(describe(nullptr), "nil");
    EXPECT_EQ(describe(std::optional<int>(3)), "3");
    EXPECT_EQ(describe(std::optional<int>()), "nil");
    EXPECT_EQ(describe(std::shared_ptr<Plain>()), "nil");
}

TEST(Describe, ObjectsDescribeThemselvesOrAreNamedWithTheirAddress) {
    EXPECT_EQ(describe(Named()), "a name");
    EXPECT_EQ(describe(std::make_shared<Named>()), "a name");
    const std::shared_ptr<Base> object = std::make_shared<Derived>();
    EXPECT_TRUE(describe(object).ends_with("Derived: " + describeAddress(object.get()) + ">"))
        << describe(object);
    EXPECT_TRUE(describe(Plain()).ends_with("Plain")) << describe(Plain());
}

TEST(Describe, AddressesHaveSixteenLowercaseDigits) {
    EXPECT_EQ(describeAddress(nullptr), "0x0000000000000000");
    EXPECT_EQ(describeAddress(reinterpret_cast<const void*>(std::uintptr_t{0xABC123})), "0x0000000000abc123");
    EXPECT_EQ(describeAddress(reinterpret_cast<const void*>(~std::uintptr_t{0})), "0xffffffffffffffff");
}

TEST(Describe, EveryIllFormedByteSequenceIsShownAsAReplacementCharacter) {
    const std::string bad = "\xEF\xBF\xBD";
    EXPECT_EQ(describe(std::string("gr\xC3\xBC\xC3\x9F dich \xF0\x9F\x98\x80")),
              "gr\xC3\xBC\xC3\x9F dich \xF0\x9F\x98\x80");
    EXPECT_EQ(describe(std::string("\xEF\xBF\xBD")), bad);
    EXPECT_EQ(describe(std::string("a\xFF"
                                   "b")),
              "a" + bad + "b");
    EXPECT_EQ(describe(std::string("\x80")), bad);
    EXPECT_EQ(describe(std::string("\xC3")), bad);
    EXPECT_EQ(describe(std::string("\xC3(")), bad + "(");
    EXPECT_EQ(describe(std::string("\xC0\xAF")), bad + bad);                     // over-long
    EXPECT_EQ(describe(std::string("\xE0\x80\xAF")), bad + bad + bad);           // over-long
    EXPECT_EQ(describe(std::string("\xED\xA0\x80")), bad + bad + bad);           // a surrogate
    EXPECT_EQ(describe(std::string("\xF4\x90\x80\x80")), bad + bad + bad + bad); // beyond U+10FFFF
    EXPECT_EQ(describe(std::string("\xF0\x9F\x98")), bad);                       // cut short
    EXPECT_EQ(describe(std::string("\xF0\x9F\x98z")), bad + "z");
}

TEST(Describe, UnqualifiedNameOfATypeStandsAlone) {
    struct Local {};
    using detail::unqualifiedTypeName;
    EXPECT_EQ(unqualifiedTypeName(typeid(int)), "int");
    EXPECT_EQ(unqualifiedTypeName(typeid(Plain)), "Plain");
    EXPECT_EQ(unqualifiedTypeName(typeid(Plain::Inner)), "Inner");
    EXPECT_EQ(unqualifiedTypeName(typeid(Local)), "Local");
    EXPECT_EQ(unqualifiedTypeName(typeid(Box<int>)), "Box<int>");
    EXPECT_EQ(unqualifiedTypeName(typeid(Box<int>::Lid<long>)), "Lid<long>");
}
