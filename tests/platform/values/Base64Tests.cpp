// SPDX-License-Identifier: Apache-2.0
#include "platform/values/Base64.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

using namespace vorlan;

namespace {

std::string decoded(std::string_view text) {
    const auto data = dataFromBase64(text);
    return data ? textFromData(*data) : "none";
}

} // namespace

TEST(Base64, EncodesWhatTheStandardShows) {
    const std::pair<std::string_view, std::string_view> vectors[] = {{"", ""},
                                                                     {"f", "Zg=="},
                                                                     {"fo", "Zm8="},
                                                                     {"foo", "Zm9v"},
                                                                     {"foob", "Zm9vYg=="},
                                                                     {"fooba", "Zm9vYmE="},
                                                                     {"foobar", "Zm9vYmFy"}};
    for (const auto& [bytes, text] : vectors) {
        EXPECT_EQ(base64FromData(dataFromText(bytes)), text);
        EXPECT_EQ(decoded(text), bytes);
    }
}

TEST(Base64, EachCharacterStandsForItsSixBits) {
    const std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (unsigned value = 0; value < 64; ++value) {
        const std::string text{'A', 'A', 'A', alphabet[value]};
        EXPECT_EQ(decoded(text), std::string({'\0', '\0', static_cast<char>(value)}));
        EXPECT_EQ(base64FromData(dataFromText(decoded(text))), text);
    }
}

TEST(Base64, EachByteOutsideOfTheAlphabetIsRefusedAtEachPlace) {
    const std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (const std::string_view valid : {"Zm9vYmFy", "Zm9vYg==", "Zm9vYmE="})
        for (std::size_t at = 0; at < valid.size(); ++at)
            for (int byte = 0; byte < 256; ++byte) {
                std::string text(valid);
                text[at] = static_cast<char>(byte);
                if (text[at] == valid[at] || text[at] == '=' ||
                    alphabet.find(text[at]) != std::string_view::npos)
                    continue;
                ASSERT_FALSE(dataFromBase64(text)) << at << ", " << byte;
            }
}

TEST(Base64, PaddingIsRequiredAndOnlyAtTheEnd) {
    for (const std::string_view text :
         {"Z",        "Zg",       "Zg=",   "Zm8",  "Zm9vY", "Zg==\n", "\nZg==", "Zm9v\n", "Zm9\nv",
          "=",        "==",       "===",   "====", "Z===",  "=AAA",   "A=AA",   "AA=A",   "Zg==Zg==",
          "Zm9v====", "Zm8=Zm8=", "Zm9v=", " Zg=", "Zg= ",  "Zm_v",   "Zm-v"})
        EXPECT_FALSE(dataFromBase64(text)) << text;
}

TEST(Base64, BitsThatNoByteHasMustBeZero) {
    for (const std::string_view text : {"Zh==", "Zv==", "Zm9=", "Zm+=", "Zm9vYh==", "AB==", "AAB="})
        EXPECT_FALSE(dataFromBase64(text)) << text;
    EXPECT_TRUE(dataFromBase64("AA=="));
    EXPECT_TRUE(dataFromBase64("AAA="));
}

TEST(Base64, RandomBytesComeBack) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 5000; ++round) {
        Data data(random() % 100);
        for (auto& byte : data) byte = static_cast<std::byte>(random());
        const auto text = base64FromData(data);
        ASSERT_EQ(text.size(), base64Length(data.size()));
        ASSERT_EQ(dataFromBase64(text), data);
    }
}

// What is accepted is just what would be written.
TEST(Base64, RandomTextsAreRefusedOrComeBack) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::string_view characters = "AQgw+/09zB==";
    int accepted = 0;
    for (int round = 0; round < 50'000; ++round) {
        std::string text(random() % 3 * 4 + (random() % 8 == 0 ? 1 : 0), 'A');
        for (auto& character : text) character = characters[random() % characters.size()];
        const auto data = dataFromBase64(text);
        if (!data) continue;
        ++accepted;
        ASSERT_EQ(base64FromData(*data), text);
    }
    EXPECT_GT(accepted, 1000);
}
