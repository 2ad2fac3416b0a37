// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Keychain/KeychainError.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <unordered_set>

using vorlan::fromRawValue;
using vorlan::KeychainError;
using vorlan::rawValue;

TEST(KeychainError, RawValuesAreTheNamesOfTheCases) {
    EXPECT_EQ(rawValue(KeychainError::notFound), "notFound");
    EXPECT_EQ(rawValue(KeychainError::unexpected), "unexpected");
    EXPECT_EQ(rawValue(KeychainError::emptyResults), "emptyResults");
    EXPECT_EQ(vorlan::allCases<KeychainError>().size(), 3u);
}

TEST(KeychainError, IsMadeFromItsNameLetterByLetter) {
    EXPECT_EQ(fromRawValue<KeychainError>("notFound"), KeychainError::notFound);
    EXPECT_EQ(fromRawValue<KeychainError>("unexpected"), KeychainError::unexpected);
    EXPECT_EQ(fromRawValue<KeychainError>("emptyResults"), KeychainError::emptyResults);
    for (const std::string text : {"Unexpected", "UNEXPECTED", "unexpected ", "", "emptyresults", "1"})
        EXPECT_EQ(fromRawValue<KeychainError>(text), std::nullopt) << text;
}

TEST(KeychainError, LocalizedDescriptionNamesTheCaseByItsNumber) {
    const auto sentence = [](const std::string& number) {
        return "The operation couldn\u2019t be completed. (VorlanFoundation.KeychainError error " + number +
               ".)";
    };
    EXPECT_EQ(localizedDescription(KeychainError::notFound), sentence("0"));
    EXPECT_EQ(localizedDescription(KeychainError::unexpected), sentence("1"));
    EXPECT_EQ(localizedDescription(KeychainError::emptyResults), sentence("2"));
}

TEST(KeychainError, CanBeComparedThrownAndKeptInASet) {
    const std::unordered_set set{KeychainError::unexpected, KeychainError::emptyResults,
                                 KeychainError::unexpected};
    EXPECT_EQ(set.size(), 2u);
    EXPECT_THROW(throw KeychainError::unexpected, KeychainError);
}
