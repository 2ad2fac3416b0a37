// SPDX-License-Identifier: Apache-2.0
#include "platform/text/FoldedSearch.h"

#include "platform/text/NeedleMatcher.h"

#include <algorithm>
#include <vector>

namespace vorlan {

namespace {

// What is looked for is often near the end that the search begins at, so it begins with little.
constexpr std::size_t firstPart = 256;
constexpr std::size_t largestPart = 16'384;

// The place so far from a text's end.
std::size_t fromEnd(std::string_view text, std::size_t size) {
    return size < text.size() ? text.size() - size : 0;
}

} // namespace

FoldedSearch::FoldedSearch(std::string_view needle, CompareOptions options)
    : options_(options), folding_(options) {
    folding_.fold(needle, 0, needle.size(), needle_);
}

std::optional<TextRange> FoldedSearch::find(std::string_view text) const {
    if (needle_.units.empty()) return std::nullopt;
    const bool isBackwards = contains(options_, CompareOptions::backwards);
    if (contains(options_, CompareOptions::anchored)) return isBackwards ? atEnd(text) : atBegin(text);
    return isBackwards ? last(text) : first(text);
}

// Calls `use` with each match that begins at `from`, a cut, or behind it, from left to right, until it returns false.
template <class Use>
void FoldedSearch::forEachMatch(std::string_view text, std::size_t from, Use&& use) const {
    NeedleMatcher matcher(needle_.units);
    std::vector<std::size_t> begins(needle_.units.size()); // the places of the last units, in a ring
    std::size_t slot = 0;
    std::size_t begin = FoldedText::within; // that of a match to which only its end is missing
    FoldedText folded;
    for (auto size = firstPart; from < text.size(); size = std::min(2 * size, largestPart)) {
        const auto end = folding_.cut(text, std::min(from + size, text.size()));
        folding_.fold(text, from, end, folded);
        for (std::size_t at = 0; at < folded.units.size(); ++at) {
            const auto place = folded.places[at];
            if (begin != FoldedText::within && place != FoldedText::within && !use({begin, place - begin}))
                return;
            begins[slot] = place;
            slot = slot + 1 < begins.size() ? slot + 1 : 0;
            begin = matcher.feed(folded.units[at]) ? begins[slot] : FoldedText::within;
        }
        from = end;
    }
    if (begin != FoldedText::within) use({begin, text.size() - begin});
}

std::optional<TextRange> FoldedSearch::first(std::string_view text) const {
    std::optional<TextRange> found;
    forEachMatch(text, 0, [&](TextRange match) {
        found = match;
        return false;
    });
    return found;
}

std::optional<TextRange> FoldedSearch::last(std::string_view text) const {
    std::optional<TextRange> found;
    for (auto size = firstPart;; size *= 2) {
        const auto rest = fromEnd(text, size);
        forEachMatch(text, rest > 0 ? folding_.cut(text, rest) : 0, [&](TextRange match) {
            found = match;
            return true;
        });
        if (found || rest == 0) return found;
    }
}

std::optional<TextRange> FoldedSearch::atBegin(std::string_view text) const {
    const auto& units = needle_.units;
    FoldedText folded;
    std::size_t end = 0;
    for (auto size = firstPart; folded.units.size() <= units.size() && end < text.size(); size *= 2) {
        end = folding_.cut(text, std::min(size, text.size()));
        folding_.fold(text, 0, end, folded);
    }
    if (folded.units.size() < units.size() || folded.places[0] != 0 ||
        !std::equal(units.begin(), units.end(), folded.units.begin()))
        return std::nullopt;
    const auto place = folded.units.size() == units.size() ? text.size() : folded.places[units.size()];
    if (place == FoldedText::within) return std::nullopt;
    return TextRange{0, place};
}

std::optional<TextRange> FoldedSearch::atEnd(std::string_view text) const {
    const auto& units = needle_.units;
    FoldedText folded;
    std::size_t begin = text.size();
    for (auto size = firstPart; folded.units.size() < units.size() && begin > 0; size *= 2) {
        const auto rest = fromEnd(text, size);
        begin = rest > 0 ? folding_.cut(text, rest) : 0;
        folding_.fold(text, begin, text.size(), folded);
        if (rest == 0) break;
    }
    if (folded.units.size() < units.size() ||
        !std::equal(units.rbegin(), units.rend(), folded.units.rbegin()))
        return std::nullopt;
    const auto place = folded.places[folded.units.size() - units.size()];
    if (place == FoldedText::within) return std::nullopt;
    return TextRange{place, text.size() - place};
}

} // namespace vorlan
