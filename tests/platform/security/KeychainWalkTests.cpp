// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/KeychainCase.h"

#include <algorithm>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <vector>

using namespace vorlan;
using namespace vorlan::tests;

namespace {

#ifdef VORLAN_SANITIZED
constexpr int slowness = 5;
#else
constexpr int slowness = 1;
#endif

/// What the rules say, written down in the plainest way: entries of dictionaries, compared one by one.
class Model {
public:
    OSStatus add(Dictionary item) {
        item.insert({{kSecAttrService, ""},
                     {kSecAttrAccount, Data()},
                     {kSecAttrAccessGroup, ""},
                     {kSecAttrSynchronizable, false},
                     {kSecAttrAccessible, kSecAttrAccessibleWhenUnlocked}});
        if (std::ranges::any_of(items_, [&](const auto& other) { return identity(other) == identity(item); }))
            return errSecDuplicateItem;
        items_.push_back(std::move(item));
        return errSecSuccess;
    }

    OSStatus update(const Dictionary& query, const Dictionary& change) {
        auto changed = items_;
        bool hasFound = false;
        for (auto& item : changed) {
            if (!agrees(item, query)) continue;
            hasFound = true;
            for (const auto& [key, value] : change) item[key] = value;
        }
        if (!hasFound) return errSecItemNotFound;
        std::set<std::string> identities;
        for (const auto& item : changed) identities.insert(identity(item));
        if (identities.size() != changed.size()) return errSecDuplicateItem;
        items_ = std::move(changed);
        return errSecSuccess;
    }

    OSStatus remove(const Dictionary& query) {
        const auto count = std::erase_if(items_, [&](const auto& item) { return agrees(item, query); });
        return count == 0 ? errSecItemNotFound : errSecSuccess;
    }

    Value::Array found(const Dictionary& query) const {
        Value::Array found;
        for (const auto& item : items_)
            if (agrees(item, query)) found.emplace_back(item);
        return found;
    }

    std::size_t size() const { return items_.size(); }

private:
    static std::string identity(const Dictionary& item) {
        std::string identity;
        for (const auto* key :
             {kSecAttrService, kSecAttrAccount, kSecAttrAccessGroup, kSecAttrSynchronizable})
            identity += item.at(key).description() + "|";
        return identity;
    }

    static bool agrees(const Dictionary& item, const Dictionary& query) {
        for (const auto& [key, value] : query) {
            if (value == Value(kSecAttrSynchronizableAny)) continue;
            const auto own = item.find(key);
            if (own == item.end() || own->second != value) return false;
        }
        return query.contains(kSecAttrSynchronizable) || item.at(kSecAttrSynchronizable) == Value(false);
    }

    std::vector<Dictionary> items_;
};

class KeychainWalk : public KeychainCase {
protected:
    // One of the values for a key, or in `never` of ten cases none.
    void choose(Dictionary& dictionary, const char* key, const std::vector<Value>& values, int never) {
        if (pick(10) < never) return;
        dictionary[key] = values[static_cast<std::size_t>(pick(static_cast<int>(values.size())))];
    }

    int pick(int count) { return std::uniform_int_distribution(0, count - 1)(engine_); }

    void chooseNames(Dictionary& dictionary, int never) {
        choose(dictionary, kSecAttrService, {"s", "t"}, never);
        choose(dictionary, kSecAttrAccount, {dataFromText("a"), dataFromText("b"), dataFromText("c")}, never);
        choose(dictionary, kSecAttrAccessGroup, {"", "g"}, never + 3);
    }

    void chooseRest(Dictionary& dictionary, int never) {
        choose(dictionary, kSecAttrAccessible, {kSecAttrAccessibleWhenUnlocked, kSecAttrAccessibleAlways},
               never);
        choose(dictionary, kSecAttrGeneric, {Data(), dataFromText("x")}, never);
    }

    Dictionary randomItem() {
        Dictionary item{{kSecClass, kSecClassGenericPassword}};
        chooseNames(item, 1);
        choose(item, kSecAttrSynchronizable, {true, false}, 5);
        chooseRest(item, 5);
        choose(item, kSecValueData, {Data(), dataFromText("1"), dataFromText("2")}, 3);
        return item;
    }

    Dictionary randomQuery() {
        Dictionary query{{kSecClass, kSecClassGenericPassword}};
        chooseNames(query, 2);
        choose(query, kSecAttrSynchronizable, {true, false, kSecAttrSynchronizableAny}, 4);
        chooseRest(query, 8);
        return query;
    }

    Dictionary randomChange() {
        Dictionary change;
        choose(change, kSecValueData, {Data(), dataFromText("1"), dataFromText("2")}, 3);
        chooseRest(change, 8);
        if (pick(3) == 0) chooseNames(change, 6);
        if (pick(6) == 0) choose(change, kSecAttrSynchronizable, {true, false}, 0);
        return change;
    }

    // What there is of them, without what the model does not know.
    Value::Array known(const Dictionary& query) {
        Value::Array known = items(query);
        for (auto& item : known)
            for (const auto* key : {kSecAttrLabel, kSecAttrCreationDate, kSecAttrModificationDate})
                item.dictionary()->erase(key);
        return known;
    }

    void step() {
        switch (pick(8)) {
        case 0:
        case 1:
        case 2: {
            const auto item = randomItem();
            EXPECT_EQ(add(item), model_.add(item)) << Value(item).description();
            break;
        }
        case 3:
        case 4: {
            const auto query = randomQuery();
            const auto change = randomChange();
            EXPECT_EQ(update(query, change), model_.update(query, change))
                << Value(query).description() << Value(change).description();
            break;
        }
        case 5: {
            const auto query = randomQuery();
            EXPECT_EQ(remove(query), model_.remove(query)) << Value(query).description();
            break;
        }
        default: {
            auto query = randomQuery();
            query.insert({{kSecAttrSynchronizable, kSecAttrSynchronizableAny}});
            EXPECT_EQ(known(query), model_.found(query)) << Value(query).description();
        }
        }
    }

    std::mt19937 engine_{std::random_device()()};
    Model model_;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Stores, KeychainWalk, everyKeeper, nameOfKeeper);

TEST_P(KeychainWalk, EveryStoreKeepsTheRules) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    engine_.seed(seed);
    const Dictionary everything{{kSecClass, kSecClassGenericPassword},
                                {kSecAttrSynchronizable, kSecAttrSynchronizableAny}};
    const int steps = (isOnTheBus() ? 300 : 2000) / slowness;
    std::size_t largest = 0;
    for (int i = 0; i < steps && !HasFailure(); ++i) {
        SCOPED_TRACE("step " + std::to_string(i));
        step();
        largest = std::max(largest, model_.size());
        if (i % 50 == 0) {
            EXPECT_EQ(known(everything), model_.found(everything));
        }
    }
    EXPECT_EQ(known(everything), model_.found(everything));
    EXPECT_GT(largest, 4u) << "a walk that says something";
}
