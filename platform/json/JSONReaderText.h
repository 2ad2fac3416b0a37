// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a JSON reader reads, and how far it is.

#include "platform/json/JSONGrammar.h"
#include "platform/json/JSONGrammarNumbers.h"
#include "platform/json/JSONPath.h"
#include "platform/values/PerThread.h"

#include <VorlanFoundation/Platform/JSONReader.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan {

/// A walk over the bytes of a text, which holds all of it to the grammar.
///
/// Texts are handed out as they stand in the buffer, and members' names compared there, so that only texts with escapes
/// are ever copied. An array or object that was entered has a frame; frames know enough of where they are for the path
/// of an error, which is put together only when there is one.
class JSONReader::Text {
public:
    /// One that another reader of this thread was through with, or a new one.
    static std::unique_ptr<Text> take();
    /// Keeps it for the thread's next reader, unless its memory is large.
    static void giveBack(std::unique_ptr<Text> text) noexcept;

    /// Begins with a copy of a text.
    void begin(std::string_view text, const JSONReading& reading);

    const JSONReading& reading() const noexcept { return reading_; }

    /// What the next value is, to go by its first byte.
    Kind kind();
    /// The first byte of the next value.
    char first() {
        requireValue();
        return *at_;
    }

    /// The literal that is next, to go by its first byte.
    void takeLiteral(std::string_view literal);
    /// The Boolean that is next, for which any other value is a mistake.
    bool takeBoolean();
    /// The number that is next, when it is short and `make` makes something of it.
    template <class Make>
    auto takeShortNumber(Make make) {
        requireValue();
        const auto number = json::scanShortNumber(at_);
        auto made = number.end != nullptr ? make(number) : std::nullopt;
        if (made) took(at_, number.end);
        return made;
    }
    /// The number that is next, for which any other value is a mistake.
    json::Number takeNumber();
    /// The text that is next, likewise; it stays until the next one is taken.
    std::string_view takeText();

    void enter(Kind kind);
    /// Whether the object has another member, whose name is then next. What was announced before is skipped.
    bool reachMember();
    /// Takes the name, and all that is before its value.
    std::string_view takeKey();
    /// The same when the name is this one, else does nothing.
    bool takeKeyIf(std::string_view name);
    bool reachElement();

    void skip();
    void finish();

    [[noreturn]] void fail(JSONError::Kind kind, const std::string& message);
    /// The same, about a member of what was left last.
    [[noreturn]] void failForMissing(std::string_view name);
    /// The next value is none of this kind.
    [[noreturn]] void mismatch(std::string_view expected);

private:
    /// What may come now.
    enum class Stage : unsigned char { value, opened, between, done, failed };

    struct Frame {
        const char* begin; ///< Where the array or object begins.
        const char* key;   ///< An object's current member's name, from behind its quote; else null.
        std::size_t count; ///< An array's elements that were announced.
        Kind kind;
    };

    void requireValue() {
        if (stage_ != Stage::value) [[unlikely]]
            failForNoValue();
    }
    void requireFrame(Kind kind) {
        if (stage_ == Stage::failed || frames_.empty() || frames_.back().kind != kind) [[unlikely]]
            failForNoFrame(kind);
    }
    [[noreturn]] void failForNoValue();
    [[noreturn]] void failForNoFrame(Kind kind);

    /// The value that began at `begin` was read, up to `end`.
    void took(const char* begin, const char* end) {
        valueBegin_ = begin;
        at_ = end;
        stage_ = frames_.empty() ? Stage::done : Stage::between;
    }
    bool reachNext(char end, std::string_view expected);
    void leave();
    void takeColon(const char* afterKey);
    json::ScannedText passKey();
    void skipOne();
    void enterUnchecked(Kind kind);

