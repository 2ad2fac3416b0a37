// SPDX-License-Identifier: Apache-2.0
#include "platform/security/Digest.h"

#include "platform/security/Hexadecimal.h"
#include "platform/values/PerThread.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <openssl/evp.h>

#include <array>
#include <memory>
#include <optional>

namespace vorlan::security {

namespace {

constexpr std::array names{"MD5", "SHA1", "SHA2-224", "SHA2-256", "SHA2-384", "SHA2-512"};

void require(bool succeeded, DigestAlgorithm algorithm) {
    if (succeeded) return;
    const std::string name = names[static_cast<std::size_t>(algorithm)];
    fatalError("OpenSSL cannot make digests by " + name, "VorlanFoundation/Text");
}

// Fetching by name takes longer than the digest of a short text, so it is done once. Never freed: threads may use them
// until the process ends.
const EVP_MD* fetched(DigestAlgorithm algorithm) {
    static const auto all = [] {
        std::array<const EVP_MD*, names.size()> fetching{};
        for (std::size_t i = 0; i < names.size(); ++i) fetching[i] = EVP_MD_fetch(nullptr, names[i], nullptr);
        return fetching;
    }();
    const auto* const found = all[static_cast<std::size_t>(algorithm)];
    require(found != nullptr, algorithm);
    return found;
}

struct Release {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_MD_CTX, Release>;

struct Hasher {
    Context context = Context(EVP_MD_CTX_new());
};

} // namespace

std::string digest(DigestAlgorithm algorithm, std::span<const std::byte> bytes) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> result; // NOLINT(*-member-init): filled as far as it is read
    unsigned size = 0;
    const auto* const type = fetched(algorithm);
    std::optional<Hasher> own; // where the thread is about to end
    auto* const ofThread = PerThread<Hasher>::get();
    EVP_MD_CTX* const context = (ofThread != nullptr ? *ofThread : own.emplace()).context.get();
    require(context != nullptr && EVP_DigestInit_ex2(context, type, nullptr) == 1 &&
                EVP_DigestUpdate(context, bytes.data(), bytes.size()) == 1 &&
                EVP_DigestFinal_ex(context, result.data(), &size) == 1,
            algorithm);
    return hexadecimal(std::as_bytes(std::span(result).first(size)));
}

} // namespace vorlan::security
