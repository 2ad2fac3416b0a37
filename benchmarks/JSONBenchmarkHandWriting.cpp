// SPDX-License-Identifier: Apache-2.0

// The least code that does it, for these records alone.

#include "benchmarks/JSONBenchmarkCodecs.h"

#include <array>
#include <charconv>
#include <cstddef>

namespace vorlan::benchmarks {

namespace {

void appendEscaped(std::string& out, char character) {
    switch (character) {
    case '"': out += "\\\""; break;
    case '\\': out += "\\\\"; break;
    case '\n': out += "\\n"; break;
    case '\r': out += "\\r"; break;
    case '\t': out += "\\t"; break;
    default:
        constexpr std::string_view digits = "0123456789abcdef";
        out += "\\u00";
        out += digits[static_cast<unsigned char>(character) >> 4U];
        out += digits[static_cast<unsigned char>(character) & 15U];
    }
}

bool isPlain(char character) {
    return static_cast<unsigned char>(character) >= 0x20 && character != '"' && character != '\\';
}

void appendText(std::string& out, std::string_view text) {
    out += '"';
    std::size_t written = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isPlain(text[i])) continue;
        out += text.substr(written, i - written);
        appendEscaped(out, text[i]);
        written = i + 1;
    }
    out += text.substr(written);
    out += '"';
}

template <class Number>
void appendNumber(std::string& out, Number number) {
    std::array<char, 32> digits; // NOLINT(*-member-init): written below
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    out.append(digits.data(), end);
}

void appendTags(std::string& out, const std::vector<std::string>& tags) {
    out += '[';
    for (const auto& tag : tags) {
        if (&tag != tags.data()) out += ',';
        appendText(out, tag);
    }
    out += ']';
}

void appendRecord(std::string& out, const Record& record) {
    out += R"({"id":)";
    appendNumber(out, record.id);
    out += R"(,"name":)";
    appendText(out, record.name);
    out += R"(,"email":)";
    appendText(out, record.email);
    out += record.isActive ? R"(,"isActive":true,"visits":)" : R"(,"isActive":false,"visits":)";
    appendNumber(out, record.visits);
    out += R"(,"balance":)";
    appendNumber(out, record.balance);
    out += R"(,"rating":)";
    appendNumber(out, record.rating);
    if (record.note) {
        out += R"(,"note":)";
        appendText(out, *record.note);
    }
    out += R"(,"tags":)";
    appendTags(out, record.tags);
    out += R"(,"position":{"latitude":)";
    appendNumber(out, record.position.latitude);
    out += R"(,"longitude":)";
    appendNumber(out, record.position.longitude);
    out += "}}";
}

} // namespace

std::string encodeByHand(const Records& records) {
    std::string out = "[";
    for (const auto& record : records) {
        if (&record != records.data()) out += ',';
        appendRecord(out, record);
    }
    out += ']';
    return out;
}

} // namespace vorlan::benchmarks
