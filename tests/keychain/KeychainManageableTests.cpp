// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Keychain.h>

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using vorlan::Data;
using vorlan::dataFromText;
using vorlan::KeychainManageable;
using vorlan::SecurityClass;
using vorlan::SensitiveStringStorage;

namespace {

using Calls = std::vector<std::string>;

/// A host's own keychain: keeps what it is given, and says what it was asked.
class OwnKeychain : public KeychainManageable {
public:
    std::optional<Data> insertReference(const NamedString&) override {
        return noted("insertReference", Data());
    }
    bool insert(std::string_view forKey, const std::optional<Data>& with) override {
        calls_.push_back("insert " + std::string(forKey));
        items_[std::string(forKey)] = with;
        return stores_;
    }
    std::optional<std::string> string(const Data&) override {
        return noted("string from", std::string("found"));
    }
    std::optional<Data> dataRef(std::string_view) override { return noted("dataRef", Data()); }
    std::optional<Data> data(std::string_view forKey) override { return noted("data", item(forKey)); }
    std::optional<std::string> string(std::string_view forKey) override {
        const auto found = noted("string", item(forKey));
        return found ? std::optional(vorlan::textFromData(*found)) : std::nullopt;
    }
    std::optional<bool> bool_(std::string_view forKey) override {
        const auto found = noted("bool", item(forKey));
        return found ? std::optional(found->at(0) == std::byte{1}) : std::nullopt;
    }
    bool update(std::string_view, const std::optional<Data>&) override { return noted("update", true); }
    bool remove(std::string_view forKey) override {
        calls_.push_back("remove " + std::string(forKey));
        return items_.erase(std::string(forKey)) > 0 && stores_;
    }
    bool removeAllKeys(SecurityClass) override { return noted("removeAllKeys of", true); }
    bool removeAllKeys() override { return noted("removeAllKeys", true); }
    void removeAllKeys(const Keeping&) override { noted("removeAllKeys except", true); }
    void wipe() override { noted("wipe", true); }
    bool verifyReference(const Data&) override { return noted("verifyReference", true); }
    void removeReference(const Data&) override { noted("removeReference", true); }

    std::optional<Data> item(std::string_view key) const {
        const auto found = items_.find(std::string(key));
        return found == items_.end() ? std::nullopt : found->second;
    }
    Calls takeCalls() { return std::exchange(calls_, {}); }
    void failFromNowOn() { stores_ = false; }

private:
    template <class T>
    T noted(const char* call, T result) {
        calls_.emplace_back(call);
        return result;
    }

    std::map<std::string, std::optional<Data>> items_;
    Calls calls_;
    bool stores_ = true;
};

/// One that keeps its texts otherwise.
class ReversingKeychain final : public OwnKeychain {
protected:
    std::optional<std::string> readString(std::string_view key) override {
        const auto found = item(key);
        if (!found) return std::nullopt;
        const auto text = vorlan::textFromData(*found);
        return std::string(text.rbegin(), text.rend());
    }
    bool readsTrue_ = true;
    std::optional<bool> readBool(std::string_view) override { return readsTrue_; }
};

std::optional<std::string> readAsHost(SensitiveStringStorage& secrets, std::string_view key) {
    return secrets[key];
}

} // namespace

TEST(KeychainManageable, BytesAreReadByData) {
    OwnKeychain keychain;
    keychain.insert("key", dataFromText("bytes"));
    keychain.takeCalls();
    const std::optional<Data> found = keychain["key"];
    EXPECT_EQ(found, dataFromText("bytes"));
    EXPECT_EQ(keychain["other"].as<Data>(), std::nullopt);
    EXPECT_EQ(keychain.takeCalls(), (Calls{"data", "data"}));
}

TEST(KeychainManageable, BytesAreWrittenByInsertAndAbsentRemoves) {
    OwnKeychain keychain;
    keychain["key"] = dataFromText("bytes");
    EXPECT_EQ(keychain.item("key"), dataFromText("bytes"));
    keychain["key"] = Data();
    EXPECT_EQ(keychain.item("key"), Data());
    keychain["key"] = std::optional<Data>();
    EXPECT_EQ(keychain.item("key"), std::nullopt);
    keychain["key"] = std::optional(dataFromText("again"));
    EXPECT_EQ(keychain.item("key"), dataFromText("again"));
    keychain["key"] = std::nullopt;
    EXPECT_EQ(keychain.takeCalls(),
              (Calls{"insert key", "insert key", "remove key", "insert key", "remove key"}));
}

