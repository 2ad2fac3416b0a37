// SPDX-License-Identifier: Apache-2.0
#pragma once

// The text that a writer writes, and what may come next in it.

#include "platform/json/JSONNumberText.h"
#include "platform/json/JSONPath.h"
#include "platform/json/JSONWriterStorage.h"

#include <VorlanFoundation/Platform/JSONWriter.h>

#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vorlan {

/// Threads: one thread at a time.
/// Errors:  as the writer's.
class JSONWriter::Text {
public:
    explicit Text(const JSONWriting& writing);
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text();

    const JSONWriting& writing() const noexcept { return writing_; }

    void beginContainer(bool isObject);
    void endContainer(bool isObject);
    void writeName(std::string_view name);
    /// Of a name that is known to need no escaping.
    void writePlainName(std::string_view name);

    void writeLiteral(std::string_view literal);
    void writeNumber(std::integral auto number) { appendNumber(number); }
    void writeNumber(std::floating_point auto number) {
        if (!std::isfinite(number)) [[unlikely]]
            return writeNonFinite(number);
        appendNumber(number);
    }
    void writeQuoted(std::string_view text);
    void writeBase64(std::span<const std::byte> data);

    /// All of it.
    std::string_view take();

    /// Throws an error about the value that is to be written next. `lose` gives the text up as well.
    [[noreturn]] void fail(std::string_view message, JSONError::Kind kind) const;
    [[noreturn]] void lose(std::string message, JSONError::Kind kind);

private:
    enum class Expects : std::uint8_t {
        root,
        element,
        name,
        member,  ///< The value of a member of which the name is written.
        nothing, ///< It is complete.
        failed,
        taken
    };

    void beginValue() {
        if (expects_ == Expects::member) {
            expects_ = Expects::name;
        } else if (expects_ == Expects::element) {
            separate(frame_.count++);
        } else {
            beginWhole();
        }
    }
    void beginWhole();

    void beginName() {
        if (expects_ != Expects::name) [[unlikely]]
            failForName();
        separate(frame_.count++);
        if (writing_.sortedKeys) storage_->memberStarts.push_back(text_.size());
        frame_.nameAt = text_.size() + 1;
    }
    void endName() {
        text_.append(':');
        if (writing_.prettyPrinted) text_.append(' ');
        expects_ = Expects::member;
    }

    // Before the next in an array or object, in which there were so many before.
    void separate(std::size_t count) {
        if (count != 0) text_.append(',');
        if (writing_.prettyPrinted) startLine(depth());
    }
    void startLine(std::size_t level);

    template <class Number>
    void appendNumber(Number number) {
        beginValue();
        text_.setEnd(writeNumberText(text_.room(longestNumber), number));
    }
    void writeNonFinite(double number);

    // How many arrays and objects are being written.
    std::size_t depth() const noexcept { return storage_->frames.size(); }

    // Of the value that is to be written next or, where that is a member without a name as yet, of its object.
    JSONPath path() const;

    // The value that was begun last is still to be written.
    void takeBackValue() noexcept;

    // For calls out of order.
    [[noreturn]] void refuse(std::string_view message) const;
    [[noreturn]] void failForName() const;
    [[noreturn]] void failForEnd(bool isObject) const;

    [[noreturn]] void loseAt(const JSONPath& path, std::string message, JSONError::Kind kind);

    JSONWriting writing_;
    std::unique_ptr<JSONWriterStorage> storage_;
    JSONWriterBuffer& text_;
    JSONWriterFrame frame_; ///< The innermost; the outermost of all is none.
    Expects expects_ = Expects::root;
    std::optional<JSONError> error_; ///< For which the text is lost.
};

} // namespace vorlan
