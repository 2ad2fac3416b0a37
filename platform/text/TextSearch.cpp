// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/TextSearch.h>

#include "platform/text/FoldedSearch.h"
#include "platform/text/FoldedText.h"
#include "platform/text/NeedleMatcher.h"
#include "platform/text/RegularExpression.h"
#include "platform/values/UTF8.h"

#include <cstring>
#include <string>
#include <vector>

namespace vorlan {

namespace {

using Found = std::optional<TextRange>;

// Takes no longer for hostile texts, unlike the standard library's search.
Found firstBytes(std::string_view text, std::string_view needle) {
    const auto* at = static_cast<const char*>(memmem(text.data(), text.size(), needle.data(), needle.size()));
    if (at == nullptr) return std::nullopt;
    return TextRange{static_cast<std::size_t>(at - text.data()), needle.size()};
}

// Has `accept` choose among all places.
template <class Accept>
Found firstBytes(std::string_view text, std::string_view needle, Accept&& accept) {
    NeedleMatcher matcher(std::vector<char>(needle.begin(), needle.end()));
    for (std::size_t at = 0; at < text.size(); ++at)
        if (matcher.feed(text[at]))
            if (const TextRange part{at + 1 - needle.size(), needle.size()}; accept(part)) return part;
    return std::nullopt;
}

template <class Accept>
Found lastBytes(std::string_view text, std::string_view needle, Accept&& accept) {
    NeedleMatcher matcher(std::vector<char>(needle.rbegin(), needle.rend()));
    for (auto at = text.size(); at-- > 0;)
        if (matcher.feed(text[at]))
            if (const TextRange part{at, needle.size()}; accept(part)) return part;
    return std::nullopt;
}

template <class Accept>
Found bytesAtEnd(std::string_view text, std::string_view needle, bool isBackwards, Accept&& accept) {
    if (!(isBackwards ? text.ends_with(needle) : text.starts_with(needle))) return std::nullopt;
    const TextRange part{isBackwards ? text.size() - needle.size() : 0, needle.size()};
    return accept(part) ? Found(part) : std::nullopt;
}

Found rangeOfBytes(std::string_view text, std::string_view needle, CompareOptions options) {
    const auto accept = [](TextRange) { return true; };
    const bool isBackwards = contains(options, CompareOptions::backwards);
    if (contains(options, CompareOptions::anchored)) return bytesAtEnd(text, needle, isBackwards, accept);
    return isBackwards ? lastBytes(text, needle, accept) : firstBytes(text, needle);
}

// Of composed texts, where parts that are the same are the same bytes.
Found rangeInComposed(std::string_view text, std::string_view needle, CompareOptions options) {
    const auto accept = [text](TextRange part) {
        return isBetweenCharacters(text, part.offset) && isBetweenCharacters(text, part.offset + part.length);
    };
    const bool isBackwards = contains(options, CompareOptions::backwards);
    if (contains(options, CompareOptions::anchored)) return bytesAtEnd(text, needle, isBackwards, accept);
    return isBackwards ? lastBytes(text, needle, accept) : firstBytes(text, needle, accept);
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

// Whether characters count as they stand, but for their equivalent forms.
bool isExact(CompareOptions options) {
    using enum CompareOptions;
    for (const auto option : {caseInsensitive, diacriticInsensitive, widthInsensitive, numeric})
        if (contains(options, option)) return false;
    return true;
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
    const bool isLiteral = contains(options, CompareOptions::literal);
    // An ill-formed needle's bytes can also be within a character.
    if (isExact(options) && isLiteral && utf8::isWellFormed(needle))
        return rangeOfBytes(text, needle, options);
    const bool countsNumbers = contains(options, CompareOptions::numeric);
    if (!countsNumbers && utf8::isASCII(needle) && utf8::isASCII(text))
        return rangeInASCII(text, needle, options);
    if (isExact(options) && !isLiteral && isComposed(needle) && isComposed(text))
        return rangeInComposed(text, needle, options);
    return FoldedSearch(needle, options).find(text);
}

} // namespace vorlan
