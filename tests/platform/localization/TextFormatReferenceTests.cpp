// SPDX-License-Identifier: Apache-2.0
// Formats against the C library's, for what both define.

#include <VorlanFoundation/Platform/TextFormat.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/platform/files/Environment.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <random>
#include <string>
#include <string_view>

using namespace vorlan;

namespace {

constexpr std::string_view flags = "-+ #0";
constexpr std::string_view signedOnes = "di";
constexpr std::string_view unsignedOnes = "uxXo";
constexpr std::string_view doubles = "fFeEgGaA";

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // all of it is about formats that are made up
#pragma GCC diagnostic ignored "-Wformat-security"
template <class... Arguments>
std::string byC(const std::string& format, Arguments... arguments) {
    const auto size = std::snprintf(nullptr, 0, format.c_str(), arguments...);
    std::string text(static_cast<std::size_t>(size) + 1, '\0');
    std::snprintf(text.data(), text.size(), format.c_str(), arguments...);
    text.pop_back();
    return text;
}
#pragma GCC diagnostic pop

// Makes up directives and what fills them.
class Random {
public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}

    std::size_t below(std::size_t limit) { return engine_() % limit; }
    char oneOf(std::string_view characters) { return characters[below(characters.size())]; }

    // A directive up to its length, with the flags that C defines for the conversion.
    std::string beginning(char conversion) {
        std::string directive = "%";
        for (std::size_t i = below(4); i > 0; --i) {
            const char flag = oneOf(flags);
            const bool isDefined =
                flag == '-' || (flag == '#' && std::string_view("xXofFeEgGaA").find(conversion) != npos) ||
                ((flag == '+' || flag == ' ') && std::string_view("difFeEgGaA").find(conversion) != npos) ||
                (flag == '0' && std::string_view("cs").find(conversion) == npos);
            if (isDefined) directive += flag;
        }
        if (below(2) == 0) directive += std::to_string(below(40) + 1);
        if (below(2) == 0 && conversion != 'c') directive.append(".").append(precision(conversion));
        return directive;
    }

    // Of all sizes, small ones as often as large ones.
    std::uint64_t integer() { return engine_() >> below(64); }

    double number() {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        constexpr std::array corners{0.0,      -0.0,     0.5,  1.5,      2.5,      1e-5,
                                     123456.5, 999999.5, 1e15, infinity, -infinity};
        switch (below(4)) {
        case 0: return corners.at(below(corners.size()));
        case 1: return std::bit_cast<double>(engine_()); // also what is no number
        case 2: return static_cast<double>(static_cast<std::int64_t>(engine_())) * 0x1p-50;
        default: return static_cast<double>(below(1'000'000)) / 8;
        }
    }

    std::string text() {
        std::string text;
        for (std::size_t i = below(12); i > 0; --i) text += static_cast<char>(' ' + below(95));
        return text;
    }

private:
    static constexpr auto npos = std::string_view::npos;

    std::string precision(char conversion) {
        const auto most = doubles.find(conversion) != npos && below(50) == 0 ? 1100 : 30;
        return below(8) == 0 ? "" : std::to_string(below(most));
    }

    std::mt19937_64 engine_;
};

void compareSigned(Random& random) {
    const char conversion = random.oneOf(signedOnes);
    const auto directive = random.beginning(conversion);
    const auto number = static_cast<std::int64_t>(random.integer());
    const auto compare = [&](const char* length, auto value) {
        const auto format = directive + length + conversion;
        ASSERT_EQ(formatText(format, {value}), byC(format, value)) << format << " of " << value;
    };
    compare("", static_cast<int>(number));
    compare("l", static_cast<long>(number));
    compare("ll", static_cast<long long>(number));
    compare("j", static_cast<std::intmax_t>(number));
    compare("h", static_cast<int>(static_cast<short>(number)));
    compare("hh", static_cast<int>(static_cast<signed char>(number)));
}

