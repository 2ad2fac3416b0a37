// SPDX-License-Identifier: Apache-2.0
#include "platform/security/embedded/Sealing.h"

#include "platform/security/RandomBytes.h"
#include "platform/security/StatusError.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <openssl/core_names.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/params.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

namespace vorlan::security::embedded {

namespace {

constexpr std::size_t nonceSize = 12;
constexpr std::size_t tagSize = 16;

struct Release {
    void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
    void operator()(EVP_MAC_CTX* context) const { EVP_MAC_CTX_free(context); }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, Release>;
using MacContext = std::unique_ptr<EVP_MAC_CTX, Release>;

// What OpenSSL only refuses when it is out of memory.
void require(bool succeeded) {
    if (!succeeded) throw StatusError(errSecAllocate);
}

// Fetching by name takes longer than sealing a password, so it is done once. Never freed: threads may use it until the
// process ends.
const EVP_CIPHER* cipher() {
    static const EVP_CIPHER* const fetched = EVP_CIPHER_fetch(nullptr, "AES-256-GCM", nullptr);
    if (fetched == nullptr) fatalError("OpenSSL has no AES-256-GCM", "VorlanFoundation/Keychain");
    return fetched;
}

EVP_MAC_CTX* makeMacContext() {
    EVP_MAC* const mac = EVP_MAC_fetch(nullptr, "HMAC", nullptr);
    EVP_MAC_CTX* const context = mac != nullptr ? EVP_MAC_CTX_new(mac) : nullptr;
    char name[] = "SHA256";
    const OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, name, 0),
                                     OSSL_PARAM_construct_end()};
    if (context == nullptr || EVP_MAC_CTX_set_params(context, parameters) != 1)
        fatalError("OpenSSL has no HMAC with SHA-256", "VorlanFoundation/Keychain");
    return context;
}

// Likewise: a copy of a context that knows the algorithm needs no fetching.
MacContext macContext() {
    static const EVP_MAC_CTX* const prepared = makeMacContext();
    MacContext context(EVP_MAC_CTX_dup(prepared));
    require(context != nullptr);
    return context;
}

unsigned char* raw(std::byte* bytes) {
    return reinterpret_cast<unsigned char*>(bytes);
}

const unsigned char* raw(const std::byte* bytes) {
    return reinterpret_cast<const unsigned char*>(bytes);
}

std::array<std::byte, 4> lengthOf(std::span<const std::byte> part) {
    std::array<std::byte, 4> length{};
    for (std::size_t i = 0; i < length.size(); ++i)
        length[i] = static_cast<std::byte>(part.size() >> (8 * i));
    return length;
}

} // namespace

Key::Key(std::span<const std::byte, size> bytes) noexcept {
    std::ranges::copy(bytes, bytes_.begin());
}

Key::~Key() {
    wipe(bytes_);
}

Key Key::random() {
    Key key;
    fillRandomly(key.bytes_);
    return key;
}

void wipe(std::span<std::byte> bytes) noexcept {
    OPENSSL_cleanse(bytes.data(), bytes.size());
}

Digest digest(const Key& key, std::initializer_list<std::span<const std::byte>> parts) {
    const auto context = macContext();
    require(EVP_MAC_init(context.get(), raw(key.bytes().data()), Key::size, nullptr) == 1);
    for (const auto part : parts) {
        const auto length = lengthOf(part);
        require(EVP_MAC_update(context.get(), raw(length.data()), length.size()) == 1);
        require(EVP_MAC_update(context.get(), raw(part.data()), part.size()) == 1);
    }
    Digest result;
    std::size_t size = 0;
    require(EVP_MAC_final(context.get(), raw(result.data()), &size, result.size()) == 1);
    return result;
}

Key derivedKey(const Key& key, std::string_view purpose, std::span<const std::byte> context) {
    auto bytes = digest(key, {std::as_bytes(std::span(purpose)), context});
    Key derived(bytes);
    wipe(bytes);
    return derived;
}

