// SPDX-License-Identifier: Apache-2.0

// Digests beside those that were published, and those that the system's own programs make.

#include <VorlanFoundation/Extensions/Text.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
namespace fs = std::filesystem;

namespace {

struct Algorithm {
    const char* program; // that prints them
    std::string (*digest)(std::string_view);
    std::size_t size; // in digits
};

constexpr Algorithm algorithms[] = {
    {"md5sum", text::md5String, 32},       {"sha1sum", text::sha1String, 40},
    {"sha224sum", text::sha224String, 56}, {"sha256sum", text::sha256String, 64},
    {"sha384sum", text::sha384String, 96}, {"sha512sum", text::sha512String, 128},
};

const std::string million(1'000'000, 'a');
constexpr std::string_view bits448 = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
constexpr std::string_view bits896 = "abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmno"
                                     "ijklmnopjklmnopqklmnopqrlmnopqrsmnopqrstnopqrstu";

// Of characters of one to four bytes, with NULs and line ends among them.
std::string randomText(std::mt19937& random, std::size_t longest) {
    constexpr std::string_view pieces[] = {"a", "Z", "0", "\n", " ",  {"\0", 1},
                                           "é", "Ω", "€", "가", "😀", "\x7F"};
    std::string text;
    for (auto size = random() % (longest + 1); text.size() < size;)
        text += pieces[random() % std::size(pieces)];
    return text;
}

// A folder of texts, each in a file of its own.
class TextFiles {
public:
    explicit TextFiles(const std::vector<std::string>& texts) : folder_(home_.path() / "texts") {
        fs::create_directory(folder_);
        for (std::size_t i = 0; i < texts.size(); ++i) {
            const auto name = std::to_string(100'000 + i); // in order, also to a shell
            std::ofstream(folder_ / name, std::ios::binary) << texts[i];
            names_ += name + '\0';
        }
    }

    // What a program prints that is given all of them: the first word of each line.
    std::vector<std::string> digests(const std::string& program, std::size_t count) const {
        const auto list = home_.path() / "names";
        std::ofstream(list, std::ios::binary) << names_;
        support::ChildProcess shell({"sh", "-c",
                                     "cd '" + folder_.string() + "' && xargs -0 " + program + " < '" +
                                         list.string() + "' && echo end"});
        std::vector<std::string> result;
        for (std::size_t i = 0; i < count; ++i) {
            const auto line = shell.nextLine();
            result.push_back(line.substr(0, line.find(' ')));
        }
        EXPECT_EQ(shell.nextLine(), "end");
        EXPECT_EQ(shell.wait(), 0);
        return result;
    }

private:
    vorlan::testing::TemporaryHome home_;
    fs::path folder_;
    std::string names_;
};

} // namespace

// RFC 1321, A.5
TEST(DigestsTest, MD5IsAsPublished) {
    EXPECT_EQ(text::md5String(""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(text::md5String("a"), "0cc175b9c0f1b6a831c399e269772661");
    EXPECT_EQ(text::md5String("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(text::md5String("message digest"), "f96b697d7cb7938d525a2f31aaf161d0");
    EXPECT_EQ(text::md5String("abcdefghijklmnopqrstuvwxyz"), "c3fcd3d76192e4007dfb496cca67e13b");
    EXPECT_EQ(text::md5String("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
              "d174ab98d277d9f5a5611c2c9f419d9f");
    EXPECT_EQ(text::md5String("1234567890123456789012345678901234567890"
                              "1234567890123456789012345678901234567890"),
              "57edf4a22be3c955ac49da2e2107b67a");
}

// FIPS 180, with the examples that belong to it
TEST(DigestsTest, SHA1IsAsPublished) {
    EXPECT_EQ(text::sha1String(""), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(text::sha1String("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(text::sha1String(bits448), "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
    EXPECT_EQ(text::sha1String(bits896), "a49b2446a02c645bf419f995b67091253a04a259");
    EXPECT_EQ(text::sha1String(million), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
}

TEST(DigestsTest, SHA224IsAsPublished) {
    EXPECT_EQ(text::sha224String(""), "d14a028c2a3a2bc9476102bb288234c415a2b01f828ea62ac5b3e42f");
    EXPECT_EQ(text::sha224String("abc"), "23097d223405d8228642a477bda255b32aadbce4bda0b3f7e36c9da7");
    EXPECT_EQ(text::sha224String(bits448), "75388b16512776cc5dba5da1fd890150b0c6455cb4f58b1952522525");
    EXPECT_EQ(text::sha224String(bits896), "c97ca9a559850ce97a04a96def6d99a9e0e0e2ab14e6b8df265fc0b3");
    EXPECT_EQ(text::sha224String(million), "20794655980c91d8bbb4c1ea97618a4bf03f42581948b2ee4ee7ad67");
}

TEST(DigestsTest, SHA256IsAsPublished) {
    EXPECT_EQ(text::sha256String(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(text::sha256String("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(text::sha256String(bits448),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(text::sha256String(bits896),
              "cf5b16a778af8380036ce59e7b0492370b249b11e8f07a51afac45037afee9d1");
    EXPECT_EQ(text::sha256String(million),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(DigestsTest, SHA384IsAsPublished) {
    EXPECT_EQ(text::sha384String(""), "38b060a751ac96384cd9327eb1b1e36a21fdb71114be0743"
                                      "4c0cc7bf63f6e1da274edebfe76f65fbd51ad2f14898b95b");
    EXPECT_EQ(text::sha384String("abc"), "cb00753f45a35e8bb5a03d699ac65007272c32ab0eded163"
                                         "1a8b605a43ff5bed8086072ba1e7cc2358baeca134c825a7");
    EXPECT_EQ(text::sha384String(bits448), "3391fdddfc8dc7393707a65b1b4709397cf8b1d162af05ab"
                                           "fe8f450de5f36bc6b0455a8520bc4e6f5fe95b1fe3c8452b");
    EXPECT_EQ(text::sha384String(bits896), "09330c33f71147e83d192fc782cd1b4753111b173b3b05d2"
                                           "2fa08086e3b0f712fcc7c71a557e2db966c3e9fa91746039");
    EXPECT_EQ(text::sha384String(million), "9d0e1809716474cb086e834e310a4a1ced149e9c00f24852"
                                           "7972cec5704c2a5b07b8b3dc38ecc4ebae97ddd87f3d8985");
}

TEST(DigestsTest, SHA512IsAsPublished) {
    EXPECT_EQ(text::sha512String(""), "cf83e1357eefb8bdf1542850d66d8007d620e4050b5715dc83f4a921d36ce9ce"
                                      "47d0d13c5d85f2b0ff8318d2877eec2f63b931bd47417a81a538327af927da3e");
    EXPECT_EQ(text::sha512String("abc"), "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
                                         "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f");
    EXPECT_EQ(text::sha512String(bits448),
              "204a8fc6dda82f0a0ced7beb8e08a41657c16ef468b228a8279be331a703c335"
              "96fd15c13b1b07f9aa1d3bea57789ca031ad85c7a71dd70354ec631238ca3445");
    EXPECT_EQ(text::sha512String(bits896),
              "8e959b75dae313da8cf4f72814fc143f8f7779c6eb9f7fa17299aeadb6889018"
              "501d289e4900f7e4331b99dec4b5433ac7d329eeb6dd26545e96e55b874be909");
    EXPECT_EQ(text::sha512String(million),
              "e718483d0ce769644e2e42c7bc15b4638e1f98b13b2044285632a803afa973eb"
              "de0ff244877ea60a4cb0432ce577c31beb009c5c2c49aa2e4eadb217ad8cc09b");
}

TEST(DigestsTest, TextWithoutAUTF8FormHasNone) {
    for (const auto& [program, digest, size] : algorithms) {
        for (const std::string_view illFormed : {"\xFF", "a\xC3", "\xED\xA0\x80", "\xC0\x80"})
            EXPECT_EQ(digest(illFormed), "") << program;
        EXPECT_EQ(digest(std::string_view()).size(), size) << program << ": an empty text has one";
        EXPECT_EQ(digest("\uFFFD").size(), size) << program;
    }
}

TEST(DigestsTest, AreThoseOfTheSystemsPrograms) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::vector<std::string> texts(10'000);
    for (auto& text : texts) text = randomText(random, 300);
    for (std::size_t i = 0; i < 10; ++i) texts[i] = randomText(random, 100'000);
    const TextFiles files(texts);
    for (const auto& [program, digest, size] : algorithms) {
        SCOPED_TRACE(program);
        const auto wanted = files.digests(program, texts.size());
        for (std::size_t i = 0; i < texts.size(); ++i) ASSERT_EQ(digest(texts[i]), wanted[i]);
    }
}

TEST(DigestsTest, AreTheSameInManyThreadsAtOnce) {
    std::vector<std::string> wanted;
    for (const auto& algorithm : algorithms) wanted.push_back(algorithm.digest(bits896));
    std::vector<int> wrong(16, 0);
    std::vector<std::thread> threads;
    for (auto& count : wrong)
        threads.emplace_back([&] {
            for (std::size_t round = 0; round < 600; ++round) {
                const auto which = round % std::size(algorithms);
                if (algorithms[which].digest(bits896) != wanted[which]) ++count;
            }
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(std::count(wrong.begin(), wrong.end(), 0), 16);
}

TEST(DigestsTest, AreMadeWhileAThreadEnds) {
    struct Last {
        std::string* digest = nullptr;
        ~Last() {
            if (digest != nullptr) *digest = text::sha256String("abc") + text::sha256String("abc");
        }
    };
    std::string digest;
    std::thread([&] {
        thread_local Last last; // before the thread's first digest, so it goes after what that left behind
        last.digest = &digest;
        static_cast<void>(text::md5String("abc"));
    }).join();
    EXPECT_EQ(digest, text::sha256String("abc") + text::sha256String("abc"));
}
