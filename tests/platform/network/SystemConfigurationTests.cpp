// SPDX-License-Identifier: Apache-2.0

// What the reachability functions take and refuse, and how they say why.

#include <VorlanFoundation/Platform/SystemConfiguration.h>

#include <VorlanFoundation/Testing/ManualQueue.h>
#include <VorlanFoundation/Testing/ScriptedNetwork.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace vorlan {
namespace {

using Flags = SCNetworkReachabilityFlags;
using ::testing::HasSubstr;

/// Leaves a failure behind, so that a success afterwards can be seen.
void failOnPurpose() {
    EXPECT_FALSE(SCNetworkReachabilitySetDispatchQueue(nullptr, std::nullopt));
    EXPECT_EQ(SCError(), kSCStatusInvalidArgument);
}

std::optional<Flags> flagsOf(const SCNetworkReachabilityRef& target) {
    Flags flags{};
    return SCNetworkReachabilityGetFlags(target, flags) ? std::optional(flags) : std::nullopt;
}

std::optional<Flags> flagsOfAddress(std::string_view text) {
    return flagsOf(SCNetworkReachabilityCreateWithAddress(SocketAddress::fromText(text).value()));
}

/// A name of 253 bytes: labels of 63, 63, 63 and 61.
std::string longestName() {
    const std::string label(63, 'a');
    return label + '.' + label + '.' + label + '.' + std::string(61, 'a');
}

TEST(SCNetworkReachability, IsMadeOfANameThatCanBeOne) {
    for (const auto& name : {std::string("localhost"), std::string("example.org."), std::string("a"),
                             std::string("b\xc3\xbc"
                                         "cher.example"),
                             std::string("_srv._tcp.example.org"), std::string("192.168.1.1"),
                             std::string("fe80::1"), longestName(), longestName() + '.'}) {
        failOnPurpose();
        EXPECT_TRUE(SCNetworkReachabilityCreateWithName(name)) << name;
        EXPECT_EQ(SCError(), kSCStatusOK) << name;
    }
}

TEST(SCNetworkReachability, IsNotMadeOfATextThatCanBeNoName) {
    std::string foreign;
    for (int i = 0; i < 80; ++i) foreign += "\xc3\xbc"; // more than a label's 63 bytes in its IDNA form
    for (const auto& name :
         {std::string(), std::string("."), std::string("a\0b", 3), std::string("a\xff"),
          std::string("\xed\xa0\x80"), longestName() + 'a', longestName() + "..", foreign}) {
        EXPECT_TRUE(SCNetworkReachabilityCreateWithName("localhost"));
        EXPECT_FALSE(SCNetworkReachabilityCreateWithName(name)) << name;
        EXPECT_EQ(SCError(), kSCStatusInvalidArgument) << name;
    }
}

TEST(SCNetworkReachability, IsMadeOfAnAddressOfEitherFamily) {
    const SocketAddress zero6{.length = 28, .family = SocketAddress::ipv6};
    for (const auto& address : {SocketAddress::zero(), zero6, SocketAddress::fromText("10.0.0.1", 80).value(),
                                SocketAddress::fromText("fd00::1", 443).value()}) {
        failOnPurpose();
        EXPECT_TRUE(SCNetworkReachabilityCreateWithAddress(address)) << address.description();
        EXPECT_EQ(SCError(), kSCStatusOK);
    }
}

TEST(SCNetworkReachability, IsNotMadeOfAnAddressWhoseLengthDoesNotFitItsFamily) {
    for (unsigned length = 0; length < 256; ++length)
        for (const unsigned family : {0U, 1U, 2U, 10U, 16U, 30U, 255U}) {
            const bool fits = (length == 16 && family == 2) || (length == 28 && family == 30);
            const SocketAddress address{.length = static_cast<std::uint8_t>(length),
                                        .family = static_cast<std::uint8_t>(family)};
            EXPECT_EQ(SCNetworkReachabilityCreateWithAddress(address) != nullptr, fits)
                << length << ' ' << family;
            EXPECT_EQ(SCError(), fits ? kSCStatusOK : kSCStatusInvalidArgument);
        }
}

TEST(SCNetworkReachability, IsNotMadeOfNoSource) {
    EXPECT_FALSE(SCNetworkReachabilityCreateWithSource(nullptr));
    EXPECT_EQ(SCError(), kSCStatusInvalidArgument);
}

TEST(SCNetworkReachability, NoTargetIsAnInvalidArgument) {
    Flags flags = Flags::isDirect;
    EXPECT_FALSE(SCNetworkReachabilityGetFlags(nullptr, flags));
    EXPECT_EQ(SCError(), kSCStatusInvalidArgument);
    EXPECT_EQ(flags, Flags::isDirect) << "left as they were";
    EXPECT_FALSE(SCNetworkReachabilitySetCallback(nullptr, nullptr, nullptr));
    EXPECT_EQ(SCError(), kSCStatusInvalidArgument);
    EXPECT_FALSE(SCNetworkReachabilitySetDispatchQueue(nullptr, Queue::global()));
    EXPECT_EQ(SCError(), kSCStatusInvalidArgument);
    EXPECT_TRUE(SCNetworkReachabilityCreateWithName("localhost"));
    SCNetworkReachabilityCopyDescription(nullptr);
    EXPECT_EQ(SCError(), kSCStatusInvalidArgument);
}

TEST(SCNetworkReachability, FlagsAreOnlySetWhenTheyWereFound) {
    testing::ScriptedNetwork network;
    const auto target = network.reachability();
    network.failFlags(kSCStatusReachabilityUnknown);
    Flags flags = Flags::isDirect;
    EXPECT_FALSE(SCNetworkReachabilityGetFlags(target, flags));
    EXPECT_EQ(SCError(), kSCStatusReachabilityUnknown);
    EXPECT_EQ(flags, Flags::isDirect);
    network.setFlags(Flags::reachable);
    EXPECT_TRUE(SCNetworkReachabilityGetFlags(target, flags));
    EXPECT_EQ(SCError(), kSCStatusOK);
    EXPECT_EQ(flags, Flags::reachable);
}

/// Cases about the machine's own network, whatever it is like at this moment.
class SCNetworkReachabilityOfThisMachine : public ::testing::Test {
protected:
    void SetUp() override {
        if (!flagsOfAddress("127.0.0.1"))
            GTEST_SKIP() << "the kernel cannot be asked here: " << SCErrorString(SCError());
    }

