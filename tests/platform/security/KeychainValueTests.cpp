// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/KeychainCase.h"

#include <cstddef>
#include <optional>
#include <random>

using namespace vorlan;
using namespace vorlan::tests;

namespace {

class KeychainValue : public KeychainCase {
protected:
    std::optional<Data> valueOf(const Dictionary& query) {
        Value result;
        EXPECT_EQ(find(query + Dictionary{{kSecReturnData, true}}, &result), errSecSuccess);
        return result.as<Data>();
    }
};

constexpr std::size_t mebibyte = std::size_t{1} << 20;

Data everyByte() {
    Data bytes;
    for (int byte = 0; byte < 256; ++byte) bytes.push_back(static_cast<std::byte>(byte));
    return bytes;
}

Data randomBytes(std::size_t count) {
    std::mt19937 engine(7);
    Data bytes(count);
    for (auto& byte : bytes) byte = static_cast<std::byte>(engine());
    return bytes;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Stores, KeychainValue, everyKeeper, nameOfKeeper);

TEST_P(KeychainValue, AnyBytesComeBackAsTheyWere) {
    const std::vector<Data> values{everyByte(),
                                   Data{std::byte{0}},
                                   Data(1000),
                                   dataFromText("line\nline\r\n"),
                                   dataFromText("N"),
                                   dataFromText("B"),
                                   dataFromText("gr\u00FC\u00DFe \U0001F511"),
                                   dataFromText("\xC3\x28\xFF")};
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(add(item(std::to_string(i), {{kSecValueData, values[i]}})), errSecSuccess);
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(valueOf(item(std::to_string(i))), values[i]) << i;
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(update(item("0"), {{kSecValueData, values[i]}}), errSecSuccess);
        EXPECT_EQ(valueOf(item("0")), values[i]) << i;
    }
}

TEST_P(KeychainValue, NoneAndEmptyAreNotTheSame) {
    EXPECT_EQ(add(item("none")), errSecSuccess);
    EXPECT_EQ(add(item("empty", {{kSecValueData, Data()}})), errSecSuccess);
    EXPECT_EQ(valueOf(item("none")), std::nullopt);
    EXPECT_EQ(valueOf(item("empty")), Data());
    Value result;
    EXPECT_EQ(find(item("none", {{kSecReturnData, true}, {kSecReturnAttributes, true}}), &result),
              errSecSuccess);
    EXPECT_EQ(result.dictionary()->count(kSecValueData), 0u);
    EXPECT_EQ(find(item("empty", {{kSecReturnData, true}, {kSecReturnAttributes, true}}), &result),
              errSecSuccess);
    EXPECT_EQ(result[kSecValueData], Value(Data()));
}

TEST_P(KeychainValue, OneMebibyteIsKept) {
    const auto large = randomBytes(mebibyte);
    EXPECT_EQ(add(item("a", {{kSecValueData, large}})), errSecSuccess);
    EXPECT_EQ(valueOf(item("a")), large);
    EXPECT_EQ(update(item("a"), {{kSecValueData, Data(mebibyte)}}), errSecSuccess);
    EXPECT_EQ(valueOf(item("a")), Data(mebibyte));
}

TEST_P(KeychainValue, OneByteMoreIsRefusedAndTheFormerStays) {
    const Data tooLarge(mebibyte + 1);
    EXPECT_EQ(add(item("a", {{kSecValueData, tooLarge}})), errSecParam);
    EXPECT_EQ(add(item("b", {{kSecValueData, dataFromText("former")}})), errSecSuccess);
    EXPECT_EQ(update(item("b"), {{kSecValueData, tooLarge}}), errSecParam);
    EXPECT_EQ(accounts(), Texts{"b"});
    EXPECT_EQ(valueOf(item("b")), dataFromText("former"));
}