void compareUnsigned(Random& random) {
    const char conversion = random.oneOf(unsignedOnes);
    const auto directive = random.beginning(conversion);
    const auto number = random.integer();
    const auto compare = [&](const char* length, auto value) {
        const auto format = directive + length + conversion;
        ASSERT_EQ(formatText(format, {value}), byC(format, value)) << format << " of " << value;
    };
    compare("", static_cast<unsigned>(number));
    compare("l", static_cast<unsigned long>(number));
    compare("z", static_cast<std::size_t>(number));
    compare("h", static_cast<unsigned>(static_cast<unsigned short>(number)));
    if (conversion == 'u') return;
    // C writes the same bits whatever their sign.
    compare("", static_cast<int>(number));
    compare("ll", static_cast<long long>(number));
    compare("hh", static_cast<int>(static_cast<signed char>(number)));
}

void compareDouble(Random& random) {
    const char conversion = random.oneOf(doubles);
    const auto format = random.beginning(conversion) + conversion;
    const auto number = random.number();
    ASSERT_EQ(formatText(format, {number}), byC(format, number)) << format << " of " << number;
}

void compareText(Random& random) {
    const auto format = random.beginning('s') + 's';
    const auto text = random.text();
    ASSERT_EQ(formatText(format, {text}), byC(format, text.c_str())) << format << " of " << text;
    const auto characters = random.beginning('c') + 'c';
    const char character = random.oneOf("az09 ~");
    ASSERT_EQ(formatText(characters, {character}), byC(characters, character)) << characters;
}

void compareCounts(Random& random) {
    const int width = static_cast<int>(random.below(60)) - 30;
    const int precision = static_cast<int>(random.below(20)) - 5;
    const double number = random.number();
    const auto whole = static_cast<int>(random.integer());
    ASSERT_EQ(formatText("<%0*.*g|%-*d>", {width, precision, number, width, whole}),
              byC("<%0*.*g|%-*d>", width, precision, number, width, whole))
        << width << "." << precision << " of " << number << " and " << whole;
    ASSERT_EQ(formatText("%2$d 100%% %1$.*3$f", {number, whole, precision}),
              byC("%2$d 100%% %1$.*3$f", number, whole, precision));
}

// The locale of C's functions, until it is destroyed.
class LocaleOfC {
public:
    explicit LocaleOfC(const char* name) : isSet_(std::setlocale(LC_NUMERIC, name) != nullptr) {}
    LocaleOfC(const LocaleOfC&) = delete;
    LocaleOfC& operator=(const LocaleOfC&) = delete;
    ~LocaleOfC() { std::setlocale(LC_NUMERIC, "C"); }

    bool hasComma() const { return isSet_ && std::string_view(std::localeconv()->decimal_point) == ","; }

private:
    bool isSet_;
};

} // namespace

TEST(TextFormatReferenceTest, DirectivesAreFilledAsInC) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    constexpr int rounds = 10'000; // of five kinds, in which there are several comparisons each
    for (int i = 0; i < rounds && !HasFatalFailure(); ++i)
        for (const auto compare : {compareSigned, compareUnsigned, compareDouble, compareText, compareCounts})
            compare(random);
}

TEST(TextFormatReferenceTest, LocaleOfCFunctionsChangesNothing) {
    const vorlan::testing::TemporaryHome home;
    const auto folder = home.path().string();
    std::ofstream(folder + "/comma") << "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3;3\n"
                                        "END LC_NUMERIC\n";
    // Without the other parts of a locale, of which it warns.
    const auto make = "cd '" + folder + "' && localedef -c -i ./comma ./vorlan_COMMA >/dev/null 2>&1";
    static_cast<void>(std::system(make.c_str())); // NOLINT(concurrency-mt-unsafe): there is one thread
    const tests::Environment places("LOCPATH", folder);
    const LocaleOfC withComma("vorlan_COMMA");
    if (!withComma.hasComma()) GTEST_SKIP() << "localedef, of the package libc-bin, makes no locale";
    ASSERT_EQ(byC("%.1f", 0.5), "0,5");
    EXPECT_EQ(formatText("%.1f %e %g %a", {0.5, 1.5, 2.5, 1.5}), "0.5 1.500000e+00 2.5 0x1.8p+0");
    EXPECT_EQ(formatText("%'d %'.2f %@", {1234567, 1234.5, 0.25}), "1234567 1234.50 0.25");
    EXPECT_EQ(formatText("%.2f", {1234.5}, {.locale = Locale("en")}), "1,234.50");
    EXPECT_EQ(byC("%.1f", 0.5), "0,5") << "it is still the host's";
}
