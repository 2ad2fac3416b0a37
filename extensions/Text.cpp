// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Extensions/Text.h>

#include "platform/security/Digest.h"
#include "platform/text/RegularExpression.h"
#include "platform/values/UTF8.h"

#include <algorithm>
#include <memory>
#include <span>

namespace vorlan {

namespace {

using security::DigestAlgorithm;

std::string digestOf(std::string_view text, DigestAlgorithm algorithm) {
    if (!utf8::isWellFormed(text)) return {};
    return security::digest(algorithm, std::as_bytes(std::span(text)));
}

// The sign of C's comparison of texts is all that C promises; the number is what is asked for here.
int firstDifference(std::string_view a, std::string_view b) {
    const auto byte = [](std::string_view text, std::size_t at) {
        return at < text.size() ? static_cast<int>(static_cast<unsigned char>(text[at])) : 0;
    };
    std::size_t at = 0;
    while (byte(a, at) == byte(b, at) && byte(a, at) != 0) ++at;
    return byte(a, at) - byte(b, at);
}

} // namespace

std::string text::md5String(std::string_view text) {
    return digestOf(text, DigestAlgorithm::md5);
}

std::string text::sha1String(std::string_view text) {
    return digestOf(text, DigestAlgorithm::sha1);
}

std::string text::sha224String(std::string_view text) {
    return digestOf(text, DigestAlgorithm::sha224);
}

std::string text::sha256String(std::string_view text) {
    return digestOf(text, DigestAlgorithm::sha256);
}

std::string text::sha384String(std::string_view text) {
    return digestOf(text, DigestAlgorithm::sha384);
}

std::string text::sha512String(std::string_view text) {
    return digestOf(text, DigestAlgorithm::sha512);
}

std::optional<std::string> text::string(std::string_view text, AfterLast part) {
    const auto found = rangeOfText(text, part.afterLast, part.options);
    if (!found) return std::nullopt;
    return std::string(text.substr(found->offset + found->length));
}

bool text::isEmail(std::string_view text) {
    // Never destroyed: other threads may ask until the process ends.
    static const auto& address = *new std::shared_ptr(RegularExpression::forPattern(
        R"([A-Z0-9a-z._%+-]+@[A-Za-z0-9.-]+\.[A-Za-z]{2,64})", /*ignoresCase=*/false));
    return utf8::isWellFormed(text) && address && address->matches(text);
}

bool text::contains(std::string_view text, std::string_view other) {
    return rangeOfText(text, other).has_value();
}

bool text::containsBackspace(std::string_view text) {
    constexpr int endBeforeBackslash = -'\\';
    return utf8::isWellFormed(text) && firstDifference(text, "\\b") == endBeforeBackslash;
}

} // namespace vorlan
