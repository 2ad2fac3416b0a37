// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONWriterStorage.h"

#include "platform/values/PerThread.h"

#include <utility>

namespace vorlan {
namespace {

// What a thread may keep for later.
constexpr std::size_t mostKeptBytes = std::size_t{1} << 20;

std::size_t bytesOf(const JSONWriterStorage& storage) noexcept {
    return storage.text.capacity() + storage.sorted.capacity() +
           storage.frames.capacity() * sizeof(JSONWriterFrame) +
           storage.memberStarts.capacity() * sizeof(std::size_t) +
           storage.members.capacity() * sizeof(JSONWriterMember);
}

using Kept = PerThread<std::unique_ptr<JSONWriterStorage>>;

} // namespace

std::unique_ptr<JSONWriterStorage> JSONWriterStorage::take() {
    if (auto* const kept = Kept::get(); kept != nullptr && *kept) return std::move(*kept);
    return std::make_unique<JSONWriterStorage>();
}

void JSONWriterStorage::leave(std::unique_ptr<JSONWriterStorage> storage) noexcept {
    auto* const kept = Kept::get();
    if (kept == nullptr || *kept || bytesOf(*storage) > mostKeptBytes) return;
    storage->text.clear();
    storage->frames.clear();
    storage->memberStarts.clear();
    *kept = std::move(storage);
}

} // namespace vorlan
