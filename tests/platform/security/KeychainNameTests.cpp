// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/KeychainCase.h"

#include <string>

using namespace vorlan;
using namespace vorlan::tests;

namespace {

class KeychainName : public KeychainCase {};

constexpr std::size_t maximum = 4096;

// Each is another name than the ones before, however alike they look.
const Texts names{"",
                  " ",
                  "a",
                  "A",
                  "a ",
                  std::string("a\0", 2),
                  std::string("a\0b", 3),
                  std::string("\0", 1),
                  "\u00E9",
                  "e\u0301",
                  "\u212B",
                  "\u00C5",
                  "\U0001F469\u200D\U0001F4BB",
                  "\u05E9\u05DC\u05D5\u05DD",
                  "\uFEFFa",
                  "\U0010FFFF",
                  "\uFFFF",
                  "line\nline",
                  "\t\r",
                  "quote\"s 'n\\ %s $HOME ; --",
                  "-",
                  "b:",
                  "YQ==",
                  "gkr:compat:hashed:a"};

} // namespace

INSTANTIATE_TEST_SUITE_P(Stores, KeychainName, everyKeeper, nameOfKeeper);

TEST_P(KeychainName, AccountMayBeAnyText) {
    for (const auto& name : names)
        EXPECT_EQ(add(item(name, {{kSecValueData, dataFromText(name)}})), errSecSuccess) << name;
    EXPECT_EQ(accounts(), names);
    for (const auto& name : names) {
        const auto found = items(item(name));
        ASSERT_EQ(found.size(), 1u) << name;
        EXPECT_EQ(found[0][kSecValueData], Value(dataFromText(name)));
        EXPECT_EQ(remove(item(name)), errSecSuccess) << name;
    }
    EXPECT_EQ(accounts(), Texts{});
}

TEST_P(KeychainName, ServiceAndGroupAndLabelMayBeAnyText) {
    for (const auto& name : names) {
        const Dictionary place{{kSecAttrService, name}, {kSecAttrAccessGroup, name}};
        // What people see has no place for a null.
        const auto label = name.find('\0') == std::string::npos ? "label " + name : "label";
        EXPECT_EQ(add(item("a", place + Dictionary{{kSecAttrLabel, label}})), errSecSuccess) << name;
        const auto found = items(item("a", place));
        ASSERT_EQ(found.size(), 1u) << name;
        EXPECT_EQ(found[0][kSecAttrService], Value(name));
        EXPECT_EQ(found[0][kSecAttrAccessGroup], Value(name));
        EXPECT_EQ(found[0][kSecAttrLabel], Value(label));
    }
    EXPECT_EQ(items().size(), names.size());
}

TEST_P(KeychainName, GenericMayBeAnyBytes) {
    for (const auto& name : names) {
        const Dictionary generic{{kSecAttrGeneric, dataFromText(name + "\xFF")}};
        EXPECT_EQ(add(item(name, generic)), errSecSuccess) << name;
        EXPECT_EQ(accounts(generic), Texts{name});
    }
}

TEST_P(KeychainName, MayHave4096Bytes) {
    const std::string longest(maximum, 'x');
    const std::string longestOfTwos = std::string(maximum - 2, 'x') + "\u00E9";
    for (const auto& name : {longest, longestOfTwos}) {
        const Dictionary attributes{{kSecAttrService, name},
                                    {kSecAttrAccount, name},
                                    {kSecAttrAccessGroup, name},
                                    {kSecAttrLabel, name},
                                    {kSecAttrGeneric, dataFromText(name)}};
        EXPECT_EQ(add(item("", attributes)), errSecSuccess);
        auto query = attributes;
        query.erase(kSecAttrLabel);
        const auto found = items(query);
        ASSERT_EQ(found.size(), 1u);
        EXPECT_EQ(found[0][kSecAttrAccount], Value(dataFromText(name)));
        EXPECT_EQ(found[0][kSecAttrLabel], Value(name));
    }
    EXPECT_EQ(find(item("", {{kSecAttrAccount, std::string(maximum - 1, 'x')}})), errSecItemNotFound);
    EXPECT_EQ(update(item("", {{kSecAttrService, longest}, {kSecAttrAccount, longest}}),
                     {{kSecAttrAccount, Data(maximum, std::byte{0xFF})}}),
              errSecSuccess);
}

