// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Reachability/ReachabilityError.h>

#include <VorlanFoundation/Platform/Describe.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <exception>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

using namespace vorlan;
using ::testing::HasSubstr;
using enum ReachabilityError::Case;

namespace {

/// One of each case, with the same status.
std::vector<ReachabilityError> oneOfEach(std::int32_t status) {
    return {ReachabilityError::failedToCreateWithAddress(SocketAddress::zero(), status),
            ReachabilityError::failedToCreateWithHostname("example.org", status),
            ReachabilityError::unableToSetCallback(status),
            ReachabilityError::unableToSetDispatchQueue(status), ReachabilityError::unableToGetFlags(status)};
}

} // namespace

TEST(ReachabilityError, HasTheCaseAndTheStatusThatItWasMadeWith) {
    const auto errors = oneOfEach(1002);
    const ReachabilityError::Case cases[] = {failedToCreateWithAddress, failedToCreateWithHostname,
                                             unableToSetCallback, unableToSetDispatchQueue, unableToGetFlags};
    ASSERT_EQ(errors.size(), std::size(cases));
    for (std::size_t i = 0; i < errors.size(); ++i) {
        EXPECT_EQ(errors[i].kind(), cases[i]);
        EXPECT_EQ(errors[i].status(), 1002);
    }
}

TEST(ReachabilityError, HasTheAddressOrTheHostnameThatWasTried) {
    for (const auto& error : oneOfEach(1001)) {
        EXPECT_EQ(error.address(), error.kind() == failedToCreateWithAddress
                                       ? std::optional(SocketAddress::zero())
                                       : std::nullopt);
        EXPECT_EQ(error.hostname(), error.kind() == failedToCreateWithHostname
                                        ? std::optional<std::string>("example.org")
                                        : std::nullopt);
    }
}

TEST(ReachabilityError, KeepsAnEmptyHostnameAndOneWithANulAsTheyAre) {
    EXPECT_EQ(ReachabilityError::failedToCreateWithHostname("", 1002).hostname(), std::string());
    const std::string withNul("a\0b", 3);
    EXPECT_EQ(ReachabilityError::failedToCreateWithHostname(withNul, 1002).hostname(), withNul);
}

TEST(ReachabilityError, EqualsOneOfTheSameCaseAndPayload) {
    const auto errors = oneOfEach(1002);
    const auto again = oneOfEach(1002);
    for (std::size_t i = 0; i < errors.size(); ++i)
        for (std::size_t j = 0; j < again.size(); ++j) EXPECT_EQ(errors[i] == again[j], i == j);
}

TEST(ReachabilityError, DiffersByStatusAddressAndHostname) {
    const auto errors = oneOfEach(1002);
    const auto others = oneOfEach(1001);
    for (std::size_t i = 0; i < errors.size(); ++i) EXPECT_NE(errors[i], others[i]);
    EXPECT_NE(errors[0], ReachabilityError::failedToCreateWithAddress(
                             SocketAddress{.length = 28, .family = SocketAddress::ipv6}, 1002));
    EXPECT_NE(errors[1], ReachabilityError::failedToCreateWithHostname("example.com", 1002));
}

TEST(ReachabilityError, TellsCaseAndPayloadInOneLine) {
    std::set<std::string> texts;
    for (const auto status : {1001, 1002, 4001, -7})
        for (const auto& error : oneOfEach(status)) {
            const std::string text = error.what();
            EXPECT_THAT(text, HasSubstr(std::to_string(status)));
            EXPECT_EQ(text.find('\n'), std::string::npos);
            texts.insert(text);
        }
    EXPECT_EQ(texts.size(), 20U) << "no two alike";
}

TEST(ReachabilityError, NamesWhatWasTried) {
    EXPECT_THAT(ReachabilityError::failedToCreateWithHostname("example.org", 1002).what(),
                HasSubstr("example.org"));
    const auto router = SocketAddress::fromText("192.168.1.1").value();
    EXPECT_THAT(ReachabilityError::failedToCreateWithAddress(router, 1002).what(), HasSubstr("192.168.1.1"));
}

TEST(ReachabilityError, TellsAHostnameOfIllFormedBytesInWellFormedText) {
    for (const auto* hostname : {"a\xff z", "\xc3", "\xed\xa0\x80", "\xf4\x90\x80\x80"}) {
        const auto error = ReachabilityError::failedToCreateWithHostname(hostname, 1002);
        EXPECT_EQ(error.hostname(), hostname) << "kept as it is";
        const std::string text = error.what();
        EXPECT_EQ(text, describe(text)) << "describing repairs what is ill-formed";
        EXPECT_THAT(text, HasSubstr("\xef\xbf\xbd"));
    }
}

TEST(ReachabilityError, StaysOnOneLineWhateverTheHostnameIs) {
    const std::string hostname("a\nb\rc\0d", 7);
    const auto error = ReachabilityError::failedToCreateWithHostname(hostname, 1002);
    const std::string text = error.what();
    EXPECT_EQ(text.find('\n'), std::string::npos);
    EXPECT_EQ(text.find('\r'), std::string::npos);
    EXPECT_THAT(text, HasSubstr("1002")) << "not cut off at the NUL";
}

// Of these some begin a line where they are shown, and one steers terminals.
TEST(ReachabilityError, ShowsControlCharactersBeyondASCIIAsQuestionMarksToo) {
    for (const std::string character : {"\xc2\x80", "\xc2\x85", "\xc2\x9b", "\xe2\x80\xa8", "\xe2\x80\xa9"})
        EXPECT_THAT(ReachabilityError::failedToCreateWithHostname("<" + character + ">", 1002).what(),
                    HasSubstr("\"<?>\""));
    for (const std::string other : {"\xc2\xa0", "\xc3\x85", "\xe2\x80\xa7", "\xc2"})
        EXPECT_THAT(ReachabilityError::failedToCreateWithHostname("<" + other + ">", 1002).what(),
                    HasSubstr("\"<" + describe(other) + ">\""));
}

TEST(ReachabilityError, CopiesShareThePayload) {
    auto original = std::make_unique<ReachabilityError>(
        ReachabilityError::failedToCreateWithHostname("example.org", 1002));
    const ReachabilityError copy = *original;
    const char* const text = original->what();
    EXPECT_EQ(copy.what(), text);
    original.reset();
    EXPECT_THAT(copy.what(), HasSubstr("example.org"));
    ReachabilityError assigned = ReachabilityError::unableToGetFlags(1001);
    assigned = copy;
    EXPECT_EQ(assigned, copy);
    const ReachabilityError moved = std::move(assigned);
    EXPECT_EQ(moved, copy);
}

TEST(ReachabilityError, IsCaughtAsAnException) {
    try {
        throw ReachabilityError::unableToGetFlags(4001);
    } catch (const std::exception& error) {
        EXPECT_THAT(error.what(), HasSubstr("4001"));
    }
}
