// SPDX-License-Identifier: Apache-2.0
// Any bytes have a description that is well-formed, and is the text itself where that is.

#include "fuzz/Fuzzing.h"
#include "platform/values/UTF8.h"

#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/Text.h>
#include <VorlanFoundation/Platform/Value.h>

#include <cstdint>
#include <string>
#include <string_view>

using namespace vorlan;

namespace {

// Puts the text together again from its characters.
std::string rewritten(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        const auto first = utf8::firstCharacter(text);
        fuzzing::require(first.length >= 1 && first.length <= text.size(),
                         "every step goes on within the text");
        fuzzing::require(first.character < 0x110000 && (first.character < 0xD800 || first.character > 0xDFFF),
                         "a character is one of Unicode's");
        fuzzing::require(first.isWellFormed || first.character == utf8::replacementCharacter,
                         "what is ill-formed stands for the replacement character");
        utf8::append(out, first.character);
        text.remove_prefix(first.length);
    }
    return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto described = describe(text);
    fuzzing::require(utf8::isWellFormed(described), "a description is well-formed");
    fuzzing::require((described == text) == utf8::isWellFormed(text), "only ill-formed text is repaired");
    fuzzing::require(rewritten(text) == described, "the characters of a text are those of its description");
    fuzzing::require(utf8::isWellFormed(Value(Value::Dictionary{{text, Value(text)}}).description()),
                     "the description of a value is well-formed");
    fuzzing::require(!isBlankText(text) || (utf8::isWellFormed(text) && isBlankText(text + " ")),
                     "blank text is well-formed, and stays blank");
    return 0;
}
