// SPDX-License-Identifier: Apache-2.0
#include "tools/defaults/Printing.h"

#include "tools/defaults/DateText.h"
#include "tools/support/Quoting.h"

#include <VorlanFoundation/Platform/Describe.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace tool {

using vorlan::Data;
using vorlan::Value;

namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

std::string hexText(const Data& data) {
    std::string out;
    out.reserve(data.size() * 2);
    for (const auto byte : data) {
        out += hexDigits[std::to_integer<std::size_t>(byte >> 4)];
        out += hexDigits[std::to_integer<std::size_t>(byte & std::byte(0xF))];
    }
    return out;
}

std::string base64Text(const Data& data) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    for (std::size_t i = 0; i < data.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t j = i; j < i + 3; ++j)
            group = group << 8 | (j < data.size() ? std::to_integer<std::uint32_t>(data[j]) : 0);
        for (std::size_t j = 0; j < 4; ++j)
            out += i + j > data.size() ? '=' : digits[group >> (18 - 6 * j) & 0x3F];
    }
    return out;
}

std::string integerText(const Value& value) {
    if (const auto integer = value.as<std::int64_t>()) return vorlan::describe(*integer);
    return vorlan::describe(value.as<std::uint64_t>().value_or(0));
}

class Printer {
public:
    explicit Printer(bool isJSON) : isJSON_(isJSON) {}

    std::string print(const Value& value) {
        append(value);
        return std::move(out_);
    }

private:
    void append(const Value& value) {
        switch (value.kind()) {
        case Value::Kind::null: out_ += "null"; break;
        case Value::Kind::boolean: out_ += vorlan::describe(value.as<bool>() == true); break;
        case Value::Kind::integer: out_ += integerText(value); break;
        case Value::Kind::number: appendNumber(*value.as<double>()); break;
        case Value::Kind::text: out_ += quotedText(*value.text()); break;
        case Value::Kind::data:
            out_ += isJSON_ ? quotedText(base64Text(*value.data())) : dataText(*value.data());
            break;
        case Value::Kind::date: appendDate(*value.as<vorlan::Date>()); break;
        case Value::Kind::array: appendArray(*value.array()); break;
        case Value::Kind::dictionary: appendDictionary(*value.dictionary()); break;
        }
    }

    static std::string dataText(const Data& data) { return "<" + hexText(data) + ">"; }

    void appendNumber(double number) {
        const auto text = vorlan::describe(number);
        out_ += isJSON_ && !std::isfinite(number) ? quotedText(text) : text;
    }

    void appendDate(vorlan::Date date) {
        const auto text = dateText(date);
        out_ += isJSON_ ? quotedText(text) : text;
    }

    void appendArray(const Value::Array& array) {
        out_ += '[';
        for (const auto& element : array) {
            startElement(&element == array.data());
            append(element);
            --depth_;
        }
        end(array.empty(), ']');
    }

    void appendDictionary(const Value::Dictionary& dictionary) {
        out_ += '{';
        for (auto entry = dictionary.begin(); entry != dictionary.end(); ++entry) {
            startElement(entry == dictionary.begin());
            out_ += quotedText(entry->first) + ": ";
            append(entry->second);
            --depth_;
        }
        end(dictionary.empty(), '}');
    }

    void startElement(bool isFirst) {
        if (!isFirst) out_ += ',';
        ++depth_;
        startLine();
    }

    void end(bool isEmpty, char bracket) {
        if (!isEmpty) startLine();
        out_ += bracket;
    }

    void startLine() {
        out_ += '\n';
        out_.append(depth_ * 4, ' ');
    }

    const bool isJSON_;
    std::size_t depth_ = 0;
    std::string out_;
};

} // namespace

std::string plainText(const Value& value) {
    if (const auto* text = value.text()) return *text;
    if (const auto* data = value.data()) return hexText(*data);
    return Printer(false).print(value);
}

std::string jsonText(const Value& value) {
    return Printer(true).print(value);
}

} // namespace tool
