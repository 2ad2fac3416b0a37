// SPDX-License-Identifier: Apache-2.0
#pragma once

// The file with the key that everything in the embedded store is sealed by, in the end.

#include "platform/security/embedded/Sealing.h"

#include <filesystem>

namespace vorlan::security::embedded {

/// Reads the key. Throws StatusError: errSecNotAvailable when there is no such file, or it is not the user's own and
/// for no one else, and errSecInvalidKeychain when it is damaged.
Key readKeyFile(const std::filesystem::path& path);

/// Makes the file with a random key; where there is one already, reads that. Throws StatusError.
Key makeKeyFile(const std::filesystem::path& path);

/// Throws StatusError (errSecNotAvailable) unless a file or folder is there, the user's own, and nobody else may read or
/// write it: a store that others can exchange protects nothing.
enum class Guarded { file, folder };
void requireGuarded(const std::filesystem::path& path, Guarded kind);

} // namespace vorlan::security::embedded