    void reserve(std::size_t size);
    std::size_t memory() const;
    JSONPath path() const;
    std::size_t offset() const { return static_cast<std::size_t>(currentBegin() - begin_); }
    const char* currentBegin() const { return stage_ == Stage::value ? at_ : valueBegin_; }
    std::string_view unescaped(const char* begin, const json::ScannedText& text);
    /// What is at that place is not JSON.
    [[noreturn]] void failAt(const json::Fault& fault);
    /// The same, about what comes between members or elements, and is therefore about all of these.
    [[noreturn]] void failBetween(const json::Fault& fault);
    [[noreturn]] void raise(const JSONError& error);

    JSONReading reading_;
    std::unique_ptr<char[]> buffer_; // NOLINT(*-avoid-c-arrays): not filled with zeros first, as a vector is
    std::size_t capacity_ = 0;
    const char* begin_ = nullptr;
    const char* end_ = nullptr;
    const char* at_ = nullptr; ///< At the next value's first byte where one was announced.
    const char* valueBegin_ = nullptr;
    Stage stage_ = Stage::value;
    std::vector<Frame> frames_;
    std::string scratch_;
    std::optional<JSONError> error_;

    /// What a thread's last reader left to its next one.
    using Kept = PerThread<std::unique_ptr<Text>>;
};

inline void JSONReader::Text::takeLiteral(std::string_view literal) {
    json::Fault fault;
    const char* const end = json::scanLiteral(at_, literal, fault);
    if (end == nullptr) failAt(fault);
    took(at_, end);
}

inline bool JSONReader::Text::takeBoolean() {
    const bool value = first() == 't';
    if (!value && *at_ != 'f') mismatch("a boolean");
    takeLiteral(value ? "true" : "false");
    return value;
}

inline json::Number JSONReader::Text::takeNumber() {
    const char next = first();
    if (next != '-' && !json::isDigit(next)) mismatch("a number");
    json::Fault fault;
    const auto number = json::scanNumber(at_, fault);
    if (number.end == nullptr) failAt(fault);
    took(number.begin, number.end);
    return number;
}

inline std::string_view JSONReader::Text::takeText() {
    if (first() != '"') mismatch("a string");
    json::Fault fault;
    const char* const begin = at_ + 1;
    const auto text = json::scanText(begin, fault);
    if (text.end == nullptr) failAt(fault);
    took(at_, text.end + 1);
    if (text.hasEscapes) return unescaped(begin, text);
    return {begin, static_cast<std::size_t>(text.end - begin)};
}

inline void JSONReader::Text::takeColon(const char* afterKey) {
    at_ = json::afterBlanks(afterKey);
    if (*at_ != ':') failAt({at_, "expected a colon"});
    at_ = json::afterBlanks(at_ + 1);
    stage_ = Stage::value;
}

inline bool JSONReader::Text::takeKeyIf(std::string_view name) {
    const char* const key = at_ + 1;
    if (static_cast<std::size_t>(end_ - key) <= name.size() || key[name.size()] != '"') return false;
    if (std::memcmp(key, name.data(), name.size()) != 0) return false;
    frames_.back().key = key;
    takeColon(key + name.size() + 1);
    return true;
}

// Goes on to the next member or element, behind the comma where there has to be one.
inline bool JSONReader::Text::reachNext(char end, std::string_view expected) {
    if (stage_ == Stage::value) skip();
    at_ = json::afterBlanks(at_);
    if (*at_ == end) {
        leave();
        return false;
    }
    if (stage_ == Stage::opened) return true;
    if (*at_ != ',') failBetween({at_, expected});
    at_ = json::afterBlanks(at_ + 1);
    return true;
}

inline bool JSONReader::Text::reachMember() {
    requireFrame(Kind::object);
    if (!reachNext('}', "expected a comma or the end of the object")) return false;
    if (*at_ != '"') failBetween({at_, "expected the name of a member"});
    return true;
}

inline bool JSONReader::Text::reachElement() {
    requireFrame(Kind::array);
    if (!reachNext(']', "expected a comma or the end of the array")) return false;
    ++frames_.back().count;
    stage_ = Stage::value;
    return true;
}

inline void JSONReader::Text::leave() {
    const char* const begin = frames_.back().begin;
    frames_.pop_back();
    took(begin, at_ + 1);
}

} // namespace vorlan
