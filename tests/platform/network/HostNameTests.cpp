// SPDX-License-Identifier: Apache-2.0
#include "platform/network/HostName.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

namespace vorlan::network {
namespace {

using namespace std::string_literals;

// A name of that many bytes, in labels of at most 63.
std::string nameOfSize(std::size_t size) {
    std::string name(size, 'a');
    for (std::size_t dot = 63; dot < size; dot += 64) name[dot] = '.';
    return name;
}

TEST(HostName, PlainNamesAreTakenAsTheyAre) {
    for (const char* name : {"example.org", "localhost", "example.org.", "EXAMPLE.org", "a",
                             "_ldap._tcp.test", "my host", "1.2.3", "xn--bcher-kva.example"})
        EXPECT_EQ(resolvableName(name), name);
}

TEST(HostName, EmptyNameIsNone) {
    EXPECT_EQ(resolvableName(""), std::nullopt);
    EXPECT_EQ(resolvableName("."), std::nullopt);
}

TEST(HostName, LengthIsLimitedAndAFinalDotDoesNotCount) {
    const auto longest = nameOfSize(longestHostName);
    EXPECT_EQ(resolvableName(longest), longest);
    EXPECT_EQ(resolvableName(longest + "."), longest + ".");
    EXPECT_EQ(resolvableName(longest + "a"), std::nullopt);
    EXPECT_EQ(resolvableName(longest + "a."), std::nullopt);
    EXPECT_EQ(resolvableName(longest + ".."), std::nullopt);
    EXPECT_EQ(resolvableName(std::string(100'000, 'a')), std::nullopt);
}

TEST(HostName, NameWithANulIsNone) {
    EXPECT_EQ(resolvableName("example.org\0.test"s), std::nullopt);
    EXPECT_EQ(resolvableName("\0"s), std::nullopt);
    EXPECT_EQ(resolvableName("example.org\0"s), std::nullopt);
}

TEST(HostName, NameThatIsNotWellFormedIsNone) {
    EXPECT_EQ(resolvableName("b\xfc"s + "cher.example"), std::nullopt);
    EXPECT_EQ(resolvableName("\xc3"), std::nullopt);
    EXPECT_EQ(resolvableName("\xed\xa0\x80.example"), std::nullopt); // half of a surrogate pair
    EXPECT_EQ(resolvableName("\xc0\xaf.example"), std::nullopt);     // longer than it need be
}

TEST(HostName, LettersBeyondASCIIAreEncoded) {
    EXPECT_EQ(resolvableName("bücher.example"), "xn--bcher-kva.example");
    EXPECT_EQ(resolvableName("BÜCHER.example"), "xn--bcher-kva.example");
    EXPECT_EQ(resolvableName("www.bücher.example."), "www.xn--bcher-kva.example.");
}

TEST(HostName, ViewNeedNotEndInANul) {
    const std::string_view text = "bücher.example and more";
    EXPECT_EQ(resolvableName(text.substr(0, text.find(' '))), "xn--bcher-kva.example");
    EXPECT_EQ(resolvableName(std::string_view("example.org").substr(0, 7)), "example");
}

TEST(HostName, LengthCountsInTheEncodedForm) {
    std::string name;
    for (int label = 0; label < 25; ++label) name += "äöü"s + std::to_string(label) + ".";
    ASSERT_LE(name.size(), longestHostName);
    EXPECT_EQ(resolvableName(name), std::nullopt);
}

TEST(HostName, LabelThatIsTooLongToBeEncodedIsNone) {
    std::string label;
    for (int i = 0; i < 80; ++i) label += "ü";
    EXPECT_EQ(resolvableName(label + ".example"), std::nullopt);
}

} // namespace
} // namespace vorlan::network
