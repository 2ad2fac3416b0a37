// SPDX-License-Identifier: Apache-2.0
#include "tools/defaults/Arguments.h"

#include "tools/defaults/ValueParsing.h"
#include "tools/support/Program.h"
#include "tools/support/Quoting.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace tool {

using vorlan::Value;

namespace {

// The words of a call by what they are, before it is known what the command makes of them.
struct Words {
    struct Item {
        Value value;
        std::string_view text;
        bool hasType;
    };
    enum class Collection { none, array, dictionary };

    std::vector<std::string_view> names; ///< The command, the domain and the key.
    std::vector<Item> items;             ///< What the value is made of.
    Collection collection = Collection::none;
    bool asJSON = false;
    bool wantsHelp = false;
    bool wantsVersion = false;
};

class Sorter {
public:
    explicit Sorter(const std::vector<std::string_view>& words) : words_(words) {}

    Words sort() {
        while (next_ < words_.size()) {
            const auto word = words_[next_++];
            if (hasOptions_ && word.size() > 1 && word.starts_with('-')) {
                takeOption(word);
            } else {
                takePlain(word);
            }
        }
        return std::move(sorted_);
    }

private:
    void takeOption(std::string_view word) {
        if (word == "--") {
            hasOptions_ = false;
        } else if (word == "--json") {
            sorted_.asJSON = true;
        } else if (word == "--help") {
            sorted_.wantsHelp = true;
        } else if (word == "--version") {
            sorted_.wantsVersion = true;
        } else if (word == "-array") {
            setCollection(Words::Collection::array);
        } else if (word == "-dict") {
            setCollection(Words::Collection::dictionary);
        } else if (const auto type = valueTypeOf(word)) {
            takeTyped(word, *type);
        } else {
            throw UsageError("unknown option " + inQuotes(word) +
                             "; a key or text that begins with a dash stands behind --");
        }
    }

    void setCollection(Words::Collection collection) {
        if (sorted_.collection != Words::Collection::none || !sorted_.items.empty())
            throw UsageError("there is more than one value");
        sorted_.collection = collection;
    }

    // What belongs to a type is taken as it stands, so that numbers may be negative.
    void takeTyped(std::string_view option, ValueType type) {
        if (next_ == words_.size()) throw UsageError(inQuotes(option) + " needs a value");
        const auto text = words_[next_++];
        sorted_.items.push_back({parseValue(type, text), text, true});
    }

    // What follows -array is in the array: a call that has forgotten the key is not to take an element for it.
    void takePlain(std::string_view word) {
        const bool isInCollection = hasOptions_ && sorted_.collection != Words::Collection::none;
        if (sorted_.names.size() < 3 && !isInCollection) {
            sorted_.names.push_back(word);
        } else {
            sorted_.items.push_back({Value(word), word, false});
        }
    }

    const std::vector<std::string_view>& words_;
    std::size_t next_ = 0;
    bool hasOptions_ = true;
    Words sorted_;
};

Value arrayOf(const std::vector<Words::Item>& items) {
    Value::Array array;
    array.reserve(items.size());
    for (const auto& item : items) array.push_back(item.value);
    return array;
}

Value dictionaryOf(const std::vector<Words::Item>& items) {
    if (items.size() % 2 != 0) throw UsageError("the last key of the dictionary has no value");
    Value::Dictionary dictionary;
    for (std::size_t i = 0; i < items.size(); i += 2) {
        if (items[i].hasType)
            throw UsageError("a key of a dictionary has a type: " + inQuotes(items[i].text));
        if (!dictionary.emplace(items[i].text, items[i + 1].value).second)
            throw UsageError("the dictionary has the key " + inQuotes(items[i].text) + " twice");
    }
    return dictionary;
}

Value valueOf(const Words& words) {
    if (words.collection == Words::Collection::array) return arrayOf(words.items);
    if (words.collection == Words::Collection::dictionary) return dictionaryOf(words.items);
    if (words.items.empty()) throw UsageError("there is no value");
    if (words.items.size() > 1) throw UsageError("there is more than one value");
    return words.items.front().value;
}

struct Shape {
    std::string_view name;
    Command command;
    std::size_t fewestNames; ///< The command itself is one.
    std::size_t mostNames;
};

const Shape& shapeOf(std::string_view name) {
    static constexpr std::array<Shape, 5> shapes{{{"read", Command::read, 2, 3},
                                                  {"write", Command::write, 3, 3},
                                                  {"delete", Command::remove, 2, 3},
                                                  {"list", Command::list, 2, 2},
                                                  {"domains", Command::domains, 1, 1}}};
    const auto* const found = std::ranges::find(shapes, name, &Shape::name);
    if (found == shapes.end()) throw UsageError("unknown command " + inQuotes(name));
    return *found;
}

void checkShape(const Words& words, const Shape& shape) {
    const auto count = words.names.size();
    if (count < shape.fewestNames) throw UsageError(count == 1 ? "there is no domain" : "there is no key");
    if (count > shape.mostNames)
        throw UsageError("unexpected argument " + inQuotes(words.names[shape.mostNames]));
    if (words.asJSON && shape.command != Command::read) throw UsageError("--json is for read only");
    if (shape.command == Command::write) return;
    if (!words.items.empty()) throw UsageError("unexpected argument " + inQuotes(words.items.front().text));
    if (words.collection != Words::Collection::none) throw UsageError("a value is for write only");
}

} // namespace

Arguments parseArguments(const std::vector<std::string_view>& words) {
    const auto sorted = Sorter(words).sort();
    if (sorted.wantsHelp) return {.command = Command::help};
    if (sorted.wantsVersion) return {.command = Command::version};
    if (sorted.names.empty()) throw UsageError("there is no command");
    const auto& shape = shapeOf(sorted.names[0]);
    checkShape(sorted, shape);
    Arguments arguments{.command = shape.command, .asJSON = sorted.asJSON};
    if (sorted.names.size() > 1) arguments.domain = sorted.names[1];
    if (sorted.names.size() > 2) arguments.key = sorted.names[2];
    if (shape.command == Command::write) arguments.value = valueOf(sorted);
    return arguments;
}

} // namespace tool
