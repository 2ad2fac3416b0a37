// SPDX-License-Identifier: Apache-2.0
#include "platform/localization/PluralsReader.h"

#include <VorlanFoundation/Platform/TextFormat.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace vorlan {

namespace {

constexpr std::string_view formatKey = "NSStringLocalizedFormatKey";
constexpr std::string_view ruleKey = "NSStringFormatSpecTypeKey";
constexpr std::string_view pluralRule = "NSStringPluralRuleType";
constexpr std::string_view valueTypeKey = "NSStringFormatValueTypeKey";

std::string quoted(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

// Names whose fault it is.
class Blame {
public:
    explicit Blame(std::string_view key) : key_(key) {}
    Blame(const Blame& key, std::string_view variable) : key_(key.key_), variable_(variable) {}

    [[noreturn]] void fail(const std::string& message) const {
        auto text = "key " + quoted(key_) + ": ";
        if (variable_) text += "variable " + quoted(*variable_) + ": ";
        throw StringTableError(text + message, TextPosition());
    }

private:
    std::string_view key_;
    std::optional<std::string_view> variable_;
};

const Value& entryOf(const Value::Dictionary& dictionary, std::string_view key) {
    static const auto& null = *new Value;
    const auto found = dictionary.find(key);
    return found != dictionary.end() ? found->second : null;
}

std::optional<std::string> textOf(const Value::Dictionary& dictionary, std::string_view key,
                                  const Blame& blame) {
    const auto& value = entryOf(dictionary, key);
    auto text = value.as<std::string>();
    if (!text && !value.isNull()) blame.fail(quoted(key) + " is no text");
    return text;
}

std::string neededText(const Value::Dictionary& dictionary, std::string_view key, const Blame& blame) {
    auto text = textOf(dictionary, key, blame);
    if (!text) blame.fail(quoted(key) + " is missing");
    return *std::move(text);
}

bool isValueType(const std::string& type) {
    const auto directives = formatDirectives("%" + type);
    if (directives.size() != 1 || directives[0].length != type.size() + 1) return false;
    using Kind = FormatDirective::Kind;
    // Characters and addresses are no numbers, and the number of the argument is not the variable's to say.
    if (type.find_first_of("cCp$") != std::string::npos) return false;
    const auto kind = directives[0].kind;
    return kind == Kind::integer || kind == Kind::number || kind == Kind::anything;
}

PluralVariable readVariable(const Value& value, const Blame& blame) {
    const auto* const dictionary = value.dictionary();
    if (dictionary == nullptr) blame.fail("it is no dictionary");
    if (neededText(*dictionary, ruleKey, blame) != pluralRule)
        blame.fail(quoted(ruleKey) + " is not " + quoted(pluralRule));
    PluralVariable variable{.valueType = neededText(*dictionary, valueTypeKey, blame)};
    if (!isValueType(variable.valueType)) blame.fail(quoted(variable.valueType) + " formats no number");
    for (const auto category : allCases<PluralCategory>())
        variable.forms[static_cast<std::size_t>(category)] = textOf(*dictionary, rawValue(category), blame);
    if (!variable.forms.back()) blame.fail(quoted(rawValue(PluralCategory::other)) + " is missing");
    return variable;
}

// Makes sure that every variable that a format names is there, and that formatting comes to an end.
class Nesting {
public:
    Nesting(const StringTableEntry& entry, const Blame& blame) : entry_(entry), blame_(blame) {}

    void check() {
        for (const auto& name : namesIn(entry_.text))
            if (!entry_.variables.contains(name)) blame_.fail("variable " + quoted(name) + " is missing");
        for (const auto& [name, variable] : entry_.variables) depthOf(name, 1);
    }

private:
    static constexpr int limit = 32; // far more than a sentence has, and far less than a stack

    static std::vector<std::string> namesIn(std::string_view format) {
        std::vector<std::string> names;
        for (auto& directive : formatDirectives(format))
            if (directive.kind == FormatDirective::Kind::variable) names.push_back(std::move(directive.name));
        return names;
    }

    // How deep what a variable names is nested, itself included; `level` is how deep it is itself.
    int depthOf(const std::string& name, int level) {
        const auto [known, isNew] = depths_.try_emplace(name, underWay);
        const Blame blame(blame_, name);
        if (!isNew && known->second == underWay) blame.fail("it names itself, or one that names it");
        if (level + std::max(known->second - 1, 0) > limit)
            blame.fail("too many variables are in one another");
        if (!isNew) return known->second;
        int deepest = 0;
        for (const auto& form : entry_.variables.find(name)->second.forms)
            if (form) deepest = std::max(deepest, deepestIn(*form, blame, level));
        return depths_[name] = deepest + 1;
    }

    int deepestIn(std::string_view form, const Blame& blame, int level) {
        int deepest = 0;
        for (const auto& name : namesIn(form)) {
            if (!entry_.variables.contains(name)) blame.fail("variable " + quoted(name) + " is missing");
            deepest = std::max(deepest, depthOf(name, level + 1));
        }
        return deepest;
    }

    static constexpr int underWay = 0;

    const StringTableEntry& entry_;
    const Blame& blame_;
    std::map<std::string, int> depths_;
};

} // namespace

StringTableEntry readPluralEntry(const std::string& key, const Value& value) {
    const Blame blame(key);
    const auto* const dictionary = value.dictionary();
    if (dictionary == nullptr) blame.fail("it is no dictionary");
    StringTableEntry entry{.text = neededText(*dictionary, formatKey, blame)};
    for (const auto& [name, variable] : *dictionary)
        if (name != formatKey) entry.variables.emplace(name, readVariable(variable, Blame(blame, name)));
    Nesting(entry, blame).check();
    return entry;
}

} // namespace vorlan
