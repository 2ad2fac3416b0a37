// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/FileURL.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/platform/files/Environment.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

using namespace vorlan;
using namespace std::string_literals;
namespace fs = std::filesystem;

namespace {

std::string descriptionOf(const std::string& path) {
    return FileURL(path).description();
}

std::optional<std::string> pathOf(std::string_view description) {
    const auto url = FileURL::fromDescription(description);
    return url ? std::optional(url->path().native()) : std::nullopt;
}

bool isUnreserved(unsigned char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
           std::string_view("-._~").find(static_cast<char>(byte)) != std::string_view::npos;
}

std::string encoded(unsigned char byte) {
    std::string text(4, '\0');
    text.resize(static_cast<std::size_t>(std::snprintf(text.data(), text.size(), "%%%02X", byte)));
    return text;
}

} // namespace

TEST(FileURLTest, DescriptionIsTheURLForm) {
    EXPECT_EQ(descriptionOf("/home/ann/Documents/notes.txt"), "file:///home/ann/Documents/notes.txt");
    EXPECT_EQ(descriptionOf("/"), "file:///");
    EXPECT_EQ(describe(FileURL("/a b")), "file:///a%20b") << "so it is logged";
}

TEST(FileURLTest, BlanksAndPercentSignsAreEncoded) {
    EXPECT_EQ(descriptionOf("/My notes.txt"), "file:///My%20notes.txt");
    EXPECT_EQ(descriptionOf("/100%"), "file:///100%25");
    EXPECT_EQ(descriptionOf("/%20"), "file:///%2520");
}

TEST(FileURLTest, WhatWouldEndThePathIsEncoded) {
    EXPECT_EQ(descriptionOf("/a#b?c"), "file:///a%23b%3Fc");
    EXPECT_EQ(descriptionOf("/a;b"), "file:///a%3Bb");
    EXPECT_EQ(descriptionOf("/a\\b"), "file:///a%5Cb");
}

TEST(FileURLTest, BytesBeyondAsciiAreEncoded) {
    EXPECT_EQ(descriptionOf("/Grüße"), "file:///Gr%C3%BC%C3%9Fe");
    EXPECT_EQ(descriptionOf("/日本"), "file:///%E6%97%A5%E6%9C%AC");
    EXPECT_EQ(descriptionOf("/a\xFF\n\x01"), "file:///a%FF%0A%01") << "a path need not be text";
}

TEST(FileURLTest, AllButUnreservedCharactersAreEncoded) {
    for (unsigned byte = 1; byte < 256; ++byte) {
        if (byte == '/') continue;
        const auto character = static_cast<unsigned char>(byte);
        const std::string name(1, static_cast<char>(character));
        EXPECT_EQ(descriptionOf("/x" + name),
                  "file:///x" + (isUnreserved(character) ? name : encoded(character)));
    }
}

TEST(FileURLTest, DescriptionIsReadBack) {
    EXPECT_EQ(pathOf("file:///My%20notes.txt"), "/My notes.txt");
    EXPECT_EQ(pathOf("file:///Gr%c3%bc%C3%9Fe"), "/Grüße");
    EXPECT_EQ(pathOf("file:///"), "/");
    EXPECT_EQ(pathOf("file:///a/b/"), "/a/b");
    EXPECT_EQ(pathOf("file:///100%25"), "/100%");
}

TEST(FileURLTest, ThisMachineMayBeNamed) {
    EXPECT_EQ(pathOf("file://localhost/a"), "/a");
    EXPECT_EQ(pathOf("file://elsewhere.example/a"), std::nullopt);
}

TEST(FileURLTest, WhatIsNoFileURLIsAbsent) {
    for (const auto& text : {""s, "file:"s, "/a"s, "a"s, "http://localhost/a"s, "file://a"s, "files:///a"s,
                             "file:///a%"s, "file:///a%2"s, "file:///a%zz"s, "file:///a%00b"s})
        EXPECT_EQ(pathOf(text), std::nullopt) << text;
}

TEST(FileURLTest, TextWithANulIsNoURL) {
    EXPECT_EQ(pathOf("file:///a\0b"s), std::nullopt);
}

TEST(FileURLTest, EveryPathIsReadBack) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> byte(1, 255);
    std::uniform_int_distribution<int> length(0, 40);
    for (int i = 0; i < 5000; ++i) {
        std::string path = "/";
        for (int n = length(random); n > 0; --n) path += static_cast<char>(byte(random));
        const FileURL url(path);
        const auto description = url.description();
        ASSERT_EQ(FileURL::fromDescription(description), url) << description;
        for (const char c : description)
            ASSERT_TRUE(isUnreserved(static_cast<unsigned char>(c)) || std::string_view("%/:").find(c) < 3 ||
                        std::string_view("!$&'()*+,=@").find(c) < 11)
                << description;
    }
}

