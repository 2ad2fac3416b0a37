// SPDX-License-Identifier: Apache-2.0

// Texts with gaps, and numbers in single precision.

#include "benchmarks/TextBenchmark.h"
#include "benchmarks/support/ICUPeers.h"
#include "benchmarks/support/InTurn.h"

#include <VorlanFoundation/Extensions/Numbers.h>
#include <VorlanFoundation/Platform/TextFormat.h>

#include <Poco/Format.h>
#include <QtCore/QString>
#include <unicode/numberformatter.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <string>

namespace vorlan::benchmarks {

namespace {

constexpr std::size_t count = 1'000;

/// What fills the second gap: texts that are short, as most are.
std::string name(std::size_t place) {
    return "page " + std::to_string(place % 10);
}

std::string byC(std::size_t place) {
    std::array<char, 64> text{};
    const int size =
        std::snprintf(text.data(), text.size(), "%d of %s", static_cast<int>(place), // NOLINT(*-vararg)
                      name(place).c_str());
    return {text.data(), static_cast<std::size_t>(size)};
}

void addGaps() {
    GroupInTurn<std::string> group("two gaps, filled", count);
    group.add("floor: snprintf", byC);
    group.add("ours: formatText",
              [](std::size_t place) { return formatText("%d of %@", {place, name(place)}); });
    group.add("peer: QString::arg", [](std::size_t place) {
        return QString("%1 of %2").arg(place).arg(QString::fromStdString(name(place))).toStdString();
    });
    group.add("peer: Poco::format", [](std::size_t place) {
        return Poco::format("%d of %s", static_cast<int>(place), name(place));
    });
}

/// Numbers that all round alike: none is in the middle between two of two digits.
float number(std::size_t place) {
    return static_cast<float>(place) * 0.37F;
}

icu::number::LocalizedNumberFormatter icuNumbers() {
    return icu::number::NumberFormatter::withLocale(icu::Locale("en_US_POSIX"))
        .precision(icu::number::Precision::fixedFraction(2));
}

std::string icuText(const icu::number::LocalizedNumberFormatter& formatter, std::size_t place) {
    UErrorCode status = U_ZERO_ERROR;
    return utf8(formatter.formatDouble(static_cast<double>(number(place)), status).toString(status));
}

void addNumbers() {
    GroupInTurn<std::string> group("number in single precision with two fraction digits", count);
    group.add("floor: LocalizedNumberFormatter, reused",
              [formatter = icuNumbers()](std::size_t place) { return icuText(formatter, place); });
    group.add("ours: number::string",
              [](std::size_t place) { return number::string(number(place), {.fractionDigits = 2}); });
    group.add("peer: LocalizedNumberFormatter, made for each",
              [](std::size_t place) { return icuText(icuNumbers(), place); });
    group.add("peer: QString::number", [](std::size_t place) {
        return QString::number(static_cast<double>(number(place)), 'f', 2).toStdString();
    });
}

} // namespace

void addTextFormatRows() {
    addGaps();
    addNumbers();
}

} // namespace vorlan::benchmarks
