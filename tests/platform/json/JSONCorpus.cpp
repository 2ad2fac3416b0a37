// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONCorpus.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace vorlan::tests {

JSONText JSONText::alone() const {
    JSONText copy = *this;
    copy.standsWithinOthers = false;
    return copy;
}

std::ostream& operator<<(std::ostream& out, const JSONTopic& topic) {
    return out << topic.name;
}

std::ostream& operator<<(std::ostream& out, Outcome outcome) {
    switch (outcome) {
    case Outcome::value: return out << "a value";
    case Outcome::malformed: return out << "malformed";
    case Outcome::outOfRange: return out << "out of range";
    case Outcome::tooDeep: return out << "too deep";
    }
    return out;
}

JSONText accepted(std::string name, std::string_view text) {
    return {std::move(name), std::string(text), Verdict::accept, Outcome::value};
}

JSONText accepted(std::string name, std::string_view text, Value value) {
    return {std::move(name), std::string(text), Verdict::accept, Outcome::value, std::move(value)};
}

JSONText rejected(std::string name, std::string_view text) {
    return {std::move(name), std::string(text), Verdict::reject, Outcome::malformed};
}

JSONText leftOpen(std::string name, std::string_view text, Value value) {
    return {std::move(name), std::string(text), Verdict::either, Outcome::value, std::move(value)};
}

JSONText leftOpen(std::string name, std::string_view text, Outcome outcome) {
    return {std::move(name), std::string(text), Verdict::either, outcome};
}

std::string repeated(std::string_view text, std::size_t times) {
    std::string all;
    all.reserve(text.size() * times);
    while (times-- > 0) all += text;
    return all;
}

const std::vector<JSONTopic>& jsonTopics() {
    static const std::vector<JSONTopic> topics{{"WholeNumbers", wholeNumberTexts},
                                               {"OtherNumbers", otherNumberTexts},
                                               {"Texts", textTexts},
                                               {"ControlCharacters", controlCharacterTexts},
                                               {"Structure", structureTexts},
                                               {"WrongStructure", wrongStructureTexts},
                                               {"Literals", literalTexts},
                                               {"Blanks", blankTexts},
                                               {"Encodings", encodingTexts},
                                               {"Depths", depthTexts}};
    return topics;
}

std::vector<JSONText> jsonCorpus() {
    std::vector<JSONText> all;
    for (const auto& topic : jsonTopics()) std::ranges::move(topic.texts(), std::back_inserter(all));
    return all;
}

} // namespace vorlan::tests
