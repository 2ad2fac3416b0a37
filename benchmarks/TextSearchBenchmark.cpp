// SPDX-License-Identifier: Apache-2.0

// The search for a word in texts of about a thousand characters, which have it at their end.

#include "benchmarks/TextBenchmark.h"
#include "benchmarks/support/ICUPeers.h"
#include "benchmarks/support/InTurn.h"

#include <VorlanFoundation/Platform/TextSearch.h>

#include <QtCore/QString>
#include <unicode/coll.h>
#include <unicode/stsearch.h>
#include <unicode/tblcoll.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace vorlan::benchmarks {

namespace {

/// Texts in a language: its words, and the one that is looked for.
struct Sample {
    const char* name;
    std::vector<std::string> words;
    std::string needle;
};

/// Texts of the words in different orders, with the needle behind them.
std::vector<std::string> textsOf(const Sample& sample) {
    constexpr std::size_t count = 16;
    constexpr std::size_t wordsPerText = 160;
    std::vector<std::string> texts(count);
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t word = 0; word < wordsPerText; ++word)
            texts[i] += sample.words[(word * (i + 1) + i) % sample.words.size()] + " ";
        texts[i] += sample.needle + ".";
    }
    return texts;
}

icu::UnicodeString wide(const std::string& text) {
    return icu::UnicodeString::fromUTF8(text);
}

/// ICU's search by the order of the root locale, made for each text.
bool isFoundByICU(const icu::UnicodeString& text, const icu::UnicodeString& needle,
                  icu::RuleBasedCollator& order) {
    UErrorCode status = U_ZERO_ERROR;
    icu::StringSearch search(needle, text, &order, nullptr, status);
    const auto place = search.first(status);
    checkICU(status);
    return place != USEARCH_DONE;
}

std::shared_ptr<icu::RuleBasedCollator> rootOrder(icu::Collator::ECollationStrength strength) {
    UErrorCode status = U_ZERO_ERROR;
    const std::shared_ptr<icu::Collator> order(icu::Collator::createInstance(icu::Locale::getRoot(), status));
    checkICU(status);
    order->setStrength(strength);
    order->setAttribute(UCOL_NORMALIZATION_MODE, UCOL_ON, status);
    return std::static_pointer_cast<icu::RuleBasedCollator>(order);
}

/// The rows of a sample. Peers have texts of their own kind, made before.
class Search {
public:
    explicit Search(const Sample& sample)
        : group_(std::string("word in a text, ") + sample.name, textsOf(sample).size()),
          needle_(sample.needle),
          texts_(textsOf(sample)) {}

    void addFloor() {
        group_.add("floor: std::string::find", [texts = texts_, needle = needle_](std::size_t i) {
            return texts[i].find(needle) != std::string::npos;
        });
    }

    void addOurs(const char* name, CompareOptions options) {
        group_.add(name, [=, texts = texts_, needle = needle_](std::size_t i) {
            return rangeOfText(texts[i], needle, options).has_value();
        });
    }

    void addQt(const char* name, Qt::CaseSensitivity sensitivity) {
        std::vector<QString> texts;
        for (const auto& text : texts_) texts.push_back(QString::fromStdString(text));
        group_.add(name, [=, needle = QString::fromStdString(needle_)](std::size_t i) {
            return texts[i].indexOf(needle, 0, sensitivity) >= 0;
        });
    }

    void addICU(const char* name, icu::Collator::ECollationStrength strength) {
        std::vector<icu::UnicodeString> texts;
        for (const auto& text : texts_) texts.push_back(wide(text));
        group_.add(name, [=, needle = wide(needle_), order = rootOrder(strength)](std::size_t i) {
            return isFoundByICU(texts[i], needle, *order);
        });
    }

private:
    GroupInTurn<bool> group_;
    std::string needle_;
    std::vector<std::string> texts_;
};

void addSample(const Sample& sample) {
    Search search(sample);
    search.addFloor();
    search.addOurs("ours: rangeOfText, literal", CompareOptions::literal);
    search.addOurs("ours: rangeOfText, no options", CompareOptions::none);
    search.addOurs("ours: rangeOfText, caseInsensitive", CompareOptions::caseInsensitive);
    search.addOurs("ours: rangeOfText, caseInsensitive and diacriticInsensitive",
                   CompareOptions::caseInsensitive | CompareOptions::diacriticInsensitive);
    search.addQt("peer: QString::indexOf", Qt::CaseSensitive);
    search.addQt("peer: QString::indexOf, insensitive", Qt::CaseInsensitive);
    search.addICU("peer: icu::StringSearch", icu::Collator::TERTIARY);
    search.addICU("peer: icu::StringSearch, insensitive", icu::Collator::PRIMARY);
}

} // namespace

void addTextSearchRows() {
    addSample(
        {"ASCII", {"the", "quick", "brown", "foxes", "jump", "over", "lazy", "dogs", "again"}, "needle"});
    addSample({"German",
               {"zwölf", "Boxkämpfer", "jagen", "Viktor", "quer", "über", "den", "großen", "Sylter", "Deich"},
               "Übermut"});
    addSample(
        {"Korean", {"다람쥐", "헌", "쳇바퀴에", "타고파", "키스의", "고유조건은", "입술끼리"}, "만나야"});
}

} // namespace vorlan::benchmarks
