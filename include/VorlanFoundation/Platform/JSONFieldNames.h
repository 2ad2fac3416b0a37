// SPDX-License-Identifier: Apache-2.0
#pragma once

// The names of a described type's members, in each style that they may have in JSON.

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/JSONStrategies.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan::detail {

/// Made once for each described type, and kept until the process ends.
///
/// Threads: safe from any thread; nothing changes it.
class VORLAN_EXPORT JSONFieldNames {
public:
    /// `names` are identifiers, in the order of their declaration, with static lifetime.
    explicit JSONFieldNames(std::span<const std::string_view> names);

    std::size_t size() const noexcept { return declared_.size(); }

    /// All of them, in a style. Stops the process with a message when two are the same there.
    std::span<const std::string_view> styled(JSONKeys style) const {
        return style == JSONKeys::asDeclared ? declared_ : snakeCased();
    }

private:
    std::span<const std::string_view> snakeCased() const;

    std::span<const std::string_view> declared_;
    std::vector<std::string> snakeCaseTexts_;
    std::vector<std::string_view> snakeCase_;
    std::string repeated_; ///< What two of these are called; empty when each has its own.
};

} // namespace vorlan::detail
