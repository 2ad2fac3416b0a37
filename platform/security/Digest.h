// SPDX-License-Identifier: Apache-2.0
#pragma once

// Digests of bytes, by OpenSSL.

#include <cstddef>
#include <span>
#include <string>

namespace vorlan::security {

enum class DigestAlgorithm : unsigned char { md5, sha1, sha224, sha256, sha384, sha512 };

/// The digest of bytes, two small hexadecimal digits for each of its own. Stops the process where OpenSSL has no such
/// algorithm, as it has no MD5 where it was set up to have approved ones only (FIPS). Safe from any thread, also while
/// the thread or the process ends.
std::string digest(DigestAlgorithm algorithm, std::span<const std::byte> bytes);

} // namespace vorlan::security
