// SPDX-License-Identifier: Apache-2.0
#pragma once

// Coding that does not throw.

#include <VorlanFoundation/Platform/JSONDecoder.h>
#include <VorlanFoundation/Platform/JSONEncoder.h>
#include <VorlanFoundation/Platform/Result.h>

#include <exception>
#include <span>

namespace vorlan::detail {

/// What `code` returns, or why it did not: an error of JSON, or another exception as one.
template <class T, class Code>
Result<T> codingResult(const Code& code) {
    try {
        return Result<T>(code());
    } catch (const JSONError& error) {
        return Result<T>(error);
    } catch (const std::exception& error) { // For want of memory.
        return Result<T>(JSONError(JSONError::Kind::host, error.what(), "$"));
    }
}

template <Decodable T>
Result<T> decodingResult(std::span<const std::byte> data, const JSONDecoder& decoder) {
    return codingResult<T>([&] { return decoder.decode<T>(data); });
}

template <Encodable T>
Result<Data> encodingResult(const T& value, const JSONEncoder& encoder) {
    return codingResult<Data>([&] { return encoder.encode(value); });
}

} // namespace vorlan::detail
