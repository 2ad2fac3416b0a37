// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Thread.h>

#include <unistd.h>

namespace vorlan {

bool Thread::isMainThread() noexcept {
    static thread_local const bool isMain = gettid() == getpid();
    return isMain;
}

} // namespace vorlan
