// SPDX-License-Identifier: Apache-2.0
#pragma once

// Texts of which RFC 8259 says whether they are JSON, each with what a reader makes of it.

#include <VorlanFoundation/Platform/Value.h>

#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan::tests {

/// What RFC 8259 says of a text. `either`: it leaves the choice to those who read.
enum class Verdict { accept, reject, either };

/// What comes of reading it into a Value.
enum class Outcome { value, malformed, outOfRange, tooDeep };

struct JSONText {
    std::string name; ///< In UpperCamel.
    std::string text;
    Verdict verdict;
    Outcome outcome;
    std::optional<Value> value{};   ///< What it stands for, where that is said.
    bool standsWithinOthers = true; ///< Whether, within an array or an object, the same is to be said of it.

    /// The same text, when that can only be said of it alone: "1,2" is part of an array.
    JSONText alone() const;
};

/// For what failing cases print.
std::ostream& operator<<(std::ostream& out, Outcome outcome);

JSONText accepted(std::string name, std::string_view text);
JSONText accepted(std::string name, std::string_view text, Value value);
JSONText rejected(std::string name, std::string_view text);
/// Left open, and this is what we make of it.
JSONText leftOpen(std::string name, std::string_view text, Value value);
JSONText leftOpen(std::string name, std::string_view text, Outcome outcome);

/// A text many times after itself.
std::string repeated(std::string_view text, std::size_t times);

std::vector<JSONText> wholeNumberTexts();
std::vector<JSONText> otherNumberTexts();
std::vector<JSONText> textTexts();
std::vector<JSONText> controlCharacterTexts();
std::vector<JSONText> structureTexts();
std::vector<JSONText> wrongStructureTexts();
std::vector<JSONText> literalTexts();
std::vector<JSONText> blankTexts();
std::vector<JSONText> encodingTexts();
std::vector<JSONText> depthTexts();

/// One of these. Its texts are made only when it is asked: every process of a test learns of all topics.
struct JSONTopic {
    std::string name;
    std::vector<JSONText> (*texts)();
};
std::ostream& operator<<(std::ostream& out, const JSONTopic& topic);

const std::vector<JSONTopic>& jsonTopics();

/// All of them, each with a name of its own.
std::vector<JSONText> jsonCorpus();

} // namespace vorlan::tests
