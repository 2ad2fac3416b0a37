// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/defaults/ForeignPropertyList.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <fstream>
#include <iterator>
#include <memory>

namespace vorlan::tests {

namespace {

struct FreeList {
    void operator()(void* list) const { plist_free(list); }
};

using List = std::unique_ptr<void, FreeList>;

List readBinary(const std::string& bytes) {
    plist_t list = nullptr;
    plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &list);
    return List(list);
}

// Takes the indentation out, which differs between versions.
std::string withoutIndentation(const std::string& xml) {
    std::string out;
    bool isLineStart = true;
    for (const char c : xml) {
        if (c == '\n') isLineStart = true;
        if (c == '\n' || (isLineStart && (c == '\t' || c == ' '))) continue;
        isLineStart = false;
        out += c;
    }
    return out;
}

} // namespace

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void replaceFile(const std::filesystem::path& path, std::string_view content) {
    std::filesystem::create_directories(path.parent_path());
    const auto fresh = path.parent_path() / "edited";
    std::ofstream(fresh, std::ios::binary) << content;
    std::filesystem::rename(fresh, path);
}

std::string xmlList(std::string_view entries) {
    return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)" + std::string(entries) +
           "</dict></plist>\n";
}

std::string foreignBinary(const std::string& xml) {
    plist_t parsed = nullptr;
    plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &parsed);
    const List list(parsed);
    EXPECT_NE(list, nullptr);
    char* binary = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(list.get(), &binary, &size);
    std::string bytes(binary, size);
    plist_to_bin_free(binary);
    return bytes;
}

std::optional<std::string> foreignXML(const std::string& binary) {
    const auto list = readBinary(binary);
    if (!list) return std::nullopt;
    char* xml = nullptr;
    std::uint32_t size = 0;
    plist_to_xml(list.get(), &xml, &size);
    std::string text(xml, size);
    plist_to_xml_free(xml);
    return withoutIndentation(text);
}

std::optional<std::optional<std::uint64_t>> foreignInteger(const std::string& binary,
                                                           const std::string& key) {
    const auto list = readBinary(binary);
    if (!list || plist_get_node_type(list.get()) != PLIST_DICT) return std::nullopt;
    std::uint64_t number = 0;
    const plist_t item = plist_dict_get_item(list.get(), key.c_str());
    if (item == nullptr || plist_get_node_type(item) != PLIST_UINT)
        return std::optional<std::optional<std::uint64_t>>(std::in_place, std::nullopt);
    plist_get_uint_val(item, &number);
    return std::optional<std::uint64_t>(number);
}

} // namespace vorlan::tests
