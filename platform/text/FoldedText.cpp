// SPDX-License-Identifier: Apache-2.0
#include "platform/text/FoldedText.h"

#include "platform/values/UTF8.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <tuple>
#include <unicode/coleitr.h>
#include <unicode/normalizer2.h>
#include <unicode/stringpiece.h>
#include <unicode/tblcoll.h>
#include <unicode/uchar.h>
#include <unicode/uniset.h>
#include <unicode/usetiter.h>
#include <unicode/ustring.h>
#include <utility>

namespace vorlan {

namespace {

// Units that are no characters.
constexpr TextUnit numberBegin = 0x11'0000;
constexpr TextUnit firstDigit = 0x11'0001;
constexpr TextUnit firstIllFormedByte = 0x12'0000;
constexpr TextUnit textBegin = 0x13'0000;

// Before these, ICU has nothing to say that ASCII does not.
constexpr UChar32 firstDecomposed = 0xC0;
constexpr UChar32 firstMark = 0x300;

void require(UErrorCode status) {
    if (U_FAILURE(status))
        fatalError("ICU cannot compare texts: " + std::string(u_errorName(status)), "VorlanFoundation/Text");
}

const icu::Normalizer2& instance(const icu::Normalizer2* (*get)(UErrorCode&)) {
    UErrorCode status = U_ZERO_ERROR;
    const auto* const found = get(status);
    require(status);
    return *found;
}

const icu::Normalizer2& canonicalForms() {
    static const auto& forms = instance(icu::Normalizer2::getNFDInstance);
    return forms;
}

const icu::Normalizer2& compatibilityForms() {
    static const auto& forms = instance(icu::Normalizer2::getNFKCInstance);
    return forms;
}

// The marks that change no letter into another as the root collation sees it: accents and points, but not the vowel
// signs of Indic scripts.
icu::UnicodeSet diacriticsOfRootCollation() {
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeSet marks(u"[[:Mn:][:Me:]]", status);
    const std::unique_ptr<icu::Collator> root(icu::Collator::createInstance(icu::Locale::getRoot(), status));
    require(status);
    const auto& collation = dynamic_cast<const icu::RuleBasedCollator&>(*root);
    const std::unique_ptr<icu::CollationElementIterator> elements(
        collation.createCollationElementIterator(icu::UnicodeString()));
    icu::UnicodeSet diacritics;
    for (icu::UnicodeSetIterator mark(marks); mark.next();) {
        elements->setText(icu::UnicodeString(mark.getCodepoint()), status);
        int element = elements->next(status);
        while (element != icu::CollationElementIterator::NULLORDER &&
               icu::CollationElementIterator::primaryOrder(element) == 0)
            element = elements->next(status);
        if (element == icu::CollationElementIterator::NULLORDER) diacritics.add(mark.getCodepoint());
    }
    require(status);
    diacritics.freeze();
    return diacritics;
}

bool isDiacritic(TextUnit unit) {
    static const auto& diacritics = *new icu::UnicodeSet(diacriticsOfRootCollation());
    return unit >= firstMark && unit < numberBegin && diacritics.contains(static_cast<UChar32>(unit));
}

bool isMark(UChar32 character) {
    if (character < firstMark) return false;
    const auto kind = u_getIntPropertyValue(character, UCHAR_GRAPHEME_CLUSTER_BREAK);
    return kind == U_GCB_EXTEND || kind == U_GCB_ZWJ || u_charType(character) == U_COMBINING_SPACING_MARK;
}

int hangulType(UChar32 character) {
    return u_getIntPropertyValue(character, UCHAR_HANGUL_SYLLABLE_TYPE);
}

bool isControl(UChar32 character) {
    const auto kind = u_getIntPropertyValue(character, UCHAR_GRAPHEME_CLUSTER_BREAK);
    return kind == U_GCB_CONTROL || kind == U_GCB_CR || kind == U_GCB_LF;
}

// Whether a character is a mark on the one before it, or goes on with its syllable.
bool continues(TextUnit before, UChar32 character) {
    if (character < firstMark || before >= numberBegin) return false;
    const auto previous = static_cast<UChar32>(before);
    if (isMark(character)) return !isControl(previous);
    const auto type = hangulType(character);
    if (type == U_HST_VOWEL_JAMO)
        return hangulType(previous) == U_HST_LEADING_JAMO || hangulType(previous) == U_HST_VOWEL_JAMO;
    if (type == U_HST_TRAILING_JAMO)
        return hangulType(previous) == U_HST_VOWEL_JAMO || hangulType(previous) == U_HST_TRAILING_JAMO;
    return false;
}

// Whether nothing that comes before a character can have to do with it.
bool beginsAnew(UChar32 character) {
    if (u_charType(character) == U_DECIMAL_DIGIT_NUMBER) return false;
    if (character < firstMark) return true;
    const auto type = hangulType(character);
    return type != U_HST_VOWEL_JAMO && type != U_HST_TRAILING_JAMO && !isMark(character) &&
           canonicalForms().hasBoundaryBefore(character);
}

// What a character of full or half width stands for: those of one block, and the space.
void widen(UChar32 character, icu::UnicodeString& characters) {
    if (character == 0x3000 || (character >= 0xFF01 && character <= 0xFFEE))
        compatibilityForms().getRawDecomposition(character, characters);
}

void decompose(icu::UnicodeString& characters) {
    icu::UnicodeString decomposed;
    const auto first = characters.char32At(0);
    if (first < firstDecomposed || characters.length() > U16_LENGTH(first)) return;
    if (canonicalForms().getDecomposition(first, decomposed)) characters = decomposed;
}

int rankOfMark(TextUnit unit) {
    return unit < firstMark || unit >= numberBegin ? 0 : u_getCombiningClass(static_cast<UChar32>(unit));
}

// Marks on one character in the order that tells which are the same: by rank, and as they come within one.
void orderMarks(std::span<TextUnit> marks) {
    std::vector<std::tuple<int, std::size_t, TextUnit>> ordered;
    for (const auto mark : marks) ordered.emplace_back(rankOfMark(mark), ordered.size(), mark);
    std::sort(ordered.begin(), ordered.end());
    for (std::size_t i = 0; i < marks.size(); ++i) marks[i] = std::get<TextUnit>(ordered[i]);
}

// Where matches may begin stays as it is.
void orderAllMarks(std::vector<TextUnit>& units) {
    const auto isRanked = [](TextUnit unit) { return rankOfMark(unit) != 0; };
    for (auto at = units.begin(); at != units.end();) {
        const auto begin = std::find_if(at, units.end(), isRanked);
        at = std::find_if_not(begin, units.end(), isRanked);
        if (at - begin > 1) orderMarks({begin, at});
    }
}

void addFolded(TextUnit unit, std::size_t place, FoldedText& folded) {
    if (unit >= numberBegin) return folded.add(unit, place);
    if (unit < 0x80) return folded.add(unit >= 'A' && unit <= 'Z' ? unit + ('a' - 'A') : unit, place);
    const icu::UnicodeString character(static_cast<UChar32>(unit));
    char16_t changed[8]; // more than any has
    UErrorCode status = U_ZERO_ERROR;
    const auto length = u_strFoldCase(changed, static_cast<int>(std::size(changed)), character.getBuffer(),
                                      character.length(), U_FOLD_CASE_DEFAULT, &status);
    require(status);
    for (int at = 0; at < length; place = FoldedText::within) {
        UChar32 next = 0;
        U16_NEXT(changed, at, length, next);
        folded.add(static_cast<TextUnit>(next), place);
    }
}

int digitValue(TextUnit unit) {
    if (unit < 0x80) return unit >= '0' && unit <= '9' ? static_cast<int>(unit - '0') : -1;
    return unit < numberBegin ? u_charDigitValue(static_cast<UChar32>(unit)) : -1;
}

// Digits in a row become the number's, without zeros in front. Returns the index of what comes behind them.
std::size_t addNumber(const FoldedText& characters, std::size_t at, FoldedText& folded) {
    folded.add(numberBegin, characters.places[at]);
    bool isSignificant = false;
    for (; at < characters.units.size(); ++at) {
        const auto value = digitValue(characters.units[at]);
        if (value < 0) break;
        isSignificant = isSignificant || value != 0;
        if (isSignificant) folded.add(firstDigit + static_cast<TextUnit>(value), FoldedText::within);
    }
    return at;
}

void dropDiacritics(FoldedText& text) {
    std::size_t kept = 0;
    auto left = FoldedText::within; // the place of those that were dropped, where they stand on nothing
    for (std::size_t at = 0; at < text.units.size(); ++at) {
        const auto place = text.places[at] != FoldedText::within ? text.places[at] : left;
        const bool isDropped = isDiacritic(text.units[at]);
        left = isDropped ? place : FoldedText::within;
        if (isDropped) continue;
        text.units[kept] = text.units[at];
        text.places[kept++] = place;
    }
    text.units.resize(kept);
    text.places.resize(kept);
}

} // namespace

bool isInsideCharacter(std::string_view text, std::size_t place) noexcept {
    for (std::size_t back = 1; back <= 3 && back <= place && place < text.size(); ++back)
        if (utf8::characterLength(text.data() + place - back, text.size() - (place - back)) > back)
            return true;
    return false;
}

bool isBetweenCharacters(std::string_view text, std::size_t place) {
    if (place == 0 || place == text.size()) return true;
    if (isInsideCharacter(text, place)) return false;
    auto before = place - 1;
    while (isInsideCharacter(text, before)) --before;
    const auto decomposed = [text](std::size_t at) {
        icu::UnicodeString characters(static_cast<UChar32>(utf8::firstCharacter(text.substr(at)).character));
        decompose(characters);
        return characters;
    };
    const auto previous = decomposed(before);
    const auto last = previous.char32At(previous.length() - 1);
    return !continues(static_cast<TextUnit>(last), decomposed(place).char32At(0));
}

bool isComposed(std::string_view text) {
    static const auto& forms = instance(icu::Normalizer2::getNFCInstance);
    if (text.size() > std::numeric_limits<std::int32_t>::max() || !utf8::isWellFormed(text)) return false;
    UErrorCode status = U_ZERO_ERROR;
    const icu::StringPiece piece(text.data(), static_cast<std::int32_t>(text.size()));
    return forms.isNormalizedUTF8(piece, status) && U_SUCCESS(status);
}

TextFolding::TextFolding(CompareOptions options)
    : isLiteral_(contains(options, CompareOptions::literal)),
      ignoresCase_(contains(options, CompareOptions::caseInsensitive)),
      ignoresMarks_(contains(options, CompareOptions::diacriticInsensitive)),
      ignoresWidth_(contains(options, CompareOptions::widthInsensitive)),
      countsNumbers_(contains(options, CompareOptions::numeric)) {}

void TextFolding::addCharacters(std::string_view text, std::size_t begin, std::size_t end,
                                FoldedText& folded) const {
    icu::UnicodeString characters;
    for (std::size_t at = begin, length = 0; at < end; at += length) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const auto next = utf8::firstCharacter(text.substr(at, end - at));
        length = next.isWellFormed ? next.length : 1;
        if (byte < 0x80 || !next.isWellFormed) {
            folded.add(byte < 0x80 ? byte : firstIllFormedByte + byte, at);
            continue;
        }
        characters = static_cast<UChar32>(next.character);
        if (ignoresWidth_) widen(static_cast<UChar32>(next.character), characters);
        if (!isLiteral_ || ignoresMarks_) decompose(characters);
        const auto before = folded.units.empty() ? textBegin : folded.units.back();
        const bool isContinued = !isLiteral_ && continues(before, characters.char32At(0));
        auto place = isContinued ? FoldedText::within : at;
        for (int i = 0; i < characters.length(); i = characters.moveIndex32(i, 1), place = FoldedText::within)
            folded.add(static_cast<TextUnit>(characters.char32At(i)), place);
    }
}

