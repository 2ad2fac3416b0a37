// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONWriterStorage.h"

#include <VorlanFoundation/Platform/JSONWriter.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <utility>

using namespace vorlan;

namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20;

std::string write(std::size_t size) {
    JSONWriter writer;
    writer.writeText(std::string(size, 'x'));
    return std::move(writer).takeText();
}

// Of a new thread, which has no storage yet.
template <class Code>
void onThread(Code code) {
    std::thread(std::move(code)).join();
}

// Of a thread that ends: its other destructors may run before or after the storage's.
struct WritesAtTheEnd {
    std::string* written = nullptr;
    ~WritesAtTheEnd() {
        if (written != nullptr) *written = write(3);
    }
};
thread_local WritesAtTheEnd writesAtTheEnd;

} // namespace

TEST(JSONWriterStorage, IsLeftToTheThreadsNextWriter) {
    onThread([] {
        auto storage = JSONWriterStorage::take();
        storage->text.append(std::string_view("text"));
        storage->frames.emplace_back();
        storage->memberStarts.push_back(1);
        const auto* const address = storage.get();
        JSONWriterStorage::leave(std::move(storage));
        const auto next = JSONWriterStorage::take();
        EXPECT_EQ(next.get(), address);
        EXPECT_EQ(next->text.size(), 0U);
        EXPECT_TRUE(next->frames.empty());
        EXPECT_TRUE(next->memberStarts.empty());
    });
}

TEST(JSONWriterStorage, IsNotKeptWhenItHasBecomeLarge) {
    onThread([] {
        write(2 * mebibyte);
        EXPECT_EQ(JSONWriterStorage::take()->text.capacity(), 0U);
        write(mebibyte / 4);
        const auto kept = JSONWriterStorage::take();
        EXPECT_GE(kept->text.capacity(), mebibyte / 4);
        EXPECT_LE(kept->text.capacity(), mebibyte);
    });
}

TEST(JSONWriterStorage, OneIsKeptForEachThread) {
    onThread([] {
        auto first = JSONWriterStorage::take();
        auto second = JSONWriterStorage::take();
        EXPECT_NE(first, second);
        const auto* const address = first.get();
        JSONWriterStorage::leave(std::move(first));
        JSONWriterStorage::leave(std::move(second));
        EXPECT_EQ(JSONWriterStorage::take().get(), address);
    });
}

TEST(JSONWriterStorage, WritersInAThreadsDestructorsWork) {
    std::string before;
    std::string after;
    onThread([&] {
        writesAtTheEnd.written = &before; // made before the storage, so destroyed after it
        write(1);
    });
    onThread([&] {
        write(1);
        writesAtTheEnd.written = &after;
    });
    EXPECT_EQ(before, R"("xxx")");
    EXPECT_EQ(after, R"("xxx")");
}
