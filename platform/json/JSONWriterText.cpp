// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONWriterText.h"

#include "platform/json/JSONDepth.h"
#include "platform/json/JSONEscaping.h"
#include "platform/json/JSONWriterSorting.h"
#include "platform/values/Base64.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <utility>

namespace vorlan {
namespace {

constexpr std::string_view where = "VorlanFoundation/JSONWriter";
constexpr std::size_t indentation = 2;

const JSONWriting& checked(const JSONWriting& writing) {
    json::requireDepthLimit(writing.maximumDepth, where);
    return writing;
}

void appendTo(JSONPath& path, const JSONWriterFrame& frame, const JSONWriterBuffer& text, std::size_t index) {
    if (frame.isObject) {
        path.appendMember(escaping::unescaped(text.data() + frame.nameAt));
    } else {
        path.appendElement(index);
    }
}

} // namespace

JSONWriter::Text::Text(const JSONWriting& writing)
    : writing_(checked(writing)), storage_(JSONWriterStorage::take()), text_(storage_->text) {}

JSONWriter::Text::~Text() {
    JSONWriterStorage::leave(std::move(storage_));
}

void JSONWriter::Text::beginContainer(bool isObject) {
    beginValue();
    if (depth() == writing_.maximumDepth) [[unlikely]] {
        takeBackValue();
        lose("more than " + std::to_string(depth()) + " arrays and objects within one another",
             JSONError::Kind::tooDeep);
    }
    storage_->frames.push_back(frame_);
    frame_ = {.isObject = isObject, .firstMember = storage_->memberStarts.size()};
    expects_ = isObject ? Expects::name : Expects::element;
    text_.append(isObject ? '{' : '[');
}

void JSONWriter::Text::endContainer(bool isObject) {
    if (expects_ != (isObject ? Expects::name : Expects::element)) [[unlikely]]
        failForEnd(isObject);
    if (isObject && writing_.sortedKeys)
        sortMembers(*storage_, frame_.firstMember,
                    writing_.prettyPrinted ? 2 + depth() * indentation : std::size_t{1});
    const bool isEmpty = frame_.count == 0;
    frame_ = storage_->frames.back();
    storage_->frames.pop_back();
    if (writing_.prettyPrinted && !isEmpty) startLine(depth());
    text_.append(isObject ? '}' : ']');
    expects_ = depth() == 0 ? Expects::nothing : frame_.isObject ? Expects::name : Expects::element;
}

void JSONWriter::Text::writeName(std::string_view name) {
    beginName();
    if (!escaping::appendQuoted(text_, name)) [[unlikely]] {
        auto path = this->path();
        path.appendMember(name);
        loseAt(path, "the name is not well-formed UTF-8", JSONError::Kind::illFormedText);
    }
    endName();
}

// A fifth of the time that described types take goes here, so the usual way asks for room only once.
void JSONWriter::Text::writePlainName(std::string_view name) {
    if (writing_.prettyPrinted || writing_.sortedKeys || expects_ != Expects::name) return writeName(name);
    char* at = text_.room(name.size() + std::string_view(R"(,"":)").size());
    if (frame_.count++ != 0) *at++ = ',';
    *at++ = '"';
    frame_.nameAt = static_cast<std::size_t>(at - text_.data());
    at = escaping::copyShort(at, name);
    *at++ = '"';
    *at++ = ':';
    text_.setEnd(at);
    expects_ = Expects::member;
}

void JSONWriter::Text::writeLiteral(std::string_view literal) {
    beginValue();
    text_.append(literal);
}

void JSONWriter::Text::writeQuoted(std::string_view text) {
    beginValue();
    if (escaping::appendQuoted(text_, text)) [[likely]]
        return;
    takeBackValue();
    lose("the text is not well-formed UTF-8", JSONError::Kind::illFormedText);
}

void JSONWriter::Text::writeBase64(std::span<const std::byte> data) {
    beginValue();
    const auto length = base64Length(data.size());
    char* const at = text_.room(length + 2);
    at[0] = '"';
    vorlan::writeBase64(data, at + 1);
    at[length + 1] = '"';
    text_.setEnd(at + length + 2);
}

void JSONWriter::Text::writeNonFinite(double number) {
    if (const auto& texts = writing_.strategies.nonFinite)
        return writeQuoted(std::isnan(number) ? texts->nan
                           : number > 0       ? texts->positiveInfinity
                                              : texts->negativeInfinity);
    lose(std::isnan(number) ? "JSON has no NaN" : "JSON has no infinite numbers", JSONError::Kind::nonFinite);
}

std::string_view JSONWriter::Text::take() {
    if (expects_ == Expects::root) refuse("a text was taken of which nothing is written");
    if (expects_ != Expects::nothing) refuse("a text was taken that is not complete");
    expects_ = Expects::taken;
    return text_.text();
}

void JSONWriter::Text::beginWhole() {
    switch (expects_) {
    case Expects::root: expects_ = Expects::nothing; return;
    case Expects::name: refuse("a value was written in an object without a key");
    default: refuse("a second value was written behind the whole");
    }
}

void JSONWriter::Text::startLine(std::size_t level) {
    text_.append('\n');
    text_.append(level * indentation, ' ');
}

JSONPath JSONWriter::Text::path() const {
    JSONPath path;
    // The first stands for what is around the whole.
    for (std::size_t level = 1; level < storage_->frames.size(); ++level) {
        const auto& frame = storage_->frames[level];
        appendTo(path, frame, text_, frame.count - 1);
    }
    if (expects_ == Expects::member || expects_ == Expects::element)
        appendTo(path, frame_, text_, frame_.count);
    return path;
}

void JSONWriter::Text::takeBackValue() noexcept {
    switch (expects_) {
    case Expects::element: --frame_.count; return;
    case Expects::name: expects_ = Expects::member; return;
    default: expects_ = Expects::root;
    }
}

void JSONWriter::Text::refuse(std::string_view message) const {
    if (expects_ == Expects::failed) throw JSONError(*error_);
    if (expects_ == Expects::taken) fatalError("it was used after its text was taken", where);
    fatalError(message, where);
}

void JSONWriter::Text::failForName() const {
    switch (expects_) {
    case Expects::member: refuse("two keys were written without a value between them");
    case Expects::element: refuse("a key was written in an array");
    default: refuse("a key was written outside of an object");
    }
}

void JSONWriter::Text::failForEnd(bool isObject) const {
    if (expects_ == Expects::member) refuse("an object was ended after a key without a value");
    refuse(isObject ? "an object was ended that was not begun" : "an array was ended that was not begun");
}

void JSONWriter::Text::fail(std::string_view message, JSONError::Kind kind) const {
    if (error_) throw JSONError(*error_);
    throw JSONError(kind, std::string(message), path().text());
}

void JSONWriter::Text::lose(std::string message, JSONError::Kind kind) {
    beginValue(); // is one due at all?
    takeBackValue();
    loseAt(path(), std::move(message), kind);
}

void JSONWriter::Text::loseAt(const JSONPath& path, std::string message, JSONError::Kind kind) {
    error_.emplace(kind, std::move(message), path.text());
    expects_ = Expects::failed;
    throw JSONError(*error_);
}

} // namespace vorlan