TEST(FileURLTest, SlashesAtTheEndDoNotCount) {
    EXPECT_EQ(FileURL("/a/b/"), FileURL("/a/b"));
    EXPECT_EQ(FileURL("/a/b///"), FileURL("/a/b"));
    EXPECT_EQ(FileURL("/a/b/").lastPathComponent(), "b");
    EXPECT_EQ(FileURL("/").path(), "/");
}

TEST(FileURLTest, ComponentsAreAppended) {
    const FileURL folder("/home/ann");
    EXPECT_EQ(folder.appendingPathComponent("notes").path(), "/home/ann/notes");
    EXPECT_EQ(folder / "notes" / "2026.txt", FileURL("/home/ann/notes/2026.txt"));
    EXPECT_EQ(folder.path(), "/home/ann") << "the URL itself stays";
    EXPECT_EQ(FileURL("/") / "etc", FileURL("/etc"));
    EXPECT_EQ(FileURL("/a/") / "b", FileURL("/a/b"));
}

// As paths are written, an absolute path would take the place of all before it.
TEST(FileURLTest, NameWithASlashInFrontIsAppendedAsWell) {
    EXPECT_EQ(FileURL("/home/ann") / "/etc/passwd", FileURL("/home/ann/etc/passwd"));
}

TEST(FileURLTest, NameIsAppendedAsItStands) {
    EXPECT_EQ((FileURL("/a") / "b/c").path(), "/a/b/c");
    EXPECT_EQ((FileURL("/a") / "..").path(), "/a/..");
    EXPECT_EQ((FileURL("/a") / "%20").path(), "/a/%20");
    EXPECT_EQ((FileURL("/a") / "b c").description(), "file:///a/b%20c");
    EXPECT_EQ((FileURL("/a") / "").path(), "/a");
}

TEST(FileURLTest, LastComponentIsTheName) {
    EXPECT_EQ(FileURL("/home/ann/notes.txt").lastPathComponent(), "notes.txt");
    EXPECT_EQ(FileURL("/home/.hidden").lastPathComponent(), ".hidden");
    EXPECT_EQ(FileURL("/a b").lastPathComponent(), "a b");
    EXPECT_EQ(FileURL("/").lastPathComponent(), "/");
}

TEST(FileURLTest, WithoutTheLastComponentItIsTheFolder) {
    EXPECT_EQ(FileURL("/home/ann/notes.txt").deletingLastPathComponent(), FileURL("/home/ann"));
    EXPECT_EQ(FileURL("/home/ann/").deletingLastPathComponent(), FileURL("/home"));
    EXPECT_EQ(FileURL("/home").deletingLastPathComponent(), FileURL("/"));
    EXPECT_EQ(FileURL("/").deletingLastPathComponent(), FileURL("/"));
}

TEST(FileURLTest, RelativePathIsTakenFromTheWorkingDirectory) {
    const vorlan::testing::TemporaryHome home;
    const auto folder = fs::canonical(home.path());
    const FileURL before("notes.txt");
    const tests::WorkingDirectory inHome(folder);
    const FileURL url("notes.txt");
    EXPECT_NE(url, before);
    EXPECT_EQ(url.path(), folder / "notes.txt");
    EXPECT_EQ(FileURL("a/b").path(), folder / "a/b");
    EXPECT_EQ(FileURL("").path(), folder);
    const tests::WorkingDirectory inRoot("/");
    EXPECT_EQ(url.path(), folder / "notes.txt") << "that of the moment when it was made";
}

TEST(FileURLTest, WorkingDirectoryMayBeGone) {
    const vorlan::testing::TemporaryHome home;
    fs::create_directory(home.path() / "gone");
    const tests::WorkingDirectory inFolder(home.path() / "gone");
    fs::remove(home.path() / "gone");
    EXPECT_TRUE(FileURL("notes.txt").path().is_absolute());
}

TEST(FileURLTest, URLServesAsAPath) {
    const vorlan::testing::TemporaryHome home;
    const auto url = FileURL(home.path()) / "my notes";
    std::ofstream(url.path()) << "milk";
    EXPECT_EQ(fs::file_size(url), 4U);
}
