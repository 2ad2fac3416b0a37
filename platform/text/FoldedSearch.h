// SPDX-License-Identifier: Apache-2.0
#pragma once

// Looking for a text among those that count as the same.

#include "platform/text/FoldedText.h"

#include <VorlanFoundation/Platform/TextSearch.h>

#include <cstddef>
#include <optional>
#include <string_view>

namespace vorlan {

/// One needle, looked for in texts. Takes time that grows with the lengths only, and folds no more of a text than it has
/// to, some thousand bytes at once.
///
/// Threads: safe from any thread: it never changes.
/// Owns:    the needle's units.
class FoldedSearch {
public:
    FoldedSearch(std::string_view needle, CompareOptions options);

    std::optional<TextRange> find(std::string_view text) const;

private:
    std::optional<TextRange> first(std::string_view text) const;
    std::optional<TextRange> last(std::string_view text) const;
    std::optional<TextRange> atBegin(std::string_view text) const;
    std::optional<TextRange> atEnd(std::string_view text) const;
    template <class Use>
    void forEachMatch(std::string_view text, std::size_t from, Use&& use) const;

    CompareOptions options_;
    TextFolding folding_;
    FoldedText needle_;
};

} // namespace vorlan
