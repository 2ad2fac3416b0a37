// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the tests of the reader share.

#include <VorlanFoundation/Platform/JSONReader.h>

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace jsontests {

using vorlan::JSONError;
using vorlan::JSONReader;
using vorlan::JSONReading;

/// The error of reading a text, from its first byte to its last; a failure where there is none.
template <class Read>
JSONError errorOf(std::string_view text, Read read, const JSONReading& reading = {}) {
    try {
        JSONReader reader(text, reading);
        read(reader);
        reader.finish();
    } catch (const JSONError& error) {
        return error;
    }
    ADD_FAILURE() << "was read: " << text;
    return JSONError(JSONError::Kind::host, "no error", "");
}

/// What reading all of a text gives.
template <class Read>
auto readWhole(std::string_view text, Read read, const JSONReading& reading = {}) {
    JSONReader reader(text, reading);
    auto value = read(reader);
    reader.finish();
    return value;
}

/// Checks all that an error says.
inline void expectError(const JSONError& error, JSONError::Kind kind, std::string_view message,
                        std::string_view path, std::size_t byteOffset) {
    EXPECT_EQ(error.kind(), kind) << error.what();
    EXPECT_EQ(error.message(), message);
    EXPECT_EQ(error.path(), path);
    EXPECT_EQ(error.byteOffset(), byteOffset) << error.what();
}

inline void readAnything(JSONReader& reader) {
    static_cast<void>(reader.readValue());
}

inline void skipIt(JSONReader& reader) {
    reader.skip();
}

} // namespace jsontests
