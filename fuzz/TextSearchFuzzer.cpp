// SPDX-License-Identifier: Apache-2.0
// What is found of any bytes in any bytes lies in them, is what was looked for, and is there whichever way it is looked
// for. The first two bytes are the options, the third says where the needle ends.

#include "fuzz/Fuzzing.h"
#include "platform/text/FoldedText.h"

#include <VorlanFoundation/Platform/TextSearch.h>

#include <cstdint>
#include <optional>
#include <string_view>

using namespace vorlan;
using enum CompareOptions;

namespace {

void requirePart(std::string_view text, TextRange part) {
    fuzzing::require(part.offset <= text.size() && part.length <= text.size() - part.offset,
                     "what is found lies in the text");
    fuzzing::require(!isInsideCharacter(text, part.offset) &&
                         !isInsideCharacter(text, part.offset + part.length),
                     "what is found begins and ends where characters do");
}

// What holds of every search but those by patterns.
void checkSearch(std::string_view text, std::string_view needle, CompareOptions options) {
    const auto first = rangeOfText(text, needle, options);
    const auto last = rangeOfText(text, needle, options | backwards);
    const auto begin = rangeOfText(text, needle, options | anchored);
    const auto end = rangeOfText(text, needle, options | anchored | backwards);
    fuzzing::require(first.has_value() == last.has_value(), "what is there is found from both ends");
    for (const auto& found : {first, last, begin, end}) {
        if (!found) continue;
        requirePart(text, *found);
        fuzzing::require(first->offset <= found->offset && found->offset <= last->offset,
                         "the first comes first, and the last comes last");
        const auto part = text.substr(found->offset, found->length);
        const auto again = rangeOfText(part, needle, options | anchored);
        fuzzing::require(again == TextRange{0, part.size()}, "what was found is what was looked for");
    }
    fuzzing::require(begin.has_value() == (first && first->offset == 0), "the beginning is the first place");
    fuzzing::require(!begin || begin == first, "what is found at the beginning is what is found first");
    fuzzing::require(end.has_value() == (last && last->offset + last->length == text.size()),
                     "the end is the last place");
    fuzzing::require(!end || end == last, "what is found at the end is what is found last");
}

void checkLiterally(std::string_view text, std::string_view needle) {
    const auto isPart = [&](std::size_t at) {
        return !isInsideCharacter(text, at) && !isInsideCharacter(text, at + needle.size());
    };
    auto at = needle.empty() ? std::string_view::npos : text.find(needle);
    while (at != std::string_view::npos && !isPart(at)) at = text.find(needle, at + 1);
    const auto found = rangeOfText(text, needle, literal);
    fuzzing::require(found.has_value() == (at != std::string_view::npos),
                     "bytes are found as the library does");
    fuzzing::require(!found || found == TextRange{at, needle.size()},
                     "bytes are found where the library does");
}

void checkPattern(std::string_view text, std::string_view pattern, CompareOptions options) {
    const auto found = rangeOfText(text, pattern, options | regularExpression);
    if (found) requirePart(text, *found);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) return 0;
    constexpr auto places = static_cast<unsigned>(backwards | anchored | regularExpression);
    const auto options = static_cast<CompareOptions>((data[0] | unsigned{data[1]} << 8) & ~places);
    const std::string_view texts(reinterpret_cast<const char*>(data + 3), size - 3);
    const auto needle = texts.substr(0, data[2]);
    const auto text = texts.substr(needle.size());
    checkSearch(text, needle, options);
    checkLiterally(text, needle);
    if (data[1] >= 0x80) checkPattern(text, needle, options);
    return 0;
}