    using Question = std::function<std::optional<Flags>()>;

    /// Expects two questions to have the same answer; asks once more when the network may have changed in between.
    static void expectAgreement(const Question& question, const Question& other) {
        auto answers = std::pair(question(), other());
        for (int tries = 0; tries < 10 && answers.first != answers.second; ++tries)
            answers = {question(), other()};
        EXPECT_TRUE(answers.first);
        EXPECT_EQ(answers.first, answers.second);
    }
};

TEST_F(SCNetworkReachabilityOfThisMachine, NameThatIsAnAddressIsThatAddress) {
    for (const auto* text : {"127.0.0.1", "::1", "203.0.113.7", "2001:db8::7"}) {
        SCOPED_TRACE(text);
        expectAgreement([&] { return flagsOf(SCNetworkReachabilityCreateWithName(text)); },
                        [&] { return flagsOfAddress(text); });
    }
}

TEST_F(SCNetworkReachabilityOfThisMachine, PortMeansNothing) {
    for (const auto* text : {"127.0.0.1", "0.0.0.0", "::", "203.0.113.7"}) {
        SCOPED_TRACE(text);
        const auto withPort = SocketAddress::fromText(text, 8080).value();
        expectAgreement([&] { return flagsOf(SCNetworkReachabilityCreateWithAddress(withPort)); },
                        [&] { return flagsOfAddress(text); });
    }
}

TEST_F(SCNetworkReachabilityOfThisMachine, MappedAddressCountsAsTheIPv4AddressThatItHolds) {
    expectAgreement([] { return flagsOfAddress("::ffff:127.0.0.1"); },
                    [] { return flagsOfAddress("127.0.0.1"); });
    expectAgreement([] { return flagsOfAddress("::ffff:203.0.113.7"); },
                    [] { return flagsOfAddress("203.0.113.7"); });
}

TEST_F(SCNetworkReachabilityOfThisMachine, ZeroAddressesOfBothFamiliesAreTheNetworkInGeneral) {
    expectAgreement([] { return flagsOfAddress("0.0.0.0"); }, [] { return flagsOfAddress("::"); });
    const auto general = flagsOfAddress("0.0.0.0");
    ASSERT_TRUE(general);
    EXPECT_FALSE(contains(*general, Flags::isLocalAddress));
    EXPECT_FALSE(contains(*general, Flags::isDirect));
}

TEST_F(SCNetworkReachabilityOfThisMachine, LoopbackIsThisMachineOrNothing) {
    const auto flags = flagsOfAddress("127.0.0.1");
    EXPECT_TRUE(flags == Flags{} || flags == (Flags::reachable | Flags::isLocalAddress));
}

TEST(SCNetworkReachability, DescriptionTellsWhatItStandsFor) {
    EXPECT_THAT(SCNetworkReachabilityCopyDescription(SCNetworkReachabilityCreateWithName("example.org")),
                HasSubstr("example.org"));
    const auto address = SocketAddress::fromText("192.168.1.1").value();
    EXPECT_THAT(SCNetworkReachabilityCopyDescription(SCNetworkReachabilityCreateWithAddress(address)),
                HasSubstr("192.168.1.1"));
}

TEST(SCNetworkReachability, SecondDispatchQueueIsRefusedAndTheFirstStays) {
    testing::ScriptedNetwork network;
    const auto target = network.reachability();
    const testing::ManualQueue first;
    const testing::ManualQueue second;
    EXPECT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, first));
    for (const Queue& queue : {Queue(first), Queue(second)}) {
        EXPECT_FALSE(SCNetworkReachabilitySetDispatchQueue(target, queue));
        EXPECT_EQ(SCError(), kSCStatusInvalidArgument);
    }
    EXPECT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, std::nullopt));
    EXPECT_EQ(SCError(), kSCStatusOK);
    EXPECT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, second));
}

