// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/TextFormat.h>

#include "platform/localization/FormatProblems.h"
#include "platform/localization/FormatReader.h"
#include "platform/localization/GapText.h"
#include "platform/localization/PluralChoice.h"
#include "platform/text/CurrentRegion.h"
#include "platform/values/UTF8.h"

#include <algorithm>
#include <map>

namespace vorlan {

namespace {

using Content = FormatArgument::Content;
using Kind = FormatDirective::Kind;
using Variables = std::map<std::string, PluralVariable, std::less<>>;

// Makes one text.
class Filling {
public:
    Filling(std::span<const FormatArgument> arguments, const FormatCustom& custom, const Variables* variables)
        : arguments_(arguments),
          custom_(custom),
          locale_(custom.locale ? &*custom.locale : nullptr),
          variables_(variables) {}

    // Adds a format, and what fills its gaps. The first that has no number is for `own`, if there is one.
    void add(std::string_view format, const Content* own = nullptr);

    std::string takeText() { return std::move(text_); }
    // What does not fit, the first of it; empty where all does.
    const std::string& misfit() const { return misfit_; }

private:
    // Texts whose variables name each other do not grow without end.
    static constexpr std::size_t mostForms = 32;

    void addText(std::string_view text);
    void addAsItStands(std::string_view gap, std::string_view why);
    void addArgument(const FormatGap& gap, std::string_view asItStands, const Content*& own);
    void addVariable(const FormatGap& gap, std::string_view asItStands);
    void addForm(const PluralVariable& variable, const Content& argument, std::string_view asItStands);
    GapForm formOf(const FormatGap& gap, std::string_view asItStands);
    std::optional<std::int64_t> countBy(const GapStar& star, std::string_view asItStands);
    const Content* argument(std::size_t number);
    const PluralVariable* variable(std::string_view name) const;
    const Locale& pluralRules() const;
    void note(std::string_view gap, std::string_view why);

