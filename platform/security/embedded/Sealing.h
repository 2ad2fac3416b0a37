// SPDX-License-Identifier: Apache-2.0
#pragma once

// Sealing bytes, and naming them without telling them: AES-256-GCM and HMAC-SHA256 of OpenSSL.

#include <VorlanFoundation/Platform/Data.h>

#include <array>
#include <cstddef>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace vorlan::security::embedded {

/// 256 bits that nobody else is to know; overwritten when they go.
///
/// Threads: safe from any thread as long as none changes it.
/// Owns:    its bytes.
class Key {
public:
    static constexpr std::size_t size = 32;

    /// All zero: to be filled.
    Key() noexcept : bytes_{} {}
    explicit Key(std::span<const std::byte, size> bytes) noexcept;
    Key(const Key&) noexcept = default;
    Key& operator=(const Key&) noexcept = default;
    ~Key();

    /// A random one. Stops the process when the system has no random numbers.
    static Key random();

    std::span<const std::byte, size> bytes() const noexcept { return bytes_; }
    std::span<std::byte, size> bytes() noexcept { return bytes_; }

private:
    std::array<std::byte, size> bytes_;
};

/// What an HMAC gives.
using Digest = std::array<std::byte, 32>;

/// A name that bytes have under a key: equal for equal bytes, and telling nothing to those without the key. The parts
/// are told apart: {"ab", "c"} is not {"a", "bc"}.
Digest digest(const Key& key, std::initializer_list<std::span<const std::byte>> parts);

/// A key that belongs to another one and a purpose.
Key derivedKey(const Key& key, std::string_view purpose, std::span<const std::byte> context = {});

/// A key from a passphrase by scrypt with N = 65536, r = 8, p = 1, as RFC 7914 defines it: some 0.2 s and 64 MiB, so that
/// guessing is slow. Throws StatusError when there is no memory.
Key keyFromPassphrase(std::string_view passphrase, std::span<const std::byte> salt);

/// Seals bytes so that only the key opens them, and only together with the same `context`: a random nonce of 96 bits, the
/// sealed bytes, a tag of 128 bits.
Data seal(const Key& key, std::span<const std::byte> bytes, std::span<const std::byte> context);

/// Opens what was sealed; absent when anything was changed.
std::optional<Data> open(const Key& key, std::span<const std::byte> sealed,
                         std::span<const std::byte> context);

/// Overwrites bytes that nobody is to find.
void wipe(std::span<std::byte> bytes) noexcept;

/// Writes parts one after the other, each after its length, so that they can be told apart again.
class Packer {
public:
    Packer& add(std::span<const std::byte> part);
    Packer& add(std::string_view part) { return add(std::as_bytes(std::span(part))); }

    const Data& bytes() const noexcept { return bytes_; }
    Data take() { return std::move(bytes_); }

private:
    Data bytes_;
};

/// Reads them again. Throws StatusError (errSecDecode) when the bytes are not of that form.
class Unpacker {
public:
    explicit Unpacker(std::span<const std::byte> bytes) noexcept : rest_(bytes) {}

    std::span<const std::byte> next();

private:
    std::span<const std::byte> rest_;
};

} // namespace vorlan::security::embedded
