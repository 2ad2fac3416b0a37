// SPDX-License-Identifier: Apache-2.0
#include "platform/localization/FormatProblems.h"

#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/Problems.h>

#include <cstddef>
#include <functional>
#include <mutex>
#include <unordered_set>

namespace vorlan {

namespace {

constexpr std::size_t mostKnown = 512;
constexpr std::size_t longestQuotation = 120;

std::mutex mutex;

bool isFirst(std::string_view format) {
    static auto& known = *new std::unordered_set<std::size_t>; // threads may tell while the process ends
    const auto hash = std::hash<std::string_view>()(format);
    const std::lock_guard lock(mutex);
    if (known.size() >= mostKnown && !known.contains(hash)) known.clear();
    return known.insert(hash).second;
}

} // namespace

std::string quotedFormat(std::string_view format) {
    auto end = format.size();
    if (end > longestQuotation) {
        end = longestQuotation;
        while (end > 0 && (static_cast<unsigned char>(format[end]) & 0xC0) == 0x80) --end;
    }
    return "\"" + detail::repairedText(format.substr(0, end)) + (end < format.size() ? "...\"" : "\"");
}

void reportFormatOnce(std::string_view format, std::string_view misfit) {
    if (!isFirst(format)) return;
    detail::reportProblem("the format " + quotedFormat(format) +
                              " does not fit its arguments: " + std::string(misfit),
                          "VorlanFoundation/TextFormat");
}

} // namespace vorlan
