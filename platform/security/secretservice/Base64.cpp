// SPDX-License-Identifier: Apache-2.0
#include "platform/security/secretservice/Base64.h"

#include <openssl/evp.h>

#include <limits>

namespace vorlan::security::secretservice {

namespace {

const unsigned char* unsignedBytes(const void* bytes) {
    return static_cast<const unsigned char*>(bytes);
}

std::size_t paddingOf(std::string_view text) {
    const auto end = text.find_last_not_of('=');
    return end == std::string_view::npos ? text.size() : text.size() - end - 1;
}

} // namespace

void appendBase64(std::string& text, std::span<const std::byte> bytes) {
    const auto start = text.size();
    // The coder writes a final zero.
    text.resize(start + base64Length(bytes.size()) + 1);
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data() + start), unsignedBytes(bytes.data()),
                    static_cast<int>(bytes.size()));
    text.pop_back();
}

std::optional<Data> fromBase64(std::string_view text) {
    const auto padding = paddingOf(text);
    const bool isTooLong = text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max());
    if (isTooLong || text.size() % 4 != 0 || padding > 2) return std::nullopt;
    // The decoder takes padding for zeros wherever it stands, and leaves blanks around the text out.
    if (text.substr(0, text.size() - padding).find('=') != std::string_view::npos) return std::nullopt;
    Data bytes(text.size() / 4 * 3);
    const int count = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                                      unsignedBytes(text.data()), static_cast<int>(text.size()));
    if (count < 0 || static_cast<std::size_t>(count) != bytes.size()) return std::nullopt;
    bytes.resize(bytes.size() - padding);
    return bytes;
}

} // namespace vorlan::security::secretservice
