// SPDX-License-Identifier: Apache-2.0
#pragma once

// Patterns that texts may match.

#include <VorlanFoundation/Platform/TextSearch.h>

#include <memory>
#include <optional>
#include <string_view>

namespace vorlan {

/// A pattern of ICU's. Gives up where matching takes the thread a tenth of a second, or more memory than ICU grants, and
/// where a text has 2 GiB or more; nothing is found then. Making one is not limited.
///
/// Threads: safe from any thread: it never changes.
/// Owns:    what ICU compiled.
class RegularExpression {
public:
    /// The one of a pattern, from those that were made before where there is one; null where the pattern is none.
    static std::shared_ptr<const RegularExpression> forPattern(std::string_view pattern, bool ignoresCase);

    /// ICU's pattern, whose header nobody else needs.
    struct Compiled;
    explicit RegularExpression(std::unique_ptr<const Compiled> compiled);
    RegularExpression(const RegularExpression&) = delete;
    RegularExpression& operator=(const RegularExpression&) = delete;
    ~RegularExpression();

    /// The first part of a text that matches; where `isAnchored`, only at its very beginning.
    std::optional<TextRange> find(std::string_view text, bool isAnchored) const;

    /// Whether the whole text matches.
    bool matches(std::string_view text) const;

private:
    std::unique_ptr<const Compiled> compiled_;
};

} // namespace vorlan