Key keyFromPassphrase(std::string_view passphrase, std::span<const std::byte> salt) {
    constexpr std::uint64_t cost = 65536;
    constexpr std::uint64_t blockSize = 8;
    constexpr std::uint64_t memory = std::uint64_t{128} << 20;
    Key key;
    require(EVP_PBE_scrypt(passphrase.data(), passphrase.size(), raw(salt.data()), salt.size(), cost,
                           blockSize, 1, memory, raw(key.bytes().data()), Key::size) == 1);
    return key;
}

Data seal(const Key& key, std::span<const std::byte> bytes, std::span<const std::byte> context) {
    Data sealed(nonceSize + bytes.size() + tagSize);
    fillRandomly(std::span(sealed).first(nonceSize));
    const CipherContext state(EVP_CIPHER_CTX_new());
    require(state != nullptr);
    int size = 0;
    auto* out = raw(sealed.data());
    require(EVP_EncryptInit_ex2(state.get(), cipher(), raw(key.bytes().data()), out, nullptr) == 1);
    require(EVP_EncryptUpdate(state.get(), nullptr, &size, raw(context.data()),
                              static_cast<int>(context.size())) == 1);
    out += nonceSize;
    require(EVP_EncryptUpdate(state.get(), out, &size, raw(bytes.data()), static_cast<int>(bytes.size())) ==
            1);
    out += bytes.size();
    require(EVP_EncryptFinal_ex(state.get(), out, &size) == 1);
    require(EVP_CIPHER_CTX_ctrl(state.get(), EVP_CTRL_AEAD_GET_TAG, tagSize, out) == 1);
    return sealed;
}

std::optional<Data> open(const Key& key, std::span<const std::byte> sealed,
                         std::span<const std::byte> context) {
    if (sealed.size() < nonceSize + tagSize) return std::nullopt;
    const auto content = sealed.subspan(nonceSize, sealed.size() - nonceSize - tagSize);
    std::array<std::byte, tagSize> tag;
    std::ranges::copy(sealed.last(tagSize), tag.begin());
    const CipherContext state(EVP_CIPHER_CTX_new());
    require(state != nullptr);
    int size = 0;
    require(EVP_DecryptInit_ex2(state.get(), cipher(), raw(key.bytes().data()), raw(sealed.data()),
                                nullptr) == 1);
    require(EVP_DecryptUpdate(state.get(), nullptr, &size, raw(context.data()),
                              static_cast<int>(context.size())) == 1);
    Data opened(content.size());
    require(EVP_DecryptUpdate(state.get(), raw(opened.data()), &size, raw(content.data()),
                              static_cast<int>(content.size())) == 1);
    require(EVP_CIPHER_CTX_ctrl(state.get(), EVP_CTRL_AEAD_SET_TAG, tagSize, tag.data()) == 1);
    std::byte none{};
    if (EVP_DecryptFinal_ex(state.get(), raw(&none), &size) == 1) return opened;
    wipe(opened);
    return std::nullopt;
}

Packer& Packer::add(std::span<const std::byte> part) {
    const auto length = lengthOf(part);
    bytes_.insert(bytes_.end(), length.begin(), length.end());
    bytes_.insert(bytes_.end(), part.begin(), part.end());
    return *this;
}

std::span<const std::byte> Unpacker::next() {
    constexpr std::size_t prefix = 4;
    if (rest_.size() < prefix) throw StatusError(errSecDecode);
    std::size_t length = 0;
    for (std::size_t i = prefix; i-- > 0;) length = length << 8 | std::to_integer<std::size_t>(rest_[i]);
    rest_ = rest_.subspan(prefix);
    if (length > rest_.size()) throw StatusError(errSecDecode);
    const auto part = rest_.first(length);
    rest_ = rest_.subspan(length);
    return part;
}

} // namespace vorlan::security::embedded
