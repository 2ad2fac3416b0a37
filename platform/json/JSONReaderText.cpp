// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONReaderText.h"

#include "platform/json/JSONDepth.h"
#include "platform/json/JSONPath.h"
#include "platform/values/UTF8.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace vorlan {
namespace {

constexpr auto where = "VorlanFoundation/JSONReader";
constexpr std::size_t largestSize = 4'000'000'000;
constexpr std::size_t mostKeptMemory = std::size_t{1} << 20;

std::string_view nameOf(JSONReader::Kind kind) {
    switch (kind) {
    case JSONReader::Kind::object: return "an object";
    case JSONReader::Kind::array: return "an array";
    case JSONReader::Kind::text: return "a string";
    case JSONReader::Kind::number: return "a number";
    case JSONReader::Kind::boolean: return "a boolean";
    default: return "null";
    }
}

void requireLimits(const JSONReading& reading) {
    json::requireDepthLimit(reading.maximumDepth, where);
    if (reading.maximumSize > largestSize)
        fatalError("the maximum size has to be at most 4,000,000,000 bytes, and is " +
                       std::to_string(reading.maximumSize),
                   where);
}

} // namespace

std::unique_ptr<JSONReader::Text> JSONReader::Text::take() {
    if (auto* const kept = Kept::get(); kept != nullptr && *kept) return std::move(*kept);
    return std::make_unique<Text>();
}

void JSONReader::Text::giveBack(std::unique_ptr<Text> text) noexcept {
    auto* const kept = Kept::get();
    if (kept == nullptr || *kept || text->memory() > mostKeptMemory) return;
    *kept = std::move(text);
}

std::size_t JSONReader::Text::memory() const {
    return capacity_ + frames_.capacity() * sizeof(Frame) + scratch_.capacity();
}

void JSONReader::Text::begin(std::string_view text, const JSONReading& reading) {
    requireLimits(reading);
    reading_ = reading;
    frames_.clear();
    error_.reset();
    stage_ = Stage::value;
    reserve(text.size() <= reading.maximumSize ? text.size() : 0);
    begin_ = end_ = at_ = valueBegin_ = buffer_.get();
    if (text.size() > reading.maximumSize)
        fail(JSONError::Kind::tooLarge, "a text of " + std::to_string(text.size()) +
                                            " bytes, of which at most " +
                                            std::to_string(reading.maximumSize) + " are allowed");
    end_ = std::copy(text.begin(), text.end(), buffer_.get());
    std::memset(buffer_.get() + text.size(), 0, json::padding);
    if (text.starts_with("\xEF\xBB\xBF")) failAt({begin_, "a JSON text begins without a byte-order mark"});
    at_ = json::afterBlanks(at_);
}

void JSONReader::Text::reserve(std::size_t size) {
    if (capacity_ >= size + json::padding) return;
    buffer_.reset();
    capacity_ = 0;
    buffer_.reset(new char[size + json::padding]); // NOLINT(*-avoid-c-arrays)
    capacity_ = size + json::padding;
}

JSONReader::Kind JSONReader::Text::kind() {
    switch (first()) {
    case '{': return Kind::object;
    case '[': return Kind::array;
    case '"': return Kind::text;
    case 't':
    case 'f': return Kind::boolean;
    case 'n': return Kind::null;
    default:
        if (*at_ == '-' || json::isDigit(*at_)) return Kind::number;
        failAt({at_, "expected a value"});
    }
}

void JSONReader::Text::enter(Kind kind) {
    if (first() != (kind == Kind::object ? '{' : '[')) mismatch(nameOf(kind));
    enterUnchecked(kind);
}

void JSONReader::Text::enterUnchecked(Kind kind) {
    if (frames_.size() >= reading_.maximumDepth)
        fail(JSONError::Kind::tooDeep,
             "more than " + std::to_string(reading_.maximumDepth) + " arrays and objects within one another");
    frames_.push_back({at_, nullptr, 0, kind});
    valueBegin_ = at_++;
    stage_ = Stage::opened;
}

json::ScannedText JSONReader::Text::passKey() {
    json::Fault fault;
    const char* const key = at_ + 1;
    const auto text = json::scanText(key, fault);
    if (text.end == nullptr) failBetween(fault);
    frames_.back().key = key;
    takeColon(text.end + 1);
    return text;
}

