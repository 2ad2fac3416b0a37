// SPDX-License-Identifier: Apache-2.0
// Any bytes are either refused, or a value that is the same after it was written and read again; and skipping takes and
// refuses the same bytes.

#include "fuzz/Fuzzing.h"

#include <VorlanFoundation/Platform/JSONReader.h>
#include <VorlanFoundation/Platform/JSONWriter.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

using namespace vorlan;

namespace {

// Options of which each byte of input stands for some.
JSONReading readingFor(std::uint8_t choice) {
    JSONReading reading;
    if ((choice & 1) != 0) reading.maximumDepth = 1 + (choice >> 4);
    if ((choice & 2) != 0) reading.maximumSize = choice;
    if ((choice & 4) != 0) reading.strategies.nonFinite = JSONNonFinite();
    if ((choice & 8) != 0) reading.unknownMembers = JSONUnknownMembers::refuse;
    return reading;
}

template <class Read>
std::optional<JSONError> errorOf(std::string_view text, const JSONReading& reading, Read read) try {
    JSONReader reader(text, reading);
    read(reader);
    reader.finish();
    return std::nullopt;
} catch (const JSONError& error) {
    fuzzing::require(error.byteOffset() && *error.byteOffset() <= text.size(), "an error is within the text");
    return error;
}

// As a host's own coding does that trusts in nothing but the kinds.
void walk(JSONReader& reader) {
    switch (reader.nextKind()) {
    case JSONReader::Kind::object:
        for (reader.enterObject(); reader.nextKey();) walk(reader);
        return;
    case JSONReader::Kind::array:
        for (reader.enterArray(); reader.nextElement();) walk(reader);
        return;
    case JSONReader::Kind::text: static_cast<void>(reader.readText()); return;
    case JSONReader::Kind::number: static_cast<void>(reader.readNumber()); return;
    case JSONReader::Kind::boolean: static_cast<void>(reader.readBoolean()); return;
    case JSONReader::Kind::null: fuzzing::require(reader.readNull(), "null is null"); return;
    }
}

void requireSame(const std::optional<JSONError>& one, const std::optional<JSONError>& other,
                 const char* what) {
    fuzzing::require(one.has_value() == other.has_value(), what);
    if (one) fuzzing::require(one->what() == std::string_view(other->what()), what);
}

void requireRoundTrip(const Value& value) {
    JSONWriter writer;
    writer.writeValue(value);
    const auto text = std::move(writer).takeText();
    std::optional<Value> again;
    const auto error = errorOf(text, {}, [&](JSONReader& reader) { again = reader.readValue(); });
    fuzzing::require(!error, "what was written can be read");
    // There are no NaNs, so that what is the same is equal; zeros with a sign are told apart by what is written.
    fuzzing::require(*again == value, "what was written comes back as it was");
    JSONWriter second;
    second.writeValue(*again);
    fuzzing::require(std::move(second).takeText() == text, "what comes back is written the same");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const auto reading = readingFor(data[0]);
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    std::optional<Value> value;
    const auto refusal = errorOf(text, reading, [&](JSONReader& reader) { value = reader.readValue(); });
    const auto walked = errorOf(text, reading, walk);
    auto skipped = errorOf(text, reading, [](JSONReader& reader) { reader.skip(); });
    requireSame(refusal, walked, "a walk takes what is read as a value");
    if (refusal && refusal->kind() == JSONError::Kind::outOfRange) return 0;
    requireSame(refusal, skipped, "skipping takes what is read");
    if (!refusal) requireRoundTrip(*value);
    return 0;
}
