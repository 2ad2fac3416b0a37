// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/Operation.h>

#include <string>

namespace vorlan {

/// What an operation is called in messages: by its name, or by its address when it has none.
inline std::string operationName(const Operation& operation) {
    const auto name = operation.name();
    return "operation '" + (name.empty() ? describeAddress(&operation) : name) + "'";
}

} // namespace vorlan
