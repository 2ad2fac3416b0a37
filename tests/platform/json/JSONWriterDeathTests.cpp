// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/JSONWriter.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>

using namespace vorlan;

namespace {

std::string stop(const std::string& message) {
    return "VorlanFoundation/JSONWriter: Fatal error: " + message;
}

class JSONWriterDeathTest : public ::testing::Test {
protected:
    void beginArray() { writer_.beginArray(); }
    void beginObject() { writer_.beginObject(); }

    JSONWriter writer_;
};

} // namespace

TEST_F(JSONWriterDeathTest, ValueWithoutAKeyInAnObjectStopsTheProcess) {
    const auto message = stop("a value was written in an object without a key");
    beginObject();
    EXPECT_DEATH(writer_.writeNull(), message);
    EXPECT_DEATH(writer_.writeInteger(1), message);
    EXPECT_DEATH(writer_.writeNumber(std::nan("")), message);
    EXPECT_DEATH(writer_.writeText("text"), message);
    EXPECT_DEATH(writer_.writeData({}), message);
    EXPECT_DEATH(beginArray(), message);
    EXPECT_DEATH(beginObject(), message);
    writer_.key("a");
    writer_.writeNull();
    EXPECT_DEATH(writer_.writeNull(), message);
}

TEST_F(JSONWriterDeathTest, KeyOutsideOfAnObjectStopsTheProcess) {
    EXPECT_DEATH(writer_.key("a"), stop("a key was written outside of an object"));
    beginArray();
    EXPECT_DEATH(writer_.key("a"), stop("a key was written in an array"));
    writer_.endArray();
    EXPECT_DEATH(writer_.key("a"), stop("a key was written outside of an object"));
}

TEST_F(JSONWriterDeathTest, TwoKeysWithoutAValueStopTheProcess) {
    beginObject();
    writer_.key("a");
    EXPECT_DEATH(writer_.key("b"), stop("two keys were written without a value between them"));
}

TEST_F(JSONWriterDeathTest, EndWithoutItsBeginningStopsTheProcess) {
    const auto array = stop("an array was ended that was not begun");
    const auto object = stop("an object was ended that was not begun");
    EXPECT_DEATH(writer_.endArray(), array);
    EXPECT_DEATH(writer_.endObject(), object);
    beginArray();
    EXPECT_DEATH(writer_.endObject(), object);
    beginObject();
    EXPECT_DEATH(writer_.endArray(), array);
    writer_.endObject();
    writer_.endArray();
    EXPECT_DEATH(writer_.endArray(), array);
}

TEST_F(JSONWriterDeathTest, EndBehindAKeyStopsTheProcess) {
    beginObject();
    writer_.key("a");
    EXPECT_DEATH(writer_.endObject(), stop("an object was ended after a key without a value"));
}

TEST_F(JSONWriterDeathTest, SecondValueStopsTheProcess) {
    const auto message = stop("a second value was written behind the whole");
    writer_.writeNull();
    EXPECT_DEATH(writer_.writeNull(), message);
    EXPECT_DEATH(beginObject(), message);
    EXPECT_DEATH(writer_.writeText("text"), message);
}

TEST_F(JSONWriterDeathTest, TakingWhatIsNotCompleteStopsTheProcess) {
    EXPECT_DEATH(static_cast<void>(std::move(writer_).takeText()),
                 stop("a text was taken of which nothing is written"));
    const auto message = stop("a text was taken that is not complete");
    beginObject();
    EXPECT_DEATH(static_cast<void>(std::move(writer_).takeData()), message);
    writer_.key("a");
    EXPECT_DEATH(static_cast<void>(std::move(writer_).takeData()), message);
    beginArray();
    EXPECT_DEATH(static_cast<void>(std::move(writer_).takeText()), message);
    writer_.endArray();
    EXPECT_DEATH(static_cast<void>(std::move(writer_).takeText()), message);
    writer_.endObject();
    EXPECT_EQ(std::move(writer_).takeText(), R"({"a":[]})");
}

TEST_F(JSONWriterDeathTest, UseAfterItsTextWasTakenStopsTheProcess) {
    const auto message = stop("it was used after its text was taken");
    beginArray();
    writer_.endArray();
    static_cast<void>(std::move(writer_).takeText());
    // NOLINTBEGIN(bugprone-use-after-move): that is what stops it
    EXPECT_DEATH(writer_.writeNull(), message);
    EXPECT_DEATH(writer_.key("a"), message);
    EXPECT_DEATH(writer_.endArray(), message);
    EXPECT_DEATH(static_cast<void>(std::move(writer_).takeData()), message);
    // NOLINTEND(bugprone-use-after-move)
}

TEST_F(JSONWriterDeathTest, MaximumDepthOutOfItsRangeStopsTheProcess) {
    EXPECT_DEATH(JSONWriter({.maximumDepth = 0}),
                 stop("the maximum depth has to be from 1 to 2,000, and is 0"));
    EXPECT_DEATH(JSONWriter({.maximumDepth = 2'001}),
                 stop("the maximum depth has to be from 1 to 2,000, and is 2001"));
}
