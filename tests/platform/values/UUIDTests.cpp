// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/UUID.h>

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>

using namespace vorlan;

TEST(UUID, IsOfVersion4InItsCanonicalFormInUpperCase) {
    const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    for (int i = 0; i < 1000; ++i) {
        const auto text = makeUUIDString();
        EXPECT_TRUE(std::regex_match(text, form)) << text;
    }
}

TEST(UUID, NeverComesTwice) {
    std::set<std::string> texts;
    for (int i = 0; i < 10'000; ++i) texts.insert(makeUUIDString());
    EXPECT_EQ(texts.size(), 10'000U);
}
