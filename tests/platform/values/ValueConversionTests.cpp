// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Value.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

enum class Theme { light, dark };
enum class Level { low, high };
enum class Ratio { half, whole };

} // namespace

template <>
struct vorlan::RawValues<Theme> {
    static constexpr std::array cases{std::pair(Theme::light, std::string_view("light")),
                                      std::pair(Theme::dark, std::string_view("dark"))};
};

template <>
struct vorlan::RawValues<Level> {
    static constexpr std::array cases{std::pair(Level::low, -1), std::pair(Level::high, 300)};
};

template <>
struct vorlan::RawValues<Ratio> {
    static constexpr std::array cases{std::pair(Ratio::half, 0.5), std::pair(Ratio::whole, 1.0)};
};

using namespace vorlan;

namespace {

constexpr std::nullopt_t none = std::nullopt;
constexpr auto most = std::numeric_limits<std::int64_t>::max();
constexpr auto least = std::numeric_limits<std::int64_t>::min();
constexpr auto mostUnsigned = std::numeric_limits<std::uint64_t>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double twoTo53 = 9007199254740992.0;
constexpr double twoTo63 = 9223372036854775808.0;
constexpr double twoTo64 = 18446744073709551616.0;

// A value, and what it is as a Boolean, as integers and as numbers.
struct Row {
    Value value;
    std::optional<bool> boolean;
    std::optional<std::int8_t> byte;
    std::optional<std::uint16_t> unsignedShort;
    std::optional<std::int64_t> integer;
    std::optional<std::uint64_t> unsignedInteger;
    std::optional<float> shortNumber;
    std::optional<double> number;
};

void expectRow(const Row& row) {
    SCOPED_TRACE(row.value.description());
    EXPECT_EQ(row.value.as<bool>(), row.boolean);
    EXPECT_EQ(row.value.as<std::int8_t>(), row.byte);
    EXPECT_EQ(row.value.as<std::uint16_t>(), row.unsignedShort);
    EXPECT_EQ(row.value.as<std::int64_t>(), row.integer);
    EXPECT_EQ(row.value.as<std::uint64_t>(), row.unsignedInteger);
    EXPECT_EQ(row.value.as<float>(), row.shortNumber);
    EXPECT_EQ(row.value.as<double>(), row.number);
}

const Data bytes = dataFromText("abc");

// One of each kind.
std::vector<Value> oneOfEach() {
    return {nullptr, true, 1, 1.0, "1", bytes, Date(1), Value::Array{1}, Value::Dictionary{{"1", 1}}};
}

// The kinds of `oneOfEach` that are a T.
template <class T>
std::vector<Value::Kind> kindsThatAre() {
    std::vector<Value::Kind> kinds;
    for (const auto& value : oneOfEach())
        if (value.as<T>()) kinds.push_back(value.kind());
    return kinds;
}

} // namespace

TEST(ValueConversion, NumbersAndBooleansConvertWhereTheValueSurvives) {
    using Rows = std::vector<Row>;
    const Rows rows{
        //  value     bool   int8  uint16 int64 uint64 float double
        {false, false, 0, 0, 0, 0, 0.0F, 0.0},
        {true, true, 1, 1, 1, 1, 1.0F, 1.0},
        {0, false, 0, 0, 0, 0, 0.0F, 0.0},
        {1, true, 1, 1, 1, 1, 1.0F, 1.0},
        {2, none, 2, 2, 2, 2, 2.0F, 2.0},
        {-1, none, -1, none, -1, none, -1.0F, -1.0},
        {127, none, 127, 127, 127, 127, 127.0F, 127.0},
        {128, none, none, 128, 128, 128, 128.0F, 128.0},
        {-128, none, -128, none, -128, none, -128.0F, -128.0},
        {-129, none, none, none, -129, none, -129.0F, -129.0},
        {65535, none, none, 65535, 65535, 65535, 65535.0F, 65535.0},
        {65536, none, none, none, 65536, 65536, 65536.0F, 65536.0},
        {0.0, false, 0, 0, 0, 0, 0.0F, 0.0},
        {1.0, true, 1, 1, 1, 1, 1.0F, 1.0},
        {2.0, none, 2, 2, 2, 2, 2.0F, 2.0},
        {-1.0, none, -1, none, -1, none, -1.0F, -1.0},
        {1.5, none, none, none, none, none, 1.5F, 1.5},
        {0.5, none, none, none, none, none, 0.5F, 0.5},
        {-0.5, none, none, none, none, none, -0.5F, -0.5},
        {0.1, none, none, none, none, none, none, 0.1},
        {1e300, none, none, none, none, none, none, 1e300},
        {1e-300, none, none, none, none, none, none, 1e-300},
        {infinity, none, none, none, none, none, std::numeric_limits<float>::infinity(), infinity},
        {-infinity, none, none, none, none, none, -std::numeric_limits<float>::infinity(), -infinity},
    };
    for (const auto& row : rows) expectRow(row);
}

