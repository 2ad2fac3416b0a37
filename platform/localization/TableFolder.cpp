// SPDX-License-Identifier: Apache-2.0
#include "platform/localization/TableFolder.h"

#include "platform/files/Folders.h"

#include <VorlanFoundation/Platform/Clocks.h>
#include <VorlanFoundation/Platform/Problems.h>

#include <utility>

namespace vorlan {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t nanosecondsBetweenLooks = 100'000'000;

// What is none could lead to another folder.
bool isFileName(std::string_view text) {
    return text.find('/') == std::string_view::npos && text.find('\0') == std::string_view::npos;
}

} // namespace

const StringTableEntry* FolderTexts::find(std::string_view key) const noexcept {
    const StringTableEntry* found = plurals ? plurals->find(key) : nullptr;
    return found == nullptr && strings ? strings->find(key) : found;
}

void TableFolder::refreshWhenDue() {
    const auto now = clocks::monotonicCoarse();
    auto last = lookedAt_.load(std::memory_order_relaxed);
    if (now < last + nanosecondsBetweenLooks ||
        !lookedAt_.compare_exchange_strong(last, now, std::memory_order_relaxed))
        return;
    std::vector<std::string> problems;
    {
        const std::lock_guard lock(mutex_);
        refresh(problems);
    }
    report(problems);
}

std::shared_ptr<const FolderTexts> TableFolder::texts() {
    std::vector<std::string> problems;
    std::shared_ptr<const FolderTexts> texts;
    {
        const std::lock_guard lock(mutex_);
        if (!texts_) refresh(problems);
        texts = texts_;
    }
    report(problems);
    return texts;
}

void TableFolder::report(const std::vector<std::string>& problems) {
    for (const auto& problem : problems) detail::reportProblem(problem, "VorlanFoundation/Bundle");
}

// Empty where there cannot be one.
fs::path TableFolder::folderNow() const {
    if (!isFileName(key_.language)) return {};
    auto folder = fs::path(key_.resources) / "Resources";
    if (!isFolder(folder)) folder = key_.resources;
    return key_.language.empty() ? folder : folder / (key_.language + ".lproj");
}

void TableFolder::refresh(std::vector<std::string>& problems) {
    auto folder = folderNow();
    const bool isThere = isFolder(folder);
    bool isChanged = !texts_ || texts_->isFolderThere != isThere;
    if (folder != folder_ && isFileName(key_.table)) {
        strings_ = TableFile(folder / (key_.table + ".strings"), &StringTable::read);
        plurals_ = TableFile(folder / (key_.table + ".stringsdict"), &StringTable::readPlurals);
        folder_ = std::move(folder);
    }
    isChanged |= strings_.refresh(problems);
    isChanged |= plurals_.refresh(problems);
    if (!isChanged) return;
    texts_ = std::make_shared<const FolderTexts>(
        FolderTexts{.isFolderThere = isThere,
                    .isTableThere = strings_.isThere() || plurals_.isThere(),
                    .plurals = plurals_.texts(),
                    .strings = strings_.texts()});
    current_.store(texts_.get(), std::memory_order_relaxed);
}

} // namespace vorlan
