// SPDX-License-Identifier: Apache-2.0
#pragma once

// Pages to go through one by one.
//
//     Pager<Page> pager{first, second, third};
//     while (!pager.isLast()) pager.makeNext();
//     if (const auto page = pager.pull()) show(*page);

#include <VorlanFoundation/Platform/CheckedArithmetic.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <vector>

namespace vorlan {

/// A list of pages and the number of the current one, from 0.
///
/// The number has no bounds: it may be set, or stepped, to where no page is. Ask `isFirst` and `isLast` before a step
/// to stay within them.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
/// Owns:    its pages.
/// Errors:  a number that does not fit stops the process.
template <class Page>
class Pager {
public:
    /// Begins with the first of these.
    Pager(std::initializer_list<Page> pages) : pages_(pages) {}

    const std::vector<Page>& pages() const noexcept { return pages_; }

    std::int64_t currentPage() const noexcept { return currentPage_; }
    void setCurrentPage(std::int64_t page) noexcept { currentPage_ = page; }

    /// The current page; absent where there is none of that number.
    std::optional<Page> pull() const {
        const auto place = static_cast<std::uint64_t>(currentPage_); // beyond all pages where it is below 0
        if (place >= pages_.size()) return std::nullopt;
        return pages_[static_cast<std::size_t>(place)];
    }

    bool isFirst() const noexcept { return currentPage_ == 0; }
    bool isLast() const noexcept { return currentPage_ == count() - 1; }

    /// How much of the pages is done with the current one: 1 on the last, and beyond 1 or below 0 where the number is
    /// beyond the pages. 1 where there are none.
    double donePercentage() const {
        if (count() < 1) return 1;
        return static_cast<double>(checked::add<std::int64_t>(currentPage_, 1)) /
               static_cast<double>(count());
    }

    void makeNext() { currentPage_ = checked::add<std::int64_t>(currentPage_, 1); }
    void makePrevious() { currentPage_ = checked::subtract<std::int64_t>(currentPage_, 1); }
    void makeFirst() noexcept { currentPage_ = 0; }
    void makeLast() noexcept { currentPage_ = count() - 1; }

private:
    std::int64_t count() const noexcept { return static_cast<std::int64_t>(pages_.size()); }

    std::vector<Page> pages_;
    std::int64_t currentPage_ = 0;
};

} // namespace vorlan