TEST(ValueConversion, LargeNumbersConvertWhereNoBitIsLost) {
    constexpr std::int64_t twoTo24 = 16'777'216;
    constexpr std::uint64_t half = std::uint64_t{1} << 63;
    constexpr auto exact = static_cast<std::int64_t>(twoTo53);
    const std::vector<Row> rows{
        {twoTo24, none, none, none, twoTo24, twoTo24, 16'777'216.0F, 16'777'216.0},
        {twoTo24 + 1, none, none, none, twoTo24 + 1, twoTo24 + 1, none, 16'777'217.0},
        {exact, none, none, none, exact, exact, static_cast<float>(twoTo53), twoTo53},
        {exact + 1, none, none, none, exact + 1, exact + 1, none, none},
        {exact + 2, none, none, none, exact + 2, exact + 2, none, twoTo53 + 2},
        {-exact - 1, none, none, none, -exact - 1, none, none, none},
        {most, none, none, none, most, most, none, none},
        {least, none, none, none, least, none, -static_cast<float>(twoTo63), -twoTo63},
        {half, none, none, none, none, half, static_cast<float>(twoTo63), twoTo63},
        {half + 1, none, none, none, none, half + 1, none, none},
        {mostUnsigned, none, none, none, none, mostUnsigned, none, none},
        {twoTo63, none, none, none, none, half, static_cast<float>(twoTo63), twoTo63},
        {-twoTo63, none, none, none, least, none, -static_cast<float>(twoTo63), -twoTo63},
        {std::nextafter(-twoTo63, -infinity), none, none, none, none, none, none,
         std::nextafter(-twoTo63, -infinity)},
        {std::nextafter(twoTo64, 0), none, none, none, none, mostUnsigned - 2047, none,
         std::nextafter(twoTo64, 0)},
        {twoTo64, none, none, none, none, none, static_cast<float>(twoTo64), twoTo64},
    };
    for (const auto& row : rows) expectRow(row);
}

TEST(ValueConversion, NaNIsANumberAndNothingElse) {
    const Value value(std::nan(""));
    EXPECT_TRUE(std::isnan(value.as<double>().value()));
    EXPECT_TRUE(std::isnan(value.as<float>().value()));
    EXPECT_EQ(value.as<bool>(), none);
    EXPECT_EQ(value.as<std::int64_t>(), none);
    EXPECT_EQ(value.as<std::uint64_t>(), none);
}

TEST(ValueConversion, NegativeZeroIsZeroAndKeepsItsSignAsANumber) {
    const Value value(-0.0);
    EXPECT_TRUE(std::signbit(value.as<double>().value()));
    EXPECT_TRUE(std::signbit(value.as<float>().value()));
    EXPECT_EQ(value.as<bool>(), false);
    EXPECT_EQ(value.as<int>(), 0);
    EXPECT_EQ(value.as<unsigned>(), 0U);
}

TEST(ValueConversion, EveryIntegerTypeHasItsOwnBounds) {
    EXPECT_EQ(Value(255).as<std::uint8_t>(), 255);
    EXPECT_EQ(Value(300).as<std::uint8_t>(), none);
    EXPECT_EQ(Value(-1).as<std::uint8_t>(), none);
    EXPECT_EQ(Value(-32768).as<std::int16_t>(), -32768);
    EXPECT_EQ(Value(-32769).as<std::int16_t>(), none);
    EXPECT_EQ(Value(2147483647).as<std::int32_t>(), 2147483647);
    EXPECT_EQ(Value(std::int64_t{2147483648}).as<std::int32_t>(), none);
    EXPECT_EQ(Value(std::int64_t{4294967295}).as<std::uint32_t>(), 4294967295U);
    EXPECT_EQ(Value(std::int64_t{4294967296}).as<std::uint32_t>(), none);
    EXPECT_EQ(Value(3.0).as<std::uint8_t>(), 3);
    EXPECT_EQ(Value(256.0).as<std::uint8_t>(), none);
    EXPECT_EQ(Value(7).as<long>(), 7);
    EXPECT_EQ(Value(7).as<unsigned long long>(), 7U);
}

TEST(ValueConversion, NothingButNumbersAndBooleansConverts) {
    using enum Value::Kind;
    using Kinds = std::vector<Value::Kind>;
    const Kinds numeric{boolean, integer, number};
    EXPECT_EQ(kindsThatAre<bool>(), numeric);
    EXPECT_EQ(kindsThatAre<int>(), numeric);
    EXPECT_EQ(kindsThatAre<std::uint8_t>(), numeric);
    EXPECT_EQ(kindsThatAre<std::uint64_t>(), numeric);
    EXPECT_EQ(kindsThatAre<float>(), numeric);
    EXPECT_EQ(kindsThatAre<double>(), numeric);
    EXPECT_EQ(kindsThatAre<std::string>(), Kinds{text});
    EXPECT_EQ(kindsThatAre<Data>(), Kinds{data});
    EXPECT_EQ(kindsThatAre<Date>(), Kinds{date});
    EXPECT_EQ(kindsThatAre<Value::Array>(), Kinds{array});
    EXPECT_EQ(kindsThatAre<Value::Dictionary>(), Kinds{dictionary});
    EXPECT_EQ(kindsThatAre<std::vector<int>>(), Kinds{array});
    using Numbers = std::map<std::string, int>;
    EXPECT_EQ(kindsThatAre<Numbers>(), Kinds{dictionary});
}

