// SPDX-License-Identifier: Apache-2.0

// Digests of short and long texts, as text.

#include "benchmarks/TextBenchmark.h"
#include "benchmarks/support/InTurn.h"

#include <VorlanFoundation/Extensions/Text.h>

#include <Poco/MD5Engine.h>
#include <Poco/SHA2Engine.h>
#include <QtCore/QByteArray>
#include <QtCore/QCryptographicHash>
#include <glib.h>
#include <openssl/evp.h>

#include <array>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vorlan::benchmarks {

namespace {

/// One of the algorithms, in the terms of each library.
struct Algorithm {
    const char* name;
    const EVP_MD* (*implicit)();
    std::string (*ours)(std::string_view text);
    const char* oursName;
    QCryptographicHash::Algorithm qt;
    std::string (*poco)(const std::string& text);
    GChecksumType glib;
};

std::string hexadecimal(const unsigned char* bytes, unsigned size) {
    static constexpr std::string_view digits = "0123456789abcdef";
    std::string text(std::size_t{2} * size, '\0');
    for (unsigned i = 0; i < size; ++i) {
        text[std::size_t{2} * i] = digits[bytes[i] >> 4U];
        text[std::size_t{2} * i + 1] = digits[bytes[i] & 15U];
    }
    return text;
}

/// An algorithm that was asked for once, and the memory of one digest for all.
class BareDigest {
public:
    explicit BareDigest(const char* algorithm)
        : algorithm_(EVP_MD_fetch(nullptr, algorithm, nullptr), EVP_MD_free),
          context_(EVP_MD_CTX_new(), EVP_MD_CTX_free) {
        if (!algorithm_ || !context_) throw std::runtime_error("OpenSSL has no such digest");
    }

    std::string operator()(const std::string& text) const {
        std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
        unsigned size = 0;
        EVP_DigestInit_ex2(context_.get(), algorithm_.get(), nullptr);
        EVP_DigestUpdate(context_.get(), text.data(), text.size());
        EVP_DigestFinal_ex(context_.get(), digest.data(), &size);
        return hexadecimal(digest.data(), size);
    }

private:
    std::shared_ptr<EVP_MD> algorithm_;
    std::shared_ptr<EVP_MD_CTX> context_;
};

std::string byEVP(const std::string& text, const EVP_MD* algorithm) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned size = 0;
    EVP_Digest(text.data(), text.size(), digest.data(), &size, algorithm, nullptr);
    return hexadecimal(digest.data(), size);
}

std::string byQt(const std::string& text, QCryptographicHash::Algorithm algorithm) {
    const auto bytes = QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()));
    return QCryptographicHash::hash(bytes, algorithm).toHex().toStdString();
}

template <class Engine>
std::string byPoco(const std::string& text) {
    Engine engine;
    engine.update(text);
    return Poco::DigestEngine::digestToHex(engine.digest());
}

std::string byGLib(const std::string& text, GChecksumType algorithm) {
    const std::unique_ptr<char, decltype(&g_free)> digest(
        g_compute_checksum_for_string(algorithm, text.data(), static_cast<gssize>(text.size())), g_free);
    return digest.get();
}

void addDigest(const Algorithm& algorithm, std::size_t size) {
    const std::string text(size, 'a');
    GroupInTurn<std::string> group(std::string(algorithm.name) + " of " + std::to_string(size) + " bytes", 1);
    group.add("floor: EVP, fetched once",
              [text, digest = BareDigest(algorithm.name)](std::size_t) { return digest(text); });
    group.add(algorithm.oursName, [=](std::size_t) { return algorithm.ours(text); });
    group.add("peer: EVP, fetched by each call",
              [=](std::size_t) { return byEVP(text, algorithm.implicit()); });
    group.add("peer: QCryptographicHash", [=](std::size_t) { return byQt(text, algorithm.qt); });
    group.add("peer: Poco::DigestEngine", [=](std::size_t) { return algorithm.poco(text); });
    group.add("peer: GChecksum", [=](std::size_t) { return byGLib(text, algorithm.glib); });
}

} // namespace

void addDigestRows() {
    const Algorithm sha256{"SHA256",
                           EVP_sha256,
                           text::sha256String,
                           "ours: text::sha256String",
                           QCryptographicHash::Sha256,
                           byPoco<Poco::SHA2Engine>,
                           G_CHECKSUM_SHA256};
    const Algorithm md5{"MD5",
                        EVP_md5,
                        text::md5String,
                        "ours: text::md5String",
                        QCryptographicHash::Md5,
                        byPoco<Poco::MD5Engine>,
                        G_CHECKSUM_MD5};
    for (const std::size_t size : {16, 1'024, 65'536}) addDigest(sha256, size);
    for (const std::size_t size : {16, 1'024}) addDigest(md5, size);
}

} // namespace vorlan::benchmarks