std::string_view JSONReader::Text::takeKey() {
    const char* const key = at_ + 1;
    const auto text = passKey();
    if (text.hasEscapes) return unescaped(key, text);
    return {key, static_cast<std::size_t>(text.end - key)};
}

std::string_view JSONReader::Text::unescaped(const char* begin, const json::ScannedText& text) {
    scratch_.clear();
    json::appendUnescaped(scratch_, begin, text.end);
    return scratch_;
}

void JSONReader::Text::skip() {
    requireValue();
    const auto depth = frames_.size();
    skipOne();
    while (frames_.size() > depth) {
        if (frames_.back().kind == Kind::array) {
            if (reachElement()) skipOne();
        } else if (reachMember()) {
            static_cast<void>(passKey());
            skipOne();
        }
    }
}

// Skips a value, or enters an array or object.
void JSONReader::Text::skipOne() {
    json::Fault fault;
    switch (const auto next = kind()) {
    case Kind::object:
    case Kind::array: return enterUnchecked(next);
    case Kind::number: static_cast<void>(takeNumber()); return;
    case Kind::boolean: return takeLiteral(*at_ == 't' ? "true" : "false");
    case Kind::null: return takeLiteral("null");
    case Kind::text: {
        const auto text = json::scanText(at_ + 1, fault);
        if (text.end == nullptr) failAt(fault);
        return took(at_, text.end + 1);
    }
    }
}

void JSONReader::Text::finish() {
    if (stage_ == Stage::failed) throw *error_;
    if (stage_ != Stage::done) fail(JSONError::Kind::host, "the text was not read to its end");
    at_ = json::afterBlanks(at_);
    if (at_ != end_) failAt({at_, "expected the end of the text"});
}

void JSONReader::Text::mismatch(std::string_view expected) {
    const auto found = nameOf(kind());
    // It has to be JSON nevertheless.
    skip();
    fail(JSONError::Kind::typeMismatch,
         "expected " + std::string(expected) + ", found " + std::string(found));
}

void JSONReader::Text::fail(JSONError::Kind kind, const std::string& message) {
    raise(JSONError(kind, message, path().text(), offset()));
}

void JSONReader::Text::failForMissing(std::string_view name) {
    JSONPath path = this->path();
    path.appendMember(name);
    raise(JSONError(JSONError::Kind::missingMember, "is missing", path.text(), offset()));
}

void JSONReader::Text::failAt(const json::Fault& fault) {
    std::string_view message = fault.message;
    if (fault.at == end_) {
        message = "the text ends too early";
    } else if (utf8::characterLength(fault.at, static_cast<std::size_t>(end_ - fault.at)) == 0) {
        message = "the text is not well-formed UTF-8";
    }
    raise(JSONError(JSONError::Kind::malformed, std::string(message), path().text(),
                    static_cast<std::size_t>(fault.at - begin_)));
}

void JSONReader::Text::failBetween(const json::Fault& fault) {
    frames_.back().key = nullptr;
    frames_.back().count = 0;
    failAt(fault);
}

void JSONReader::Text::raise(const JSONError& error) {
    if (!error_) error_ = error;
    valueBegin_ = currentBegin();
    stage_ = Stage::failed;
    throw JSONError(error);
}

JSONPath JSONReader::Text::path() const {
    JSONPath path;
    std::string name;
    for (const Frame& frame : frames_) {
        if (frame.count > 0) path.appendElement(frame.count - 1);
        if (frame.key == nullptr) continue;
        json::Fault fault;
        name.clear();
        json::appendUnescaped(name, frame.key, json::scanText(frame.key, fault).end);
        path.appendMember(name);
    }
    return path;
}

void JSONReader::Text::failForNoValue() {
    if (stage_ == Stage::failed) throw *error_;
    if (stage_ == Stage::done) fatalError("all of the text was read", where);
    fatalError(frames_.back().kind == Kind::object
                   ? "nextKey has to announce a member before its value can be read"
                   : "nextElement has to announce an element before it can be read",
               where);
}

void JSONReader::Text::failForNoFrame(Kind kind) {
    if (stage_ == Stage::failed) throw *error_;
    fatalError(kind == Kind::object ? "nextKey outside of an object" : "nextElement outside of an array",
               where);
}

} // namespace vorlan
