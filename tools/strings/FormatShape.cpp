// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/FormatShape.h"

#include "tools/strings/PluralForms.h"
#include "tools/support/Quoting.h"

#include <algorithm>
#include <cctype>
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

// Whether a text begins like a printable character in an address, as in "%20". Two letters are none, as in "%dcm", nor
// is what is a whole number in any format, as in "%2d".
bool isEscape(std::string_view text) {
    const auto is = [](int (*isOfKind)(int), char c) { return isOfKind(static_cast<unsigned char>(c)) != 0; };
    return text.size() > 2 && text[0] == '%' && is(std::isxdigit, text[1]) && text[1] >= '2' &&
           is(std::isxdigit, text[2]) && text[2] != 'd' &&
           (is(std::isdigit, text[1]) || is(std::isdigit, text[2]));
}

// Whether a gap may be none: with the blank flag, as in "50% off", or as in an address.
bool mayBeChance(const FormatDirective& gap, std::string_view text) {
    return text.substr(gap.offset, gap.length).find(' ') != std::string_view::npos ||
           isEscape(text.substr(gap.offset));
}

class ShapeReader {
public:
    explicit ShapeReader(const StringTableEntry& entry) : entry_(entry) {}

    FormatShape read() {
        examine(entry_.text);
        for (const auto& [name, variable] : entry_.variables)
            for (const auto& form : variable.forms)
                if (form) examine(*form);
        take(entry_.text, 0, shape_.arguments);
        return std::move(shape_);
    }

private:
    // Of variables that name others: more than the library fills, and not without end.
    static constexpr std::size_t mostForms = 256;

    // A text with variables is a format for certain.
    void examine(std::string_view text) {
        for (const auto& gap : vorlan::formatDirectives(text)) {
            const bool isUnknown = gap.kind == Kind::unknown;
            if (isUnknown)
                note(unknownDirective,
                     quotedText(text.substr(gap.offset, gap.length)) + " is no directive of a format");
            if (isUnknown || (entry_.variables.empty() && mayBeChance(gap, text)))
                shape_.mayBeNoFormat = true;
        }
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
        for (const auto& form : others) compare(name, form, ofOther, number);
        for (const auto& [argument, taken] : ofOther) add(argument, taken, arguments);
    }

    static constexpr auto categoryOfOther = static_cast<std::size_t>(PluralCategory::other);

    // A form with what it takes, and with the argument that comes behind it.
    struct TakenForm {
        std::size_t category;
        FormatArguments arguments;
        std::size_t next = 0;
    };

    // The forms but `other`. They begin with the same argument as that.
    std::vector<TakenForm> formsBeside(const PluralVariable& variable, std::size_t number, Kind kind) {
        const auto next = next_;
        isWithinForm_ = true;
        std::vector<TakenForm> forms;
        for (std::size_t category = 0; category < categoryOfOther; ++category) {
            if (!variable.forms[category]) continue;
            TakenForm form{category, {{number, kind}}};
            take(*variable.forms[category], number, form.arguments);
            form.next = std::exchange(next_, next);
            forms.push_back(std::move(form));
        }
        isWithinForm_ = false;
        return forms;
    }

    // A form may leave out what `other` takes by number: that shifts no argument behind it.
    void compare(const std::string& name, TakenForm form, FormatArguments other, std::size_t number) {
        form.arguments.erase(number);
        other.erase(number);
        const bool isWithin = form.next == next_ && std::ranges::includes(other, form.arguments);
        if (isWithin || form.arguments == other) return;
        note("format", "the form " + quotedText(categoryName(form.category)) + " of " + quotedText(name) +
                           " takes " + describedArguments(form.arguments) +
                           " beside its number, the form \"other\" " + describedArguments(other));
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
