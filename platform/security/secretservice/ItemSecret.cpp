// SPDX-License-Identifier: Apache-2.0
#include "platform/security/secretservice/ItemSecret.h"

#include "platform/security/secretservice/Base64.h"
#include "platform/security/secretservice/Failure.h"

#include <openssl/crypto.h>

#include <utility>

namespace vorlan::security::secretservice {

SecretText::SecretText(const std::optional<Data>& value) {
    if (!value) {
        text_ = "N";
        return;
    }
    // Room for all at once: a text that grows leaves copies behind.
    text_.reserve(base64Length(value->size()) + 2);
    text_ = "B";
    appendBase64(text_, *value);
}

SecretText::~SecretText() {
    OPENSSL_cleanse(text_.data(), text_.size());
}

std::optional<Data> valueInSecret(std::string_view text) {
    if (text == "N") return std::nullopt;
    if (text.starts_with('B'))
        if (auto value = fromBase64(text.substr(1))) return value;
    throw Failure(Failure::Kind::other, errSecDecode);
}

} // namespace vorlan::security::secretservice
