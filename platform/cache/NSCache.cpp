// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NSCache.h>

#include "platform/cache/CacheContents.h"

namespace vorlan::detail {

CacheStore::CacheStore() : contents_(std::make_unique<CacheContents>()) {}
CacheStore::~CacheStore() = default;

CacheStore::Object CacheStore::object(std::string_view key) const {
    return contents_->object(key);
}

void CacheStore::setObject(std::string_view key, Object object, std::size_t cost) {
    contents_->set(key, std::move(object), cost);
}

void CacheStore::removeObject(std::string_view key) {
    contents_->remove(key);
}

void CacheStore::removeAllObjects() {
    contents_->removeAll();
}

std::size_t CacheStore::count() const {
    return contents_->count();
}

std::size_t CacheStore::totalCost() const {
    return contents_->totalCost();
}

std::size_t CacheStore::countLimit() const {
    return contents_->countLimit();
}

std::size_t CacheStore::totalCostLimit() const {
    return contents_->totalCostLimit();
}

void CacheStore::setCountLimit(std::size_t limit) {
    contents_->setCountLimit(limit);
}

void CacheStore::setTotalCostLimit(std::size_t limit) {
    contents_->setTotalCostLimit(limit);
}

void CacheStore::setEvictionHandler(EvictionHandler handler) {
    contents_->setEvictionHandler(std::move(handler));
}

void CacheStore::giveBack(std::size_t count) {
    contents_->giveBack(count);
}

} // namespace vorlan::detail
