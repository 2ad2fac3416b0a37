// SPDX-License-Identifier: Apache-2.0
#include "platform/runloop/KernelThreadName.h"

#include <pthread.h>

#include <algorithm>
#include <cstddef>

namespace vorlan {

void setKernelThreadName(const std::string& name) {
    constexpr std::size_t longest = 15;
    auto length = std::min(name.size(), longest);
    const auto isWithinCharacter = [&] { return (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80; };
    while (length > 0 && length < name.size() && isWithinCharacter()) --length;
    pthread_setname_np(pthread_self(), name.substr(0, length).c_str());
}

} // namespace vorlan