TEST_P(KeychainName, OfMoreThan4096BytesIsRefused) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    const std::string tooLong(maximum + 1, 'x');
    for (const Dictionary& entry :
         {Dictionary{{kSecAttrService, tooLong}}, Dictionary{{kSecAttrAccount, tooLong}},
          Dictionary{{kSecAttrAccount, dataFromText(tooLong)}}, Dictionary{{kSecAttrAccessGroup, tooLong}},
          Dictionary{{kSecAttrGeneric, dataFromText(tooLong)}}}) {
        EXPECT_EQ(add(item("b", entry)), errSecParam) << entry.begin()->first;
        EXPECT_EQ(find(item("b", entry)), errSecParam) << entry.begin()->first;
        EXPECT_EQ(update(item("a"), entry), errSecParam) << entry.begin()->first;
        EXPECT_EQ(remove(item("b", entry)), errSecParam) << entry.begin()->first;
    }
    EXPECT_EQ(add(item("b", {{kSecAttrLabel, tooLong}})), errSecParam);
    EXPECT_EQ(update(item("a"), {{kSecAttrLabel, tooLong}}), errSecParam);
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_P(KeychainName, AccountMayBeBytesThatAreNoText) {
    const Texts accountsInBytes{"\xFF", "\xC3\x28", "abc\xE2\x82", std::string("\xFF\0", 2), "\xED\xA0\x80"};
    for (const auto& account : accountsInBytes)
        EXPECT_EQ(add(item("", {{kSecAttrAccount, dataFromText(account)}})), errSecSuccess);
    EXPECT_EQ(accounts(), accountsInBytes);
    for (const auto& account : accountsInBytes)
        EXPECT_EQ(remove(item("", {{kSecAttrAccount, dataFromText(account)}})), errSecSuccess);
}

TEST_P(KeychainName, TextThatIsNotUtf8IsRefused) {
    EXPECT_EQ(add(item("a")), errSecSuccess);
    for (const auto* key : {kSecAttrService, kSecAttrAccount, kSecAttrAccessGroup}) {
        const Dictionary entry{{key, "\xFF"}};
        EXPECT_EQ(add(item("b", entry)), errSecParam) << key;
        EXPECT_EQ(find(item("b", entry)), errSecParam) << key;
        EXPECT_EQ(update(item("a"), entry), errSecParam) << key;
        EXPECT_EQ(remove(item("b", entry)), errSecParam) << key;
    }
    EXPECT_EQ(add(item("b", {{kSecAttrLabel, "\xFF"}})), errSecParam);
    EXPECT_EQ(update(item("a"), {{kSecAttrLabel, "\xFF"}}), errSecParam);
    EXPECT_EQ(accounts(), Texts{"a"});
}

TEST_P(KeychainName, KeysOfAServiceAreThoseThatAreTexts) {
    EXPECT_EQ(add(item("first", {{kSecAttrAccessGroup, "group"}})), errSecSuccess);
    EXPECT_EQ(add(item("", {{kSecAttrAccount, Data{std::byte{0xFF}}}})), errSecSuccess);
    EXPECT_EQ(add(item("second", {{kSecAttrSynchronizable, true}})), errSecSuccess);
    EXPECT_EQ(add(item("elsewhere", {{kSecAttrService, "other"}})), errSecSuccess);
    Texts keys{"before"};
    EXPECT_EQ(KeychainStore::keys("service", keys), errSecSuccess);
    EXPECT_EQ(keys, (Texts{"first", "second"}));
    EXPECT_EQ(KeychainStore::keys("none", keys), errSecItemNotFound);
    EXPECT_EQ(keys, Texts{});
}
