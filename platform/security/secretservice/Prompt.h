// SPDX-License-Identifier: Apache-2.0
#pragma once

// Questions that a service would put to the user before it goes on.

#include "platform/security/secretservice/SecretServiceConnection.h"

#include <string>

namespace vorlan::security::secretservice {

/// What a service gives for a question where it has none.
inline constexpr char noObject[] = "/";

/// Has the service put a question to the user and waits for the answer, some minutes at most. What was asked
/// for has happened when this returns; Failures are errSecUserCanceled, and errSecInteractionNotAllowed after
/// that time.
void ask(const SecretServiceConnection& service, const std::string& prompt, const Deadline& deadline);

/// Tells the service not to ask.
void dismiss(const SecretServiceConnection& service, const std::string& prompt,
             const Deadline& deadline) noexcept;

} // namespace vorlan::security::secretservice
