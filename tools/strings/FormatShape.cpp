// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/FormatShape.h"

#include "tools/strings/PluralForms.h"
#include "tools/support/Quoting.h"

#include <algorithm>
#include <utility>

namespace tool {

using vorlan::FormatDirective;
using vorlan::PluralCategory;
using vorlan::PluralVariable;
using vorlan::StringTableEntry;
using Kind = FormatDirective::Kind;

namespace {

std::string_view nameOf(Kind kind) {
    switch (kind) {
    case Kind::anything: return "any";
    case Kind::integer: return "integer";
    case Kind::number: return "number";
    case Kind::text: return "text";
    default: return "none";
    }
}

// Whether a gap says the number of its argument, as in "%2$@" and "*2$".
bool isNumbered(std::string_view gap) {
    const auto end = gap.find_first_not_of("0123456789", 1);
    return end != std::string_view::npos && end > 1 && gap[end] == '$';
}

class ShapeReader {
public:
    explicit ShapeReader(const StringTableEntry& entry) : entry_(entry) {}

    FormatShape read() {
        noteUnknown(entry_.text);
        for (const auto& [name, variable] : entry_.variables)
            for (const auto& form : variable.forms)
                if (form) noteUnknown(*form);
        take(entry_.text, 0, shape_.arguments);
        return std::move(shape_);
    }

private:
    // Of variables that name others: as the library fills them.
    static constexpr std::size_t mostForms = 256;

    void noteUnknown(std::string_view text) {
        for (const auto& gap : vorlan::formatDirectives(text))
            if (gap.kind == Kind::unknown)
                note(unknownDirective,
                     quotedText(text.substr(gap.offset, gap.length)) + " is no directive of a format");
    }

    // The first gap without a number is for the argument `own`, unless that is 0; gaps of variables are not.
    void take(std::string_view text, std::size_t own, FormatArguments& arguments) {
        for (const auto& gap : vorlan::formatDirectives(text)) {
            if (gap.kind == Kind::percent || gap.kind == Kind::unknown) continue;
            const auto asItStands = text.substr(gap.offset, gap.length);
            const bool mayBeOwn = gap.kind != Kind::variable && !asItStands.starts_with('*');
            const auto number = numberOf(gap, asItStands, mayBeOwn ? &own : nullptr);
            if (gap.kind == Kind::variable) {
                takeVariable(gap.name, number, arguments);
            } else {
                add(number, gap.kind, arguments);
            }
        }
    }

    std::size_t numberOf(const FormatDirective& gap, std::string_view asItStands, std::size_t* own) {
        if (isNumbered(asItStands)) return gap.argument;
        if (own != nullptr && *own != 0) return std::exchange(*own, 0);
        return next_++;
    }

    void takeVariable(const std::string& name, std::size_t number, FormatArguments& arguments) {
        const auto found = entry_.variables.find(name);
        if (found == entry_.variables.end())
            return note("format", "there is no variable " + quotedText(name));
        const auto kind = kindOf(found->second);
        add(number, kind, arguments);
        if (++forms_ > mostForms) return;
        if (isWithinForm_) return take(*found->second.forms[categoryOfOther], number, arguments);
        const auto others = formsBeside(found->second, number, kind);
        FormatArguments ofOther{{number, kind}};
        take(*found->second.forms[categoryOfOther], number, ofOther);
        for (const auto& [category, taken] : others) compare(name, category, taken, ofOther, number);
        for (const auto& [argument, taken] : ofOther) add(argument, taken, arguments);
    }

    static constexpr auto categoryOfOther = static_cast<std::size_t>(PluralCategory::other);

    using Taken = std::vector<std::pair<std::size_t, FormatArguments>>;

    // What the forms but `other` take, by category. They begin with the same argument as that.
    Taken formsBeside(const PluralVariable& variable, std::size_t number, Kind kind) {
        const auto next = next_;
        isWithinForm_ = true;
        Taken forms;
        for (std::size_t category = 0; category < categoryOfOther; ++category) {
            if (!variable.forms[category]) continue;
            forms.emplace_back(category, FormatArguments{{number, kind}});
            take(*variable.forms[category], number, forms.back().second);
            next_ = next;
        }
        isWithinForm_ = false;
        return forms;
    }

    void compare(const std::string& name, std::size_t category, FormatArguments form, FormatArguments other,
                 std::size_t number) {
        form.erase(number);
        other.erase(number);
        if (form == other) return;
        note("format", "the form " + quotedText(categoryName(category)) + " of " + quotedText(name) +
                           " takes " + describedArguments(form) + " beside its number, the form \"other\" " +
                           describedArguments(other));
    }

    // Another gap for the same argument may be for anything.
    void add(std::size_t number, Kind kind, FormatArguments& arguments) {
        const auto [entry, isNew] = arguments.emplace(number, kind);
        if (isNew || kind == entry->second || kind == Kind::anything) return;
        if (entry->second != Kind::anything)
            note("format", "argument " + std::to_string(number) + " is both " +
                               std::string(nameOf(entry->second)) + " and " + std::string(nameOf(kind)));
        entry->second = kind;
    }

    void note(std::string_view kind, std::string message) {
        Misfit misfit{kind, std::move(message)};
        if (std::ranges::find(shape_.misfits, misfit) == shape_.misfits.end())
            shape_.misfits.push_back(std::move(misfit));
    }

    const StringTableEntry& entry_;
    FormatShape shape_;
    std::size_t next_ = 1;
    std::size_t forms_ = 0;
    bool isWithinForm_ = false;
};

} // namespace

Kind kindOf(const PluralVariable& variable) {
    return vorlan::formatDirectives("%" + variable.valueType).front().kind;
}

FormatShape formatShape(const StringTableEntry& entry) {
    return ShapeReader(entry).read();
}

std::string describedArguments(const FormatArguments& arguments) {
    if (arguments.empty()) return "nothing";
    std::string list;
    std::size_t number = 1;
    for (const auto& [argument, kind] : arguments) {
        list += list.empty() ? "(" : ", ";
        if (argument != number) list += std::to_string(argument) + ": ";
        list += nameOf(kind);
        number = argument + 1;
    }
    return list + ")";
}

} // namespace tool
