// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONWriterStorage.h"

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

enum class Shelf : unsigned char { unused, open, closed };

// These two outlive the thread's destructors, so that a writer in one of those finds the shelf closed.
thread_local Shelf shelf = Shelf::unused;
thread_local JSONWriterStorage* kept = nullptr;

struct ShelfOwner {
    ShelfOwner() noexcept { shelf = Shelf::open; }
    ShelfOwner(const ShelfOwner&) = delete;
    ShelfOwner& operator=(const ShelfOwner&) = delete;
    ~ShelfOwner() {
        shelf = Shelf::closed;
        delete std::exchange(kept, nullptr);
    }
};

bool isOpen() noexcept {
    if (shelf == Shelf::unused) thread_local const ShelfOwner owner;
    return shelf == Shelf::open;
}

} // namespace

std::unique_ptr<JSONWriterStorage> JSONWriterStorage::take() {
    if (auto* storage = std::exchange(kept, nullptr)) return std::unique_ptr<JSONWriterStorage>(storage);
    return std::make_unique<JSONWriterStorage>();
}

void JSONWriterStorage::leave(std::unique_ptr<JSONWriterStorage> storage) noexcept {
    if (!isOpen() || kept != nullptr || bytesOf(*storage) > mostKeptBytes) return;
    storage->text.clear();
    storage->frames.clear();
    storage->memberStarts.clear();
    kept = storage.release();
}

} // namespace vorlan