    std::span<const FormatArgument> arguments_;
    const FormatCustom& custom_;
    const Locale* locale_;
    const Variables* variables_;
    std::size_t next_ = 0; // of the arguments, for the next gap without a number
    std::vector<const PluralVariable*> within_;
    std::size_t forms_ = 0;
    std::string text_;
    std::string misfit_;
};

void Filling::add(std::string_view format, const Content* own) {
    FormatReader reader(format);
    std::size_t end = 0;
    while (const auto gap = reader.next()) {
        addText(format.substr(end, gap->offset - end));
        end = gap->offset + gap->length;
        const auto asItStands = format.substr(gap->offset, gap->length);
        switch (gap->kind) {
        case Kind::percent: text_ += '%'; break;
        case Kind::unknown: addAsItStands(asItStands, "is not understood"); break;
        case Kind::variable: addVariable(*gap, asItStands); break;
        default: addArgument(*gap, asItStands, own); break;
        }
    }
    addText(format.substr(end));
}

void Filling::addText(std::string_view text) {
    if (utf8::isWellFormed(text)) {
        text_ += text;
    } else {
        text_ += detail::repairedText(text);
    }
}

void Filling::addAsItStands(std::string_view gap, std::string_view why) {
    addText(gap);
    note(gap, why);
}

void Filling::addArgument(const FormatGap& gap, std::string_view asItStands, const Content*& own) {
    const auto form = formOf(gap, asItStands);
    const bool isForOwn = own != nullptr && gap.argument == 0;
    const auto* content = isForOwn ? std::exchange(own, nullptr) : argument(gap.argument);
    if (content == nullptr) return addAsItStands(asItStands, "has no argument");
    if (!fits(gap.kind, form, *content)) note(asItStands, "has an argument of another kind");
    text_ += gapText(form, *content, locale_);
}

void Filling::addVariable(const FormatGap& gap, std::string_view asItStands) {
    const auto* content = argument(gap.argument);
    const auto* named = variable(gap.name);
    if (named == nullptr) return addAsItStands(asItStands, "names no variable");
    if (content == nullptr) return addAsItStands(asItStands, "has no argument");
    if (std::ranges::find(within_, named) != within_.end())
        return addAsItStands(asItStands, "stands within itself");
    if (forms_ == mostForms) return addAsItStands(asItStands, "is one variable too many");
    ++forms_;
    within_.push_back(named);
    addForm(*named, *content, asItStands);
    within_.pop_back();
}

void Filling::addForm(const PluralVariable& variable, const Content& argument, std::string_view asItStands) {
    const auto choice = choosePluralForm(variable, argument, pluralRules());
    if (choice.form == nullptr) return addAsItStands(asItStands, "has no form \"other\"");
    if (!choice.isNumber) note(asItStands, "has an argument that is no number");
    add(*choice.form, &choice.number);
}

GapForm Filling::formOf(const FormatGap& gap, std::string_view asItStands) {
    auto form = gap.form;
    if (gap.widthBy) {
        const auto width = countBy(*gap.widthBy, asItStands).value_or(0);
        if (width < 0) form.isLeft = true;
        form.width = static_cast<std::size_t>(width < 0 ? -width : width);
    }
    if (gap.precisionBy) {
        const auto precision = countBy(*gap.precisionBy, asItStands).value_or(-1);
        if (precision >= 0) form.precision = static_cast<std::size_t>(precision);
    }
    return form;
}

std::optional<std::int64_t> Filling::countBy(const GapStar& star, std::string_view asItStands) {
    constexpr auto most = static_cast<std::int64_t>(FormatReader::mostCount);
    const auto* content = argument(star.argument);
    const auto* number = content != nullptr ? std::get_if<std::int64_t>(content) : nullptr;
    if (number != nullptr && *number >= -most && *number <= most) return *number;
    note(asItStands, "has no argument for its width or precision that is a number up to 4096");
    return std::nullopt;
}

// By its number, or else the next; null where there is none.
const Content* Filling::argument(std::size_t number) {
    const auto at = number != 0 ? number - 1 : next_++;
    return at < arguments_.size() ? &arguments_[at].content() : nullptr;
}

const PluralVariable* Filling::variable(std::string_view name) const {
    if (variables_ == nullptr) return nullptr;
    const auto found = variables_->find(name);
    return found != variables_->end() ? &found->second : nullptr;
}

const Locale& Filling::pluralRules() const {
    if (custom_.pluralRules) return *custom_.pluralRules;
    return locale_ != nullptr ? *locale_ : currentRegion().locale;
}

void Filling::note(std::string_view gap, std::string_view why) {
    if (misfit_.empty()) misfit_ = quotedFormat(gap).append(" ").append(why);
}

std::string filled(std::string_view format, std::span<const FormatArgument> arguments,
                   const FormatCustom& custom, const Variables* variables) {
    if (format.find('%') == std::string_view::npos) return detail::repairedText(format);
    Filling filling(arguments, custom, variables);
    filling.add(format);
    if (!filling.misfit().empty()) reportFormatOnce(format, filling.misfit());
    return filling.takeText();
}

FormatDirective directive(std::size_t offset, std::size_t length, Kind kind, std::size_t argument) {
    return {.offset = offset, .length = length, .kind = kind, .argument = argument};
}

} // namespace

std::string formatText(std::string_view format, std::span<const FormatArgument> arguments,
                       const FormatCustom& custom) {
    return filled(format, arguments, custom, nullptr);
}

std::string formatText(const StringTableEntry& entry, std::span<const FormatArgument> arguments,
                       const FormatCustom& custom) {
    return filled(entry.text, arguments, custom, &entry.variables);
}

std::vector<FormatDirective> formatDirectives(std::string_view format) {
    std::vector<FormatDirective> all;
    std::size_t last = 0; // of the arguments of gaps without a number
    const auto argumentOf = [&](std::size_t number) { return number != 0 ? number : ++last; };
    FormatReader reader(format);
    while (const auto gap = reader.next()) {
        const bool takesArgument = gap->kind != Kind::percent && gap->kind != Kind::unknown;
        if (takesArgument)
            for (const auto& star : {gap->widthBy, gap->precisionBy})
                if (star)
                    all.push_back(
                        directive(star->offset, star->length, Kind::integer, argumentOf(star->argument)));
        all.push_back(
            directive(gap->offset, gap->length, gap->kind, takesArgument ? argumentOf(gap->argument) : 0));
        all.back().name = gap->name;
    }
    return all;
}

} // namespace vorlan
