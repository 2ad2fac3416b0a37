// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/Arguments.h"

#include "tools/support/Program.h"
#include "tools/support/Quoting.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <span>
#include <utility>

namespace tool {

namespace {

// An option; one that takes a value names the place for it, the others what they switch on.
struct Option {
    std::string_view name;
    bool Arguments::* flag = nullptr;
    std::optional<std::string> Arguments::* value = nullptr;
};

constexpr std::array<Option, 2> commonOptions{
    {{"--help", &Arguments::wantsHelp}, {"--version", &Arguments::wantsVersion}}};
constexpr std::array<Option, 4> checkOptions{{{"--json", &Arguments::asJSON},
                                              {"--strict", &Arguments::isStrict},
                                              {"--base", nullptr, &Arguments::base},
                                              {"--table", nullptr, &Arguments::table}}};
constexpr std::array<Option, 1> printOptions{{{"--json", &Arguments::asJSON}}};

struct Shape {
    std::string_view name;
    Command command;
    std::string_view noun; ///< What its arguments are.
    std::size_t mostPaths;
    std::span<const Option> options;
};

const Shape& shapeOf(std::string_view name) {
    static constexpr std::array<Shape, 3> shapes{
        {{"check", Command::check, "bundle", std::numeric_limits<std::size_t>::max(), checkOptions},
         {"print", Command::print, "file", 1, printOptions},
         {"list", Command::list, "bundle", 1, {}}}};
    const auto* const found = std::ranges::find(shapes, name, &Shape::name);
    if (found == shapes.end()) throw UsageError("unknown command " + inQuotes(name));
    return *found;
}

class Parser {
public:
    explicit Parser(const std::vector<std::string_view>& words) : words_(words) {}

    Arguments parse() {
        while (next_ < words_.size()) {
            const auto word = words_[next_++];
            if (!hasOptions_ || word.size() < 2 || !word.starts_with('-')) {
                takePlain(word);
            } else if (word == "--") {
                hasOptions_ = false;
            } else {
                takeOption(word);
            }
        }
        if (!arguments_.wantsHelp && !arguments_.wantsVersion) checkThatAllIsThere();
        return std::move(arguments_);
    }

private:
    void takePlain(std::string_view word) {
        if (shape_ == nullptr) {
            shape_ = &shapeOf(word);
            arguments_.command = shape_->command;
        } else if (word.empty()) {
            throw UsageError("the name of a " + std::string(shape_->noun) + " is empty");
        } else if (arguments_.paths.size() == shape_->mostPaths) {
            throw UsageError("unexpected argument " + inQuotes(word));
        } else {
            arguments_.paths.emplace_back(word);
        }
    }

    // "--base de" and "--base=de" are the same.
    void takeOption(std::string_view word) {
        const auto end = word.find('=');
        const auto name = word.substr(0, end);
        const auto& option = optionOf(name);
        if (option.flag != nullptr) {
            if (end != std::string_view::npos) throw UsageError(inQuotes(name) + " takes no value");
            arguments_.*option.flag = true;
        } else {
            arguments_.*option.value =
                std::string(end != std::string_view::npos ? word.substr(end + 1) : valueBehind(name));
            if ((arguments_.*option.value)->empty()) throw UsageError(inQuotes(name) + " needs a value");
        }
    }

    std::string_view valueBehind(std::string_view name) {
        if (next_ == words_.size()) throw UsageError(inQuotes(name) + " needs a value");
        return words_[next_++];
    }

    const Option& optionOf(std::string_view name) const {
        const auto own = shape_ != nullptr ? shape_->options : std::span<const Option>();
        for (const auto options : {std::span<const Option>(commonOptions), own}) {
            const auto found = std::ranges::find(options, name, &Option::name);
            if (found != options.end()) return *found;
        }
        throw UsageError("unknown option " + inQuotes(name) +
                         (shape_ != nullptr ? " of " + std::string(shape_->name) : ""));
    }

    void checkThatAllIsThere() const {
        if (shape_ == nullptr) throw UsageError("there is no command");
        if (arguments_.paths.empty()) throw UsageError("there is no " + std::string(shape_->noun));
    }

    const std::vector<std::string_view>& words_;
    std::size_t next_ = 0;
    bool hasOptions_ = true;
    const Shape* shape_ = nullptr;
    Arguments arguments_;
};

} // namespace

Arguments parseArguments(const std::vector<std::string_view>& words) {
    return Parser(words).parse();
}

} // namespace tool
