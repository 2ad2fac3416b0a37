// SPDX-License-Identifier: Apache-2.0
#include "platform/files/PropertyList.h"

#include "tests/platform/files/propertylist/PropertyListBytes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

using namespace vorlan;
using vorlan::tests::refusalOfList;

namespace {

const std::string start = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0">
)";

std::string xml(std::string_view content) {
    return start + std::string(content) + "\n</plist>\n";
}

Value read(std::string_view text) {
    return readPropertyList(dataFromText(text));
}

} // namespace

TEST(PropertyList, XMLOfAllKindsIsRead) {
    EXPECT_EQ(read(xml("<true/>")), Value(true));
    EXPECT_EQ(read(xml("<false/>")), Value(false));
    EXPECT_EQ(read(xml("<integer>-42</integer>")), Value(-42));
    EXPECT_EQ(read(xml("<real>0.1</real>")), Value(0.1));
    EXPECT_EQ(read(xml("<string>gr\xC3\xBC\xC3\x9F &lt;&amp;&gt;</string>")),
              Value("gr\xC3\xBC\xC3\x9F <&>"));
    EXPECT_EQ(read(xml("<string></string>")), Value(""));
    EXPECT_EQ(read(xml("<data>YWJj</data>")), Value(dataFromText("abc")));
    EXPECT_EQ(read(xml("<date>2024-03-05T14:07:09Z</date>")).description(), "2024-03-05 14:07:09 +0000");
    EXPECT_EQ(read(xml("<array><integer>1</integer><string>b</string></array>")),
              Value(Value::Array{1, "b"}));
    EXPECT_EQ(read(xml("<dict><key>a</key><integer>1</integer><key>b</key><dict/></dict>")),
              Value(Value::Dictionary{{"a", 1}, {"b", Value::Dictionary()}}));
}

TEST(PropertyList, IntegersInXMLKeepTheirSignAndSize) {
    EXPECT_EQ(read(xml("<integer>9223372036854775807</integer>")),
              Value(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(read(xml("<integer>-9223372036854775808</integer>")),
              Value(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(read(xml("<integer>18446744073709551615</integer>")),
              Value(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ(read(xml("<integer>0</integer>")), Value(0));
}

TEST(PropertyList, ByteOrderMarkAndLeadingBlanksArePassedOver) {
    const auto list = xml("<string>a</string>");
    EXPECT_EQ(read("\xEF\xBB\xBF" + list), Value("a"));
    EXPECT_EQ(read(" \t\r\n" + list), Value("a"));
    EXPECT_EQ(read("\xEF\xBB\xBF\n\n" + list), Value("a"));
}

TEST(PropertyList, DocumentTypeAndCommentsArePassedOver) {
    EXPECT_EQ(read("<!DOCTYPE plist>\n<!-- a note --><plist version=\"1.0\"><!-- another "
                   "--><integer>7</integer></plist>"),
              Value(7));
}

TEST(PropertyList, BinaryFormIsRecognised) {
    EXPECT_EQ(readPropertyList(writeBinaryPropertyList(Value::Array{1, "a"})), Value(Value::Array{1, "a"}));
}

TEST(PropertyList, NothingIsNoPropertyList) {
    const std::string refusal = "it is no property list";
    for (const std::string_view text : {"", " ", "\n\n\t", "\xEF\xBB\xBF", "\xEF\xBB\xBF \n", "\xEF\xBB"})
        EXPECT_EQ(refusalOfList(dataFromText(text)), refusal) << ::testing::PrintToString(text);
}

TEST(PropertyList, NonsenseIsRefused) {
    EXPECT_EQ(refusalOfList(dataFromText("hello")), "it is no property list");
    EXPECT_EQ(refusalOfList(dataFromText("{\"a\": 1}")), "it is no property list");
    EXPECT_EQ(refusalOfList(dataFromText("bplist0")), "it is no property list");
    EXPECT_EQ(refusalOfList(dataFromText("bplist01" + std::string(40, 'x'))), "it is no property list");
    EXPECT_EQ(refusalOfList(dataFromText("bplist00")), "it is no binary property list");
    EXPECT_EQ(refusalOfList(dataFromText(" bplist00")), "it is no property list");
}

TEST(PropertyList, XMLThatIsNoPropertyListIsRefused) {
    const std::string refusal = "it is no property list in XML";
    for (const std::string_view text :
         {"<", "<<<<", "<a/>", "<plist", "<plist><unknown/></plist>", "<html><body>hello</body></html>"})
        EXPECT_EQ(refusalOfList(dataFromText(text)), refusal) << text;
    EXPECT_EQ(refusalOfList(dataFromText(start + "<array><integer>1</integer>")), refusal);
    EXPECT_EQ(refusalOfList(dataFromText(start + "<dict>")), refusal);
}

// libplist makes one object of them, which few bytes refer to.
TEST(PropertyList, XMLMayHoldOneTextOverAndOver) {
    std::string elements;
    for (int i = 0; i < 5000; ++i) elements += "<string>a text of thirty characters ..</string>";
    EXPECT_EQ(read(xml("<array>" + elements + "</array>")).array()->size(), 5000U);
}

TEST(PropertyList, XMLCutShortAnywhereDoesNoHarm) {
    const auto list = xml("<dict><key>a</key><array><integer>1</integer><data>YWJj</data></array></dict>");
    const auto whole = read(list);
    for (std::size_t size = 0; size < list.size(); ++size) {
        // What is after the end of the content may be missing.
        const auto refusal = refusalOfList(dataFromText(std::string_view(list).substr(0, size)));
        EXPECT_TRUE(refusal.starts_with("it is no property list") || size >= list.find("</dict>")) << size;
    }
    EXPECT_EQ(whole["a"][0], Value(1));
}
