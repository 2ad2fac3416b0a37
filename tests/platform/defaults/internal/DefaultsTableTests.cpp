// SPDX-License-Identifier: Apache-2.0
#include "platform/defaults/DefaultsTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

using namespace vorlan;
using namespace vorlan::defaults;

namespace {

using Keys = std::vector<std::string>;
using Entries = Value::Dictionary;

std::optional<Value> found(const DefaultsTable& table, std::string_view key) {
    const auto* value = table.find(key);
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

// In a fixed order.
Keys replaceSaved(DefaultsTable& table, const Entries& entries) {
    auto changed = table.replaceSaved(entries);
    std::ranges::sort(changed);
    return changed;
}

Keys unsavedKeys(const DefaultsTable& table) {
    Keys keys;
    for (const auto& one : table.unsaved()) keys.push_back(one.key);
    std::ranges::sort(keys);
    return keys;
}

} // namespace

TEST(DefaultsTable, IsEmptyFromTheStart) {
    const DefaultsTable table;
    EXPECT_EQ(table.find("a"), nullptr);
    EXPECT_EQ(table.findRegistered("a"), nullptr);
    EXPECT_FALSE(table.hasUnsaved());
    EXPECT_TRUE(table.unsaved().empty());
    EXPECT_TRUE(table.entries(true).empty());
}

TEST(DefaultsTable, EntryThatWasSetIsFoundAndUnsaved) {
    DefaultsTable table;
    table.set("a", 1);
    EXPECT_EQ(found(table, "a"), Value(1));
    EXPECT_TRUE(table.hasUnsaved());
    const auto unsaved = table.unsaved();
    ASSERT_EQ(unsaved.size(), 1U);
    EXPECT_EQ(unsaved[0].key, "a");
    EXPECT_EQ(unsaved[0].value, Value(1));
}

TEST(DefaultsTable, RegisteredValueCountsWhereThereIsNoEntry) {
    DefaultsTable table;
    table.registerDefault("a", "registered");
    EXPECT_EQ(found(table, "a"), Value("registered"));
    EXPECT_FALSE(table.hasUnsaved());
    table.set("a", "set");
    EXPECT_EQ(found(table, "a"), Value("set"));
    EXPECT_EQ(*table.findRegistered("a"), Value("registered"));
    table.set("a", std::nullopt);
    EXPECT_EQ(found(table, "a"), Value("registered"));
    table.registerDefault("a", "anew");
    EXPECT_EQ(found(table, "a"), Value("anew"));
}

TEST(DefaultsTable, RemovalIsUnsavedUntilItIsSaved) {
    DefaultsTable table;
    table.replaceSaved({{"a", 1}});
    table.set("a", std::nullopt);
    EXPECT_EQ(found(table, "a"), std::nullopt);
    const auto unsaved = table.unsaved();
    ASSERT_EQ(unsaved.size(), 1U);
    EXPECT_EQ(unsaved[0].value, std::nullopt);
    // The file still has it, and that does not bring it back.
    EXPECT_EQ(replaceSaved(table, {{"a", 1}}), Keys());
    EXPECT_EQ(found(table, "a"), std::nullopt);
    table.markSaved(unsaved);
    EXPECT_FALSE(table.hasUnsaved());
    EXPECT_EQ(replaceSaved(table, {{"a", 2}}), Keys{"a"});
    EXPECT_EQ(found(table, "a"), Value(2));
}

TEST(DefaultsTable, EachUnsavedKeyIsThereOnce) {
    DefaultsTable table;
    for (int i = 0; i < 3; ++i) {
        table.set("a", i);
        table.set("b", i);
    }
    EXPECT_EQ(unsavedKeys(table), (Keys{"a", "b"}));
    EXPECT_EQ(found(table, "a"), Value(2));
}

TEST(DefaultsTable, WhatWasSetAgainMeanwhileStaysUnsaved) {
    DefaultsTable table;
    table.set("a", 1);
    table.set("b", 1);
    const auto saved = table.unsaved();
    table.set("a", 2);
    table.markSaved(saved);
    EXPECT_EQ(unsavedKeys(table), Keys{"a"});
    EXPECT_EQ(replaceSaved(table, {{"a", 1}, {"b", 1}}), Keys());
    EXPECT_EQ(found(table, "a"), Value(2));
    table.markSaved(table.unsaved());
    EXPECT_FALSE(table.hasUnsaved());
    EXPECT_EQ(found(table, "a"), Value(2));
}

TEST(DefaultsTable, SameValueSetAgainMeanwhileStaysUnsavedToo) {
    DefaultsTable table;
    table.set("a", 1);
    const auto saved = table.unsaved();
    table.set("a", 1);
    table.markSaved(saved);
    EXPECT_TRUE(table.hasUnsaved());
}

TEST(DefaultsTable, FileReplacesWhatIsSavedAndNamesWhatChanged) {
    DefaultsTable table;
    EXPECT_EQ(replaceSaved(table, {{"a", 1}, {"b", 2}, {"c", 3}}), (Keys{"a", "b", "c"}));
    EXPECT_EQ(replaceSaved(table, {{"a", 1}, {"b", 2}, {"c", 3}}), Keys());
    EXPECT_EQ(replaceSaved(table, {{"a", 1}, {"b", 5}, {"d", 4}}), (Keys{"b", "c", "d"}));
    EXPECT_EQ(found(table, "a"), Value(1));
    EXPECT_EQ(found(table, "b"), Value(5));
    EXPECT_EQ(found(table, "c"), std::nullopt);
    EXPECT_EQ(found(table, "d"), Value(4));
    EXPECT_FALSE(table.hasUnsaved());
}

TEST(DefaultsTable, UnsavedEntriesOutliveWhatTheFileSays) {
    DefaultsTable table;
    table.set("a", "mine");
    table.set("b", "mine");
    EXPECT_EQ(replaceSaved(table, {{"a", "theirs"}}), Keys());
    EXPECT_EQ(found(table, "a"), Value("mine"));
    EXPECT_EQ(found(table, "b"), Value("mine"));
    EXPECT_EQ(unsavedKeys(table), (Keys{"a", "b"}));
}

TEST(DefaultsTable, ChangesThatCannotBeSeenFromOutsideAreNotNamed) {
    DefaultsTable table;
    table.registerDefault("a", 1);
    EXPECT_EQ(replaceSaved(table, {{"a", 1}}), Keys());
    // It is an entry by now, whatever is registered.
    table.registerDefault("a", 2);
    EXPECT_EQ(found(table, "a"), Value(1));
    table.registerDefault("a", 1);
    EXPECT_EQ(replaceSaved(table, {}), Keys());
    EXPECT_EQ(replaceSaved(table, {{"a", 3}}), Keys{"a"});
    EXPECT_EQ(replaceSaved(table, {}), Keys{"a"});
    EXPECT_EQ(found(table, "a"), Value(1));
}

TEST(DefaultsTable, EntriesAreListedWithAndWithoutWhatIsRegistered) {
    DefaultsTable table;
    table.registerDefault("a", "registered");
    table.registerDefault("b", "registered");
    table.replaceSaved({{"b", "saved"}, {"c", "saved"}, {"d", "saved"}});
    table.set("d", std::nullopt);
    table.set("e", "set");
    const Entries own{{"b", "saved"}, {"c", "saved"}, {"e", "set"}};
    EXPECT_EQ(table.entries(false), own);
    auto all = own;
    all.emplace("a", "registered");
    EXPECT_EQ(table.entries(true), all);
}