void TextFolding::changeCharacters(const FoldedText& characters, FoldedText& folded) const {
    for (std::size_t at = 0; at < characters.units.size();) {
        const auto unit = characters.units[at];
        if (countsNumbers_ && digitValue(unit) >= 0) {
            at = addNumber(characters, at, folded);
            continue;
        }
        if (ignoresCase_)
            addFolded(unit, characters.places[at], folded);
        else
            folded.add(unit, characters.places[at]);
        ++at;
    }
}

void TextFolding::fold(std::string_view text, std::size_t begin, std::size_t end, FoldedText& folded) const {
    FoldedText characters;
    folded.clear();
    addCharacters(text, begin, end, folded);
    if (!isLiteral_) orderAllMarks(folded.units);
    if (ignoresMarks_) dropDiacritics(folded);
    if (!ignoresCase_ && !countsNumbers_) return;
    std::swap(characters, folded);
    changeCharacters(characters, folded);
}

std::size_t TextFolding::cut(std::string_view text, std::size_t from) const {
    while (isInsideCharacter(text, from)) ++from;
    while (from < text.size()) {
        const auto next = utf8::firstCharacter(text.substr(from));
        if (!next.isWellFormed || beginsAnew(static_cast<UChar32>(next.character))) return from;
        from += next.length;
    }
    return text.size();
}

} // namespace vorlan
