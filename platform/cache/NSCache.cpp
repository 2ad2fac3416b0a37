// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NSCache.h>

#include "platform/cache/CacheContents.h"

namespace vorlan::detail {

CacheStore::~CacheStore() = default;

std::shared_ptr<CacheStore> CacheStore::make() {
    return std::make_shared<CacheContents>();
}

} // namespace vorlan::detail
