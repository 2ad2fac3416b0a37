// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <VorlanFoundation/Platform/Export.h>

namespace vorlan {

/// What a thread can ask about itself.
///
/// Threads: safe from any thread.
class VORLAN_EXPORT Thread {
public:
    /// Whether the calling thread is the one that the process began with.
    static bool isMainThread() noexcept;
};

} // namespace vorlan
