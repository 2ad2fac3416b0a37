// SPDX-License-Identifier: Apache-2.0
#pragma once

// The error that something is to end with.

#include <VorlanFoundation/Platform/JSONDecoder.h>
#include <VorlanFoundation/Platform/JSONEncoder.h>
#include <VorlanFoundation/Platform/JSONError.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace vorlan::tests {

/// What `work` throws; the case has failed when that is nothing.
template <class Work>
JSONError errorOf(Work work) {
    try {
        work();
    } catch (const JSONError& error) {
        return error;
    }
    ADD_FAILURE() << "nothing was thrown";
    return {JSONError::Kind::host, "nothing was thrown", ""};
}

/// What decoding a text throws.
template <class T>
JSONError decodingErrorOf(std::string_view text, const JSONDecoder& decoder = {}) {
    return errorOf([&] { static_cast<void>(decoder.decode<T>(text)); });
}

/// What encoding a value throws.
template <class T>
JSONError encodingErrorOf(const T& value, const JSONEncoder& encoder = {}) {
    return errorOf([&] { static_cast<void>(encoder.encode(value)); });
}

} // namespace vorlan::tests