TEST(KeychainManageable, TextIsReadByStringAndWrittenAsItsBytes) {
    OwnKeychain keychain;
    keychain["key"] = "gr\u00FC\u00DFe";
    EXPECT_EQ(keychain.item("key"), dataFromText("gr\xC3\xBC\xC3\x9F"
                                                 "e"));
    EXPECT_EQ(keychain["key"].as<std::string>(), "gr\u00FC\u00DFe");
    keychain["key"] = std::string("with\0null", 9);
    EXPECT_EQ(keychain.item("key"), dataFromText({"with\0null", 9}));
    keychain["key"] = std::optional<std::string>("optional");
    keychain["key"] = std::optional<std::string>();
    EXPECT_EQ(keychain["key"].as<std::string>(), std::nullopt);
    EXPECT_EQ(keychain.takeCalls(),
              (Calls{"insert key", "string", "insert key", "insert key", "remove key", "string"}));
}

TEST(KeychainManageable, BooleanIsOneByteAndFalseDoesNotRemove) {
    OwnKeychain keychain;
    keychain["key"] = true;
    EXPECT_EQ(keychain.item("key"), Data{std::byte{1}});
    keychain["key"] = false;
    EXPECT_EQ(keychain.item("key"), Data{std::byte{0}});
    EXPECT_EQ(keychain["key"].as<bool>(), false);
    keychain["key"] = std::optional<bool>();
    EXPECT_EQ(keychain["key"].as<bool>(), std::nullopt);
    EXPECT_EQ(keychain.takeCalls(), (Calls{"insert key", "insert key", "bool", "remove key", "bool"}));
}

TEST(KeychainManageable, FailuresOfAssignmentsAreIgnored) {
    OwnKeychain keychain;
    keychain.failFromNowOn();
    keychain["key"] = "text";
    keychain["key"] = true;
    keychain["key"] = dataFromText("bytes");
    keychain["key"] = std::nullopt;
    keychain["key"] = std::nullopt;
    EXPECT_EQ(keychain.takeCalls(),
              (Calls{"insert key", "insert key", "insert key", "remove key", "remove key"}));
}

TEST(KeychainManageable, FallbackStandsInForWhatIsMissing) {
    OwnKeychain keychain;
    EXPECT_EQ(keychain["key"].valueOr(std::string("none")), "none");
    keychain["key"] = "some";
    EXPECT_EQ(keychain["key"].valueOr(std::string("none")), "some");
    EXPECT_TRUE(keychain["other"].valueOr(true));
}

TEST(KeychainManageable, ImplementerMayReplaceTheSubscripts) {
    ReversingKeychain keychain;
    keychain["key"] = "abc";
    EXPECT_EQ(keychain["key"].as<std::string>(), "cba");
    EXPECT_EQ(keychain["key"].as<bool>(), true);
    EXPECT_EQ(keychain["key"].as<Data>(), dataFromText("abc"));
}

TEST(SensitiveStringStorage, EveryKeychainIsOne) {
    OwnKeychain keychain;
    SensitiveStringStorage& secrets = keychain;
    secrets["key"] = "secret";
    EXPECT_EQ(readAsHost(secrets, "key"), "secret");
    secrets["key"] = std::string("another");
    EXPECT_EQ(secrets["key"].as<std::string>(), "another");
    secrets["key"] = std::nullopt;
    EXPECT_EQ(readAsHost(secrets, "key"), std::nullopt);
    EXPECT_EQ(keychain.takeCalls(),
              (Calls{"insert key", "string", "insert key", "string", "remove key", "string"}));
}

TEST(SensitiveStringStorage, ReadsThroughWhatTheImplementerReplaced) {
    ReversingKeychain keychain;
    static_cast<SensitiveStringStorage&>(keychain)["key"] = "abc";
    EXPECT_EQ(readAsHost(keychain, "key"), "cba");
}

namespace {

/// A host's storage that is no keychain.
class Drawer final : public SensitiveStringStorage {
protected:
    std::optional<std::string> readString(std::string_view key) override {
        const auto found = texts_.find(std::string(key));
        return found == texts_.end() ? std::nullopt : std::optional(found->second);
    }
    void writeString(std::string_view key, std::optional<std::string_view> text) override {
        if (text) {
            texts_[std::string(key)] = *text;
        } else {
            texts_.erase(std::string(key));
        }
    }

private:
    std::map<std::string, std::string> texts_;
};

} // namespace

TEST(SensitiveStringStorage, NeedsNothingButTheSubscript) {
    Drawer drawer;
    drawer["key"] = "secret";
    EXPECT_EQ(readAsHost(drawer, "key"), "secret");
    drawer["key"] = std::nullopt;
    EXPECT_EQ(readAsHost(drawer, "key"), std::nullopt);
}
