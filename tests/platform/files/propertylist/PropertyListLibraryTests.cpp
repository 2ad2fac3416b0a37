// SPDX-License-Identifier: Apache-2.0
// Another implementation of the form reads what we write, and we read what it writes.

#include "platform/files/PropertyList.h"

#include "tests/platform/files/propertylist/RandomValues.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <span>
#include <string>

using namespace vorlan;

namespace {

struct FreeList {
    void operator()(void* list) const { plist_free(list); }
};
using List = std::unique_ptr<void, FreeList>;

List parsed(const Data& bytes) {
    plist_t list = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()),
                   &list);
    return List(list);
}

Data binaryOf(const List& list) {
    char* bytes = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(list.get(), &bytes, &size);
    const auto part = std::as_bytes(std::span(bytes, size));
    Data data(part.begin(), part.end());
    plist_to_bin_free(bytes);
    return data;
}

// The library's own XML, for comparison and to be read.
std::string xmlOf(const List& list) {
    char* text = nullptr;
    std::uint32_t size = 0;
    plist_to_xml(list.get(), &text, &size);
    std::string copy(text, size);
    plist_to_xml_free(text);
    return copy;
}

Value sample() {
    return Value::Dictionary{
        {"flags", Value::Array{true, false}},
        {"integers", Value::Array{0, 255, 256, 65'536, -1, std::numeric_limits<std::int64_t>::max()}},
        {"numbers", Value::Array{0.1, -2.5, 1e300}},
        {"when", Date(700'000'000)},
        {"texts", Value::Array{"ascii", "gr\xC3\xBC\xC3\x9F", "\xF0\x9F\x98\x80", ""}},
        {"bytes", dataFromText("abc")},
        {"nothing", Value::Array{Value::Array(), Value::Dictionary()}},
    };
}

} // namespace

TEST(PropertyListLibrary, ReadsWhatWeWrite) {
    const auto list = parsed(writeBinaryPropertyList(sample()));
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(plist_get_node_type(list.get()), PLIST_DICT);
    std::uint64_t integer = 0;
    plist_get_uint_val(plist_array_get_item(plist_dict_get_item(list.get(), "integers"), 3), &integer);
    EXPECT_EQ(integer, 65'536U);
    double number = 0;
    plist_get_real_val(plist_array_get_item(plist_dict_get_item(list.get(), "numbers"), 1), &number);
    EXPECT_EQ(number, -2.5);
    char* text = nullptr;
    plist_get_string_val(plist_array_get_item(plist_dict_get_item(list.get(), "texts"), 2), &text);
    EXPECT_STREQ(text, "\xF0\x9F\x98\x80");
    std::free(text);
}

TEST(PropertyListLibrary, ItsBinaryFormIsRead) {
    const auto list = parsed(writeBinaryPropertyList(sample()));
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(readPropertyList(binaryOf(list)), sample());
}

TEST(PropertyListLibrary, ItsXMLIsRead) {
    const auto list = parsed(writeBinaryPropertyList(sample()));
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(readPropertyList(dataFromText(xmlOf(list))), sample());
}

TEST(PropertyListLibrary, WhatItMakesItselfIsRead) {
    const List list(plist_new_dict());
    plist_dict_set_item(list.get(), "text", plist_new_string("gr\xC3\xBC\xC3\x9F"));
    plist_dict_set_item(list.get(), "flag", plist_new_bool(1));
    plist_dict_set_item(list.get(), "integer", plist_new_uint(std::uint64_t{1} << 40));
    plist_dict_set_item(list.get(), "number", plist_new_real(0.1));
    plist_dict_set_item(list.get(), "data", plist_new_data("abc", 3));
    plist_dict_set_item(list.get(), "uid", plist_new_uid(7));
    plist_t array = plist_new_array();
    for (int i = 0; i < 300; ++i) plist_array_append_item(array, plist_new_string("the same"));
    plist_dict_set_item(list.get(), "array", array);
    const Value expected(Value::Dictionary{{"text", "gr\xC3\xBC\xC3\x9F"},
                                           {"flag", true},
                                           {"integer", std::int64_t{1} << 40},
                                           {"number", 0.1},
                                           {"data", dataFromText("abc")},
                                           {"uid", Value::Dictionary{{"CF$UID", 7}}},
                                           {"array", Value::Array(300, Value("the same"))}});
    EXPECT_EQ(readPropertyList(binaryOf(list)), expected);
}

TEST(PropertyListLibrary, ReadsTheSameAsWeDoFromRandomValues) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    tests::RandomValues values(seed);
    for (int i = 0; i < 500; ++i) {
        // It stops at characters that end a text in C, and its dates have 32 bits: the rest is compared.
        Value::Array array;
        for (int j = 0; j < 8; ++j) {
            const auto value = values.next(0);
            const auto kind = value.kind();
            if (kind == Value::Kind::boolean || kind == Value::Kind::integer || kind == Value::Kind::number ||
                kind == Value::Kind::data)
                array.push_back(value);
        }
        const auto list = parsed(writeBinaryPropertyList(array));
        ASSERT_NE(list, nullptr);
        ASSERT_EQ(readPropertyList(binaryOf(list)), Value(array)) << i;
    }
}
