// SPDX-License-Identifier: Apache-2.0
#pragma once

// What keeps keys from being listed.

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/RawValues.h>

#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace vorlan {

/// What went wrong with a keychain. The raw values are the names of the cases.
enum class KeychainError {
    notFound,    ///< For hosts; the library does not use it.
    unexpected,  ///< The keychain answered with a failure.
    emptyResults ///< It answered, but not with a list of attributes.
};

template <>
struct RawValues<KeychainError> {
    static constexpr std::array cases{
        std::pair(KeychainError::notFound, std::string_view("notFound")),
        std::pair(KeychainError::unexpected, std::string_view("unexpected")),
        std::pair(KeychainError::emptyResults, std::string_view("emptyResults")),
    };
};

/// A sentence for people: "The operation couldn’t be completed. (VorlanFoundation.KeychainError error 1.)", where the
/// number is the case's, from 0.
VORLAN_EXPORT std::string localizedDescription(KeychainError error);

} // namespace vorlan