TEST(ValueConversion, EveryValueIsAValue) {
    for (const auto& value : oneOfEach()) EXPECT_EQ(value.as<Value>(), value);
}

TEST(ValueConversion, VectorsAreWholeOrAbsent) {
    const Value numbers(Value::Array{1, 2.0, true});
    EXPECT_EQ(numbers.as<std::vector<int>>(), (std::vector<int>{1, 2, 1}));
    EXPECT_EQ(numbers.as<std::vector<double>>(), (std::vector<double>{1, 2, 1}));
    EXPECT_EQ(numbers.as<std::vector<bool>>(), none);
    EXPECT_EQ(numbers.as<std::vector<std::string>>(), none);
    EXPECT_EQ(Value(Value::Array{1, "2"}).as<std::vector<int>>(), none);
    EXPECT_EQ(Value(Value::Array{1, nullptr}).as<std::vector<int>>(), none);
    EXPECT_EQ(Value(Value::Array()).as<std::vector<int>>(), std::vector<int>());
    EXPECT_EQ(Value(Value::Array{0, 1}).as<std::vector<bool>>(), (std::vector<bool>{false, true}));
    using Rows = std::vector<std::vector<int>>;
    EXPECT_EQ(Value(Rows{{1, 2}, {}, {3}}).as<Rows>(), (Rows{{1, 2}, {}, {3}}));
}

TEST(ValueConversion, MapsAreWholeOrAbsent) {
    using Numbers = std::map<std::string, int>;
    using Texts = std::map<std::string, std::string>;
    const Value value(Value::Dictionary{{"a", 1}, {"b", 2.0}});
    EXPECT_EQ(value.as<Numbers>(), (Numbers{{"a", 1}, {"b", 2}}));
    EXPECT_EQ(value.as<Texts>(), none);
    EXPECT_EQ(Value(Value::Dictionary{{"a", 1}, {"b", 1.5}}).as<Numbers>(), none);
    EXPECT_EQ(Value(Value::Dictionary()).as<Numbers>(), Numbers());
    using Ordered = std::map<std::string, int, std::greater<>>;
    EXPECT_EQ(value.as<Ordered>(), (Ordered{{"b", 2}, {"a", 1}}));
    using Lists = std::map<std::string, std::vector<std::string>>;
    EXPECT_EQ(Value(Lists{{"a", {"x"}}}).as<Lists>(), (Lists{{"a", {"x"}}}));
}

TEST(ValueConversion, EnumerationsAreReadByTheirRawValues) {
    EXPECT_EQ(Value("dark").as<Theme>(), Theme::dark);
    EXPECT_EQ(Value("Dark").as<Theme>(), none);
    EXPECT_EQ(Value(1).as<Theme>(), none);
    EXPECT_EQ(Value(300).as<Level>(), Level::high);
    EXPECT_EQ(Value(-1.0).as<Level>(), Level::low);
    EXPECT_EQ(Value(0).as<Level>(), none);
    EXPECT_EQ(Value("300").as<Level>(), none);
    EXPECT_EQ(Value(0.5).as<Ratio>(), Ratio::half);
    EXPECT_EQ(Value(1).as<Ratio>(), Ratio::whole);
    EXPECT_EQ(Value(0.25).as<Ratio>(), none);
    EXPECT_EQ(Value(Value::Array{"light", "dark"}).as<std::vector<Theme>>(),
              (std::vector{Theme::light, Theme::dark}));
    EXPECT_EQ(Value(Value::Array{"light", "grey"}).as<std::vector<Theme>>(), none);
}

TEST(ValueConversion, EnumerationsBecomeTheirRawValues) {
    EXPECT_EQ(Value(Theme::dark), Value("dark"));
    EXPECT_EQ(Value(Level::high), Value(300));
    EXPECT_EQ(Value(Ratio::half), Value(0.5));
    EXPECT_EQ(Value(std::vector{Theme::light}), Value(Value::Array{"light"}));
}

TEST(ValueConversionDeathTest, EnumerationThatIsNoneOfItsCasesStopsTheProcess) {
    EXPECT_DEATH(static_cast<void>(Value(static_cast<Level>(7))),
                 "VorlanFoundation/RawValues: Fatal error: the enumeration has no such case");
}
