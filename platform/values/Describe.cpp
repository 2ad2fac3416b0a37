// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Describe.h>

#include "platform/values/UTF8.h"

#include <cxxabi.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace vorlan {

namespace {

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
    if (utf8::isWellFormed(text)) return std::string(text);
    std::string repaired;
    repaired.reserve(text.size());
    while (!text.empty()) {
        const auto first = utf8::firstCharacter(text);
        if (first.isWellFormed) {
            repaired += text.substr(0, first.length);
        } else {
            utf8::append(repaired, utf8::replacementCharacter);
        }
        text.remove_prefix(first.length);
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
