// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Describe.h>

#include <cxxabi.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace vorlan {

namespace {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

// What may follow a lead byte: how many bytes the sequence has, and the bounds of the second, which rule out
// over-long forms, surrogates and what is beyond U+10FFFF (table 3-7 of the Unicode standard).
struct SequenceForm {
    std::size_t length;
    unsigned char secondLow = 0x80;
    unsigned char secondHigh = 0xBF;
};

SequenceForm formOf(unsigned char lead) {
    if (lead < 0x80) return {1};
    if (lead < 0xC2) return {0};
    if (lead < 0xE0) return {2};
    if (lead < 0xF0)
        return {3, static_cast<unsigned char>(lead == 0xE0 ? 0xA0 : 0x80),
                static_cast<unsigned char>(lead == 0xED ? 0x9F : 0xBF)};
    if (lead < 0xF5)
        return {4, static_cast<unsigned char>(lead == 0xF0 ? 0x90 : 0x80),
                static_cast<unsigned char>(lead == 0xF4 ? 0x8F : 0xBF)};
    return {0};
}

struct Prefix {
    std::size_t length;
    bool isWellFormed;
};

// The longest start of `text` that is one character, or could have become one.
Prefix firstSequence(std::string_view text) {
    const auto form = formOf(static_cast<unsigned char>(text[0]));
    if (form.length <= 1) return {1, form.length == 1};
    for (std::size_t i = 1; i < form.length; ++i) {
        const auto low = i == 1 ? form.secondLow : 0x80;
        const auto high = i == 1 ? form.secondHigh : 0xBF;
        const bool fits = i < text.size() && static_cast<unsigned char>(text[i]) >= low &&
                          static_cast<unsigned char>(text[i]) <= high;
        if (!fits) return {i, false};
    }
    return {form.length, true};
}

template <class Float>
std::string describeFloat(Float value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    std::array<char, 64> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    std::string text(buffer.data(), end);
    if (text.find_first_of(".e") == std::string::npos) text += ".0";
    return text;
}

} // namespace

std::string detail::repairedText(std::string_view text) {
    std::string repaired;
    repaired.reserve(text.size());
    while (!text.empty()) {
        const auto [length, isWellFormed] = firstSequence(text);
        repaired += isWellFormed ? text.substr(0, length) : replacementCharacter;
        text.remove_prefix(length);
    }
    return repaired;
}

std::string detail::describeNumber(double value) {
    return describeFloat(value);
}

std::string detail::describeNumber(float value) {
    return describeFloat(value);
}

std::string detail::describeObject(const std::type_info& type, const void* address) {
    return "<" + typeName(type) + ": " + describeAddress(address) + ">";
}

std::string detail::typeName(const std::type_info& type) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    return status == 0 ? name.get() : type.name();
}

std::string detail::unqualifiedTypeName(const std::type_info& type) {
    const auto name = typeName(type);
    // Arguments of templates and functions have qualifications of their own, which do not count.
    int depth = 0;
    std::size_t start = 0;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (std::string_view("<({").find(name[i]) != std::string_view::npos) ++depth;
        if (std::string_view(">)}").find(name[i]) != std::string_view::npos) --depth;
        if (depth == 0 && name.compare(i, 2, "::") == 0) start = i + 2;
    }
    return name.substr(start);
}

std::string describeAddress(const void* address) {
    std::string text(18, '0');
    text[1] = 'x';
    auto rest = reinterpret_cast<std::uintptr_t>(address);
    for (std::size_t i = text.size() - 1; rest != 0; --i, rest >>= 4)
        text[i] = "0123456789abcdef"[rest & 0xF];
    return text;
}

} // namespace vorlan
