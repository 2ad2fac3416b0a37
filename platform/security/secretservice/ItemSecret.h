// SPDX-License-Identifier: Apache-2.0
#pragma once

// An item's value as a keyring keeps it: one line of ASCII, the only thing that all of them give back
// unchanged.

#include <VorlanFoundation/Platform/Data.h>

#include <optional>
#include <string>
#include <string_view>

namespace vorlan::security::secretservice {

/// A text that is overwritten before its memory is given back.
///
/// Threads: one thread at a time.
/// Owns:    its text.
class SecretText {
public:
    /// "N" for no value, "B" and base64 for bytes.
    explicit SecretText(const std::optional<Data>& value);
    SecretText(const SecretText&) = delete;
    SecretText& operator=(const SecretText&) = delete;
    ~SecretText();

    const std::string& text() const noexcept { return text_; }

private:
    std::string text_;
};

/// The value in such a text; a Failure when it is none.
std::optional<Data> valueInSecret(std::string_view text);

} // namespace vorlan::security::secretservice
