// SPDX-License-Identifier: Apache-2.0
#pragma once

// Reads a JSON text value by value, without keeping what was read.
//
//     JSONReader reader(R"({"name": "Ada", "marks": [1, 2]})");
//     reader.enterObject();
//     while (const auto key = reader.nextKey())
//         if (*key == "name") name = reader.readText();       // what is not read is skipped
//     reader.finish();

#include <VorlanFoundation/Platform/Data.h>
#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/JSONError.h>
#include <VorlanFoundation/Platform/JSONStrategies.h>
#include <VorlanFoundation/Platform/Value.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vorlan {

namespace detail {
class JSONFieldNames;
}

/// What a decoder does with members that the type which it decodes does not have.
enum class JSONUnknownMembers : std::uint8_t { ignore, refuse };

/// How a JSON text is read.
struct JSONReading {
    JSONStrategies strategies{};
    JSONUnknownMembers unknownMembers = JSONUnknownMembers::ignore;
    /// How many arrays and objects may stand within one another, from 1 to 2,000.
    std::size_t maximumDepth = 512;
    /// In bytes; no text may be larger than 4,000,000,000.
    std::size_t maximumSize = 4'000'000'000;
};

/// A pull reader: the caller asks for what it expects next.
///
/// The whole text is held to RFC 8259, also what is skipped: what a reader was through with, up to `finish`, is JSON.
/// Of members with one name, all are handed out.
///
/// Threads:     one thread at a time.
/// Owns:        a copy of the text.
/// Errors:      every operation throws JSONError, with the path and the byte; after that nothing more can be read.
///              Calls out of order (a key outside of an object, a second value for one key) stop the process with a
///              message.
class VORLAN_EXPORT JSONReader {
public:
    /// What a value can be.
    enum class Kind : std::uint8_t { object, array, text, number, boolean, null };

    /// Begins with a text in UTF-8, without a byte-order mark.
    explicit JSONReader(std::string_view text, const JSONReading& reading = {});
    JSONReader(const JSONReader&) = delete;
    JSONReader& operator=(const JSONReader&) = delete;
    ~JSONReader();

    /// How it reads.
    const JSONReading& reading() const noexcept;

    /// What the next value is; it stays the next.
    Kind nextKind();

    /// Whether the next value is null; if so, it was read.
    bool readNull();

    /// The next value, which must be of that kind.
    bool readBoolean();
    /// A whole number that fits into 64 bits; 3.0 and 2e2 are whole, too.
    std::int64_t readInteger();
    std::uint64_t readUnsigned();
    /// The number of the type that is nearest to what is written; or one that is not finite, by the strategy.
    double readNumber();
    float readFloat();
    /// Valid until the next operation of this reader.
    std::string_view readText();
    /// A date or data, by the strategy.
    Date readDate();
    Data readData();
    /// Whatever it is: an object becomes a dictionary (of equal keys the last counts), a number without fraction and
    /// exponent an integer if it fits into 64 bits, any other a double.
    Value readValue();

    /// Goes into the object that is next. Each member is then announced by `nextKey`.
    void enterObject();
    /// The name of the object's next member, valid until the next operation; its value is the next value. Absent at the
    /// end of the object, which was left then.
    [[nodiscard]] std::optional<std::string_view> nextKey();
    /// Goes into the array that is next. Each element is then announced by `nextElement`.
    void enterArray();
    /// Whether there is another element, which is then the next value. False at the end of the array, which was left
    /// then.
    [[nodiscard]] bool nextElement();

    /// Skips the next value.
    void skip();

    /// Throws unless all of the text was read.
    void finish();

    /// Throws a JSONError about the value that was announced or read last.
    [[noreturn]] void fail(const std::string& message, JSONError::Kind kind = JSONError::Kind::host) const;

    /// As `nextKey` for an object with the members of a described type: the next member's place among these, looked for
    /// from `expected` on. Members that are none of these are skipped, or refused. `names.size()` at the end.
    std::size_t nextField(const detail::JSONFieldNames& names, std::size_t expected);

    /// Throws a JSONError about the member at `index`, which the object that was left last lacks.
    [[noreturn]] void failForMissing(const detail::JSONFieldNames& names, std::size_t index) const;

private:
    class Text;
    std::unique_ptr<Text> text_;
};

} // namespace vorlan
