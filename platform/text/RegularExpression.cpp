// SPDX-License-Identifier: Apache-2.0
#include "platform/text/RegularExpression.h"

#include "platform/text/FormatCache.h"
#include "platform/text/UTF16.h"

#include <chrono>
#include <cstdint>
#include <ctime>
#include <limits>
#include <memory>
#include <string>
#include <unicode/regex.h>
#include <unicode/utext.h>
#include <utility>

namespace vorlan {

struct RegularExpression::Compiled {
    std::unique_ptr<const icu::RegexPattern> pattern;
};

namespace {

// What a search may take of its thread's time. What others take on the machine does not count, so that the same is found
// under any load.
class Patience {
public:
    // ICU asks at each place at which it begins a match, and does not count those that it tries in vain.
    static UBool U_CALLCONV isLeftAtPlace(const void* patience, std::int64_t) {
        constexpr unsigned placesBetweenLooks = 64; // at the clock
        const auto& self = *static_cast<const Patience*>(patience);
        return ++self.places_ % placesBetweenLooks != 0 || self.isLeft();
    }

    // It also asks at every ten thousand steps of matching.
    static UBool U_CALLCONV isLeftInMatch(const void* patience, std::int32_t) {
        return static_cast<const Patience*>(patience)->isLeft();
    }

private:
    static constexpr std::chrono::milliseconds limit{100};

    static std::chrono::nanoseconds timeOfThread() {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    }

    bool isLeft() const { return timeOfThread() < end_; }

    const std::chrono::nanoseconds end_ = timeOfThread() + limit;
    mutable unsigned places_ = 0;
};

// Longer ones are made anew each time, so that what is kept does not grow large.
constexpr std::size_t longestKeptPattern = 1024;

struct CloseText {
    void operator()(UText* text) const { utext_close(text); }
};

// Has `use` ask a matcher of a text, where there can be one.
template <class Answer, class Use>
Answer askMatcher(const icu::RegexPattern& pattern, std::string_view text, Answer otherwise, Use&& use) {
    UErrorCode status = U_ZERO_ERROR;
    const auto length = static_cast<std::int64_t>(text.size());
    const std::unique_ptr<UText, CloseText> units(utext_openUTF8(nullptr, text.data(), length, &status));
    const std::unique_ptr<icu::RegexMatcher> matcher(pattern.matcher(status));
    if (U_FAILURE(status)) return otherwise;
    const Patience patience;
    matcher->setMatchCallback(&Patience::isLeftInMatch, &patience, status);
    matcher->setFindProgressCallback(&Patience::isLeftAtPlace, &patience, status);
    matcher->reset(units.get());
    Answer answer = std::forward<Use>(use)(*matcher, status);
    return U_SUCCESS(status) ? answer : otherwise;
}

std::shared_ptr<const RegularExpression> compiled(std::string_view pattern, bool ignoresCase) {
    if (pattern.size() > std::numeric_limits<std::int32_t>::max()) return nullptr;
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<const icu::RegexPattern> made(icu::RegexPattern::compile(
        utf16FromUTF8(pattern), ignoresCase ? std::uint32_t{UREGEX_CASE_INSENSITIVE} : 0, status));
    if (U_FAILURE(status)) return nullptr;
    return std::make_shared<const RegularExpression>(
        std::make_unique<RegularExpression::Compiled>(RegularExpression::Compiled{std::move(made)}));
}

} // namespace

RegularExpression::RegularExpression(std::unique_ptr<const Compiled> compiled)
    : compiled_(std::move(compiled)) {}

RegularExpression::~RegularExpression() = default;

std::shared_ptr<const RegularExpression> RegularExpression::forPattern(std::string_view pattern,
                                                                       bool ignoresCase) {
    // Never destroyed: other threads may search until the process ends.
    static auto& cache = *new FormatCache<RegularExpression>;
    if (pattern.size() > longestKeptPattern) return compiled(pattern, ignoresCase);
    std::string key(ignoresCase ? "i" : "c");
    key += pattern;
    return cache.value(key, [&] { return compiled(pattern, ignoresCase); });
}

std::optional<TextRange> RegularExpression::find(std::string_view text, bool isAnchored) const {
    using Found = std::optional<TextRange>;
    return askMatcher(*compiled_->pattern, text, Found(),
                      [&](icu::RegexMatcher& matcher, UErrorCode& status) -> Found {
                          if (!(isAnchored ? matcher.lookingAt(status) : matcher.find(status)))
                              return std::nullopt;
                          const auto begin = static_cast<std::size_t>(matcher.start64(status));
                          return TextRange{begin, static_cast<std::size_t>(matcher.end64(status)) - begin};
                      });
}

bool RegularExpression::matches(std::string_view text) const {
    return askMatcher(*compiled_->pattern, text, false, [](icu::RegexMatcher& matcher, UErrorCode& status) {
        return matcher.matches(status) != 0;
    });
}

} // namespace vorlan
