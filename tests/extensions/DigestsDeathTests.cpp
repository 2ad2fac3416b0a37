// SPDX-License-Identifier: Apache-2.0

// Digests where OpenSSL has none, and in processes that end.

#include <VorlanFoundation/Extensions/Text.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iostream>

using namespace vorlan;

TEST(DigestsDeathTest, AlgorithmThatIsNotApprovedStopsTheProcess) {
    const vorlan::testing::TemporaryHome home;
    const auto file = home.path() / "openssl.cnf";
    std::ofstream(file) << "openssl_conf = all\n[all]\nalg_section = algorithms\n"
                           "[algorithms]\ndefault_properties = fips=yes\n";
    ::setenv("OPENSSL_CONF", file.c_str(), /*overwrite=*/1); // read when OpenSSL is used first
    EXPECT_EXIT(text::md5String("abc"), ::testing::KilledBySignal(SIGABRT),
                "VorlanFoundation/Text: Fatal error: OpenSSL cannot make digests by MD5");
    ::unsetenv("OPENSSL_CONF");
}

TEST(DigestsDeathTest, AreMadeWhileTheProcessEnds) {
    struct Last {
        ~Last() { std::cerr << text::md5String("abc") << "\n"; }
    };
    const auto run = [] {
        static const Last last; // before OpenSSL is used, so it goes after what that left behind
        static_cast<void>(text::sha256String("abc"));
        std::exit(0);
    };
    EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "^900150983cd24fb0d6963f7d28e17f72\n$");
}
