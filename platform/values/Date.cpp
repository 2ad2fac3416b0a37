// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Date.h>

namespace vorlan {

namespace {

// 2001-01-01T00:00:00Z on the system's clock, which counts from 1970.
constexpr std::chrono::sys_days referenceDate{std::chrono::year(2001) / std::chrono::January / 1};

} // namespace

Date::Date() noexcept : Date(std::chrono::system_clock::now()) {}

Date::Date(std::chrono::system_clock::time_point time) noexcept
    : seconds_(std::chrono::duration<double>(time - referenceDate).count()) {}

} // namespace vorlan
