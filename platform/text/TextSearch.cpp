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

Found rangeOfBytes(std::string_view text, std::string_view needle, CompareOptions options) {
    const bool isBackwards = contains(options, CompareOptions::backwards);
    if (contains(options, CompareOptions::anchored)) {
        if (!(isBackwards ? text.ends_with(needle) : text.starts_with(needle))) return std::nullopt;
        return TextRange{isBackwards ? text.size() - needle.size() : 0, needle.size()};
    }
    return isBackwards ? lastBytes(text, needle, [](TextRange) { return true; }) : firstBytes(text, needle);
}

std::string lowered(std::string_view text) {
    std::string result(text);
    for (auto& c : result)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return result;
}

// Whether characters count as they stand, but for their equivalent forms.
bool isExact(CompareOptions options) {
    using enum CompareOptions;
    for (const auto option : {caseInsensitive, diacriticInsensitive, widthInsensitive, numeric})
        if (contains(options, option)) return false;
    return true;
}

// The search of texts that need no folding, as most: of ASCII, where only the case can be ignored, and of composed ones,
// whose parts are equivalent only where they are the same bytes.
class PlainSearch {
public:
    PlainSearch(std::string_view needle, CompareOptions options)
        : needle_(contains(options, CompareOptions::caseInsensitive) ? lowered(needle) : needle),
          options_(options),
          mayBeComposed_(isExact(options) && !contains(options, CompareOptions::literal)),
          isUsable_(!contains(options, CompareOptions::numeric) && isPlain(needle)) {}

    // Absent where it cannot tell. Reads growing parts of the text from the end that the search begins at, as what is
    // looked for is often near it.
    std::optional<Found> find(std::string_view text) const {
        if (!isUsable_) return std::nullopt;
        const TextFolding folding(options_);
        const bool isBackwards = contains(options_, CompareOptions::backwards);
        for (std::size_t size = 1024;; size *= 4) {
            const bool isWhole = size >= text.size();
            const auto cut = isWhole ? 0 : folding.cut(text, isBackwards ? text.size() - size : size);
            const auto part = isWhole ? text : isBackwards ? text.substr(cut) : text.substr(0, cut);
            if (!isPlain(part)) return std::nullopt;
            if (auto found = findIn(part)) {
                if (isBackwards) found->offset += text.size() - part.size();
                return found;
            }
            if (part.size() == text.size()) return Found();
        }
    }

private:
    bool isPlain(std::string_view text) const {
        return utf8::isASCII(text) || (mayBeComposed_ && isComposed(text));
    }

    Found findIn(std::string_view part) const {
        if (contains(options_, CompareOptions::caseInsensitive))
            return rangeOfBytes(lowered(part), needle_, options_);
        if (utf8::isASCII(part)) return rangeOfBytes(part, needle_, options_);
        const auto accept = [part](TextRange found) {
            return isBetweenCharacters(part, found.offset) &&
                   isBetweenCharacters(part, found.offset + found.length);
        };
        return contains(options_, CompareOptions::backwards) ? lastBytes(part, needle_, accept)
                                                             : firstBytes(part, needle_, accept);
    }

    std::string needle_;
    CompareOptions options_;
    bool mayBeComposed_;
    bool isUsable_;
};

} // namespace

Found rangeOfText(std::string_view text, std::string_view needle, CompareOptions options) {
    if (needle.empty()) return std::nullopt;
    if (contains(options, CompareOptions::regularExpression)) {
        const auto pattern =
            RegularExpression::forPattern(needle, contains(options, CompareOptions::caseInsensitive));
        return pattern ? pattern->find(text, contains(options, CompareOptions::anchored)) : std::nullopt;
    }
    if (text.empty()) return std::nullopt;
    // An ill-formed needle's bytes can also be within a character.
    if (contains(options, CompareOptions::literal) && isExact(options) && utf8::isWellFormed(needle))
        return rangeOfBytes(text, needle, options);
    // That at an end is found there without reading more.
    if (!contains(options, CompareOptions::anchored))
        if (const auto found = PlainSearch(needle, options).find(text)) return *found;
    return FoldedSearch(needle, options).find(text);
}

} // namespace vorlan
