// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Extensions/LocalizedText.h>

#include "platform/localization/LocalizedTables.h"

namespace vorlan {

namespace {

// Calls `use` with the entry of a text, or with null where there is none.
void useEntry(std::string_view text, const text::LocalizedSource& source,
              FunctionRef<void(const StringTableEntry*)> use) {
    const auto contents = detail::contentsPath(source.in != nullptr ? *source.in : Bundle::main());
    const std::string_view language = source.forResource ? *source.forResource : std::string_view();
    const bool isUsed =
        !contents.empty() && useLocalizedEntry({contents, language, source.table.value_or("")}, text, use);
    if (!isUsed) use(nullptr);
}

std::string formatted(std::string_view text, std::span<const FormatArgument> arguments,
                      const text::LocalizedSource& source, const FormatCustom& custom) {
    std::string result;
    useEntry(text, source, [&](const StringTableEntry* entry) {
        result =
            entry != nullptr ? formatText(*entry, arguments, custom) : formatText(text, arguments, custom);
    });
    return result;
}

} // namespace

std::string text::localized(std::string_view text, const LocalizedSource& source) {
    std::string result;
    useEntry(text, source,
             [&](const StringTableEntry* entry) { result = entry != nullptr ? entry->text : text; });
    return result;
}

std::string text::localizedFormat(std::string_view text, std::span<const FormatArgument> arguments,
                                  const LocalizedSource& source) {
    FormatCustom custom;
    // "Base" is no language, so that its texts, too, go by the user's rules.
    if (source.forResource && *source.forResource != "Base") custom.pluralRules.emplace(*source.forResource);
    return formatted(text, arguments, source, custom);
}

std::string text::localizedPlural(std::string_view text, std::int64_t count) {
    const LocalizedSource source;
    const FormatArgument argument(count);
    return formatted(text, std::span(&argument, 1), source, {.locale = Locale(*source.forResource)});
}

} // namespace vorlan