TEST(SCNetworkReachability, EndWithoutABeginningSucceeds) {
    const testing::ScriptedNetwork network;
    const auto target = network.reachability();
    EXPECT_TRUE(SCNetworkReachabilitySetDispatchQueue(target, std::nullopt));
    EXPECT_TRUE(SCNetworkReachabilitySetCallback(target, nullptr, nullptr));
    EXPECT_EQ(SCError(), kSCStatusOK);
}

TEST(SCNetworkReachability, SourceThatCannotWatchCanOnlyBeAsked) {
    class Unwatchable : public SCNetworkReachabilitySource {
    public:
        Answer currentFlags() override { return {.flags = Flags::isDirect}; }
        std::shared_ptr<void> subscribe(Subscriber) override { return nullptr; }
        std::string description() const override { return "unwatchable"; }
    };
    const auto target = SCNetworkReachabilityCreateWithSource(std::make_shared<Unwatchable>());
    const testing::ManualQueue queue;
    for (int count = 0; count < 2; ++count) {
        EXPECT_FALSE(SCNetworkReachabilitySetDispatchQueue(target, queue));
        EXPECT_EQ(SCError(), kSCStatusFailed) << "each time: no queue stays set";
    }
    EXPECT_EQ(flagsOf(target), Flags::isDirect);
}

TEST(SCError, IsTheThreadsOwn) {
    failOnPurpose();
    std::int32_t seenBefore = -1;
    std::thread([&] {
        seenBefore = SCError();
        EXPECT_TRUE(SCNetworkReachabilityCreateWithName("localhost"));
    }).join();
    EXPECT_EQ(seenBefore, kSCStatusOK);
    EXPECT_EQ(SCError(), kSCStatusInvalidArgument) << "the other thread's success is its own";
}

TEST(SCError, IsTheStatusOfTheLastCall) {
    failOnPurpose();
    EXPECT_EQ(SCError(), kSCStatusInvalidArgument) << "asking changes nothing";
    EXPECT_NE(SCErrorString(SCError()), "");
    EXPECT_EQ(SCError(), kSCStatusInvalidArgument);
    const testing::ScriptedNetwork network;
    EXPECT_TRUE(flagsOf(network.reachability()));
    EXPECT_EQ(SCError(), kSCStatusOK);
}

TEST(SCErrorString, SaysEachStatusInWordsOfItsOwn) {
    EXPECT_EQ(SCErrorString(kSCStatusInvalidArgument), "Invalid argument");
    std::set<std::string> texts;
    for (const auto status :
         {kSCStatusOK, kSCStatusFailed, kSCStatusInvalidArgument, kSCStatusReachabilityUnknown, 7}) {
        const std::string text = SCErrorString(status);
        EXPECT_NE(text, "");
        EXPECT_EQ(text.find('\n'), std::string::npos);
        texts.insert(text);
    }
    EXPECT_EQ(texts.size(), 5U);
    for (const auto status : {-1, 9, INT32_MIN, INT32_MAX}) EXPECT_NE(SCErrorString(status), "");
}

} // namespace
} // namespace vorlan
