// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/TextSearch.h>

#include "platform/text/FoldedSearch.h"
#include "platform/text/NeedleMatcher.h"
#include "platform/text/RegularExpression.h"
#include "platform/values/UTF8.h"

#include <cstring>
#include <string>
#include <vector>

namespace vorlan {

namespace {

using Found = std::optional<TextRange>;

Found firstBytes(std::string_view text, std::string_view needle) {
    // Takes no longer for hostile texts, unlike the standard library's search.
    const auto* at = static_cast<const char*>(memmem(text.data(), text.size(), needle.data(), needle.size()));
    if (at == nullptr) return std::nullopt;
    return TextRange{static_cast<std::size_t>(at - text.data()), needle.size()};
}

Found lastBytes(std::string_view text, std::string_view needle) {
    NeedleMatcher matcher(std::vector<char>(needle.rbegin(), needle.rend()));
    for (auto at = text.size(); at-- > 0;)
        if (matcher.feed(text[at])) return TextRange{at, needle.size()};
    return std::nullopt;
}

Found rangeOfBytes(std::string_view text, std::string_view needle, CompareOptions options) {
    const bool isBackwards = contains(options, CompareOptions::backwards);
    if (!contains(options, CompareOptions::anchored))
        return isBackwards ? lastBytes(text, needle) : firstBytes(text, needle);
    if (!(isBackwards ? text.ends_with(needle) : text.starts_with(needle))) return std::nullopt;
    return TextRange{isBackwards ? text.size() - needle.size() : 0, needle.size()};
}

std::string lowered(std::string_view text) {
    std::string result(text);
    for (auto& c : result)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return result;
}

// In ASCII, nothing but the case can be ignored.
Found rangeInASCII(std::string_view text, std::string_view needle, CompareOptions options) {
    if (!contains(options, CompareOptions::caseInsensitive)) return rangeOfBytes(text, needle, options);
    return rangeOfBytes(lowered(text), lowered(needle), options);
}

// Whether the needle is where its bytes are. Those of ill-formed ones can also be within a character.
bool isByBytes(std::string_view needle, CompareOptions options) {
    using enum CompareOptions;
    for (const auto option : {caseInsensitive, diacriticInsensitive, widthInsensitive, numeric})
        if (contains(options, option)) return false;
    return contains(options, literal) && utf8::isWellFormed(needle);
}

} // namespace

Found rangeOfText(std::string_view text, std::string_view needle, CompareOptions options) {
    if (needle.empty()) return std::nullopt;
    if (contains(options, CompareOptions::regularExpression)) {
        const auto pattern =
            RegularExpression::forPattern(needle, contains(options, CompareOptions::caseInsensitive));
        return pattern ? pattern->find(text, contains(options, CompareOptions::anchored)) : std::nullopt;
    }
    if (text.empty()) return std::nullopt;
    if (isByBytes(needle, options)) return rangeOfBytes(text, needle, options);
    const bool countsNumbers = contains(options, CompareOptions::numeric);
    if (!countsNumbers && utf8::isASCII(needle) && utf8::isASCII(text))
        return rangeInASCII(text, needle, options);
    return FoldedSearch(needle, options).find(text);
}

} // namespace vorlan
