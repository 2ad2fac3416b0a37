// SPDX-License-Identifier: Apache-2.0
#pragma once

// Writes a JSON text value by value.
//
//     JSONWriter writer;
//     writer.beginObject();
//     writer.key("name");
//     writer.writeText("Ada");
//     writer.endObject();
//     send(std::move(writer).takeData());         // {"name":"Ada"}

#include <VorlanFoundation/Platform/Data.h>
#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/JSONError.h>
#include <VorlanFoundation/Platform/JSONStrategies.h>
#include <VorlanFoundation/Platform/Value.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vorlan {

namespace detail {
class JSONFieldNames;
}

/// How a JSON text is written.
struct JSONWriting {
    JSONStrategies strategies{};
    /// Over several lines, with two blanks for each level.
    bool prettyPrinted = false;
    /// Members of objects in the order of their names' bytes, however they are written.
    bool sortedKeys = false;
    /// How many arrays and objects may stand within one another, from 1 to 2,000.
    std::size_t maximumDepth = 512;
};

/// A push writer.
///
/// Threads: one thread at a time.
/// Owns:    the text, until it is taken.
/// Errors:  what JSON cannot express throws JSONError, with the path; the text is then lost. Calls out of order (a value
///          without a key in an object, an end without a beginning, taking what is not complete) stop the process with a
///          message.
class VORLAN_EXPORT JSONWriter {
public:
    explicit JSONWriter(const JSONWriting& writing = {});
    JSONWriter(const JSONWriter&) = delete;
    JSONWriter& operator=(const JSONWriter&) = delete;
    ~JSONWriter();

    /// How it writes.
    const JSONWriting& writing() const noexcept;

    void beginObject();
    /// The name of the object's next member; its value is the next that is written.
    void key(std::string_view name);
    void endObject();
    void beginArray();
    void endArray();

    void writeNull();
    void writeBoolean(bool value);
    void writeInteger(std::int64_t value);
    void writeUnsigned(std::uint64_t value);
    /// In the fewest digits that read back as the same number, in a form that is no integer's: "0.1", "3.0", "1e+300".
    void writeNumber(double value);
    void writeFloat(float value);
    /// Must be well-formed UTF-8. Only quotes, backslashes and control characters are escaped.
    void writeText(std::string_view text);
    /// A date or data, by the strategy.
    void writeDate(Date date);
    void writeData(std::span<const std::byte> data);
    /// With all that is in it; dates and data by the strategies.
    void writeValue(const Value& value);
    void writeValue(const Value::Dictionary& dictionary);

    /// What was written: one complete value. The writer can then be used no more.
    Data takeData() &&;
    std::string takeText() &&;

    /// Throws a JSONError about the value that is to be written next.
    [[noreturn]] void fail(const std::string& message, JSONError::Kind kind = JSONError::Kind::host) const;

    /// As `key`, for the member of a described type that is at `index`.
    void field(const detail::JSONFieldNames& names, std::size_t index);

private:
    class Text;
    std::unique_ptr<Text> text_;
};

} // namespace vorlan
