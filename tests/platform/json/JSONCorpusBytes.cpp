// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONCorpus.h"

#include <string>
#include <string_view>

namespace vorlan::tests {

using namespace std::string_view_literals;

namespace {

using Array = Value::Array;
using Dictionary = Value::Dictionary;

// Ill-formed UTF-8, within a text, where nothing else is wrong.
JSONText illFormed(const std::string& name, std::string_view bytes) {
    return rejected("IllFormed" + name, "\"a" + std::string(bytes) + "b\"");
}

} // namespace

std::vector<JSONText> literalTexts() {
    return {
        accepted("True", "true", true),
        accepted("False", "false", false),
        accepted("Null", "null", nullptr),
        rejected("TrueCapital", "True"),
        rejected("TrueCapitals", "TRUE"),
        rejected("FalseCapital", "False"),
        rejected("NullCapital", "Null"),
        rejected("NullCapitals", "NULL"),
        rejected("TrueCutOff", "tru"),
        rejected("FalseCutOff", "fals"),
        rejected("NullCutOff", "nul"),
        rejected("FirstLetterOfTrue", "t"),
        rejected("FirstLetterOfFalse", "f"),
        rejected("FirstLetterOfNull", "n"),
        rejected("TrueAndMore", "truex"),
        rejected("TrueAndADigit", "true1"),
        rejected("FalseAndMore", "falsehood"),
        rejected("NullAndMore", "nullptr"),
        rejected("NullAndALetterOfTwoBytes", "null\xC3\xA9"),
        rejected("NullAndANullByte", "null\0"sv),
        rejected("TrueWrittenWrong", "ture"),
        rejected("TrueInTwo", "tr ue"),
        rejected("TwoLiterals", "true false"),
        rejected("TwoLiteralsTogether", "truefalse"),
        rejected("LiteralAndText", "null\"a\""),
        rejected("LiteralAndArray", "null[]"),
        rejected("Undefined", "undefined"),
        rejected("None", "None"),
        rejected("Nil", "nil"),
        rejected("Yes", "yes"),
        rejected("On", "on"),
    };
}

std::vector<JSONText> blankTexts() {
    return {
        rejected("Nothing", ""),
        rejected("OneBlank", " "),
        rejected("AllBlanks", " \t\n\r"),
        accepted("BlankBefore", " 1", 1),
        accepted("BlankAfter", "1 ", 1),
        accepted("TabsAround", "\t1\t", 1),
        accepted("LineFeedsAround", "\n1\n", 1),
        accepted("CarriageReturnsAround", "\r1\r", 1),
        accepted("AllBlanksAround", " \t\r\n1\r\n\t ", 1),
        accepted("AllBlanksAroundATextOfBlanks", " \" \" ", " "),
        accepted("ManyBlanks", repeated(" ", 5000) + "1" + repeated("\n", 5000), 1),
        accepted("BlanksInAnEmptyArray", "[ \t\r\n]", Array()),
        accepted("BlanksInAnEmptyObject", "{ \t\r\n}", Dictionary()),
        accepted("BlanksInAnArray", " [ 1 ,\t2\n,\r3 ] ", Array{1, 2, 3}),
        accepted("BlanksInAnObject", " { \"a\" : 1 ,\n\t\"b\"\r:\t2 } ", Dictionary{{"a", 1}, {"b", 2}}),
        rejected("FormFeed", "\f1"),
        rejected("VerticalTab", "\v1"),
        rejected("Backspace", "1\b"),
        rejected("NoBreakSpace", "\xC2\xA0"
                                 "1"),
        rejected("NextLine", "1\xC2\x85"),
        rejected("LineSeparatorOutside", "1\xE2\x80\xA8"),
        rejected("IdeographicSpace", "[\xE3\x80\x80]"),
        rejected("ZeroWidthSpace", "1\xE2\x80\x8B"),
        rejected("NullByteAlone", "\0"sv),
        rejected("NullByteBefore", "\0001"sv),
        rejected("NullByteAfter", "1\0"sv),
        rejected("NullByteInAnArray", "[1\0]"sv),
        rejected("NullByteAfterAnObject", "{}\0"sv),
        rejected("EndOfFileCharacter", "1\x1A"),
        rejected("RecordSeparator", "\x1E"
                                    "1"),
        rejected("DeleteOutside", "1\x7F"),
        rejected("FormFeedInAnObject", "{\"a\":\f1}"),
    };
}

std::vector<JSONText> encodingTexts() {
    return {
        leftOpen("ByteOrderMark",
                 "\xEF\xBB\xBF"
                 "1",
                 Outcome::malformed),
        leftOpen("ByteOrderMarkBeforeAnObject", "\xEF\xBB\xBF{}", Outcome::malformed),
        rejected("ByteOrderMarkAlone", "\xEF\xBB\xBF"),
        rejected("ByteOrderMarkInTwo", "\xEF\xBB"
                                       "1"),
        rejected("ByteOrderMarkAfter", "1\xEF\xBB\xBF"),
        rejected("ByteOrderMarkWithin", "[\xEF\xBB\xBF"
                                        "1]"),
        rejected("TwoByteOrderMarks", "\xEF\xBB\xBF\xEF\xBB\xBF"
                                      "1"),
        rejected("UTF16LittleEndian", "[\0"
                                      "1\0]\0"sv),
        rejected("UTF16BigEndian", "\0[\0"
                                   "1\0]"sv),
        rejected("UTF16LittleEndianMarked", "\xFF\xFE[\0]\0"sv),
        rejected("UTF16BigEndianMarked", "\xFE\xFF\0[\0]"sv),
        rejected("UTF32LittleEndian", "1\0\0\0"sv),
        rejected("UTF32BigEndian", "\0\0\0001"sv),
        rejected("UTF32LittleEndianMarked", "\xFF\xFE\0\0"
                                            "1\0\0\0"sv),
        illFormed("ContinuationAlone", "\x80"),
        illFormed("LastContinuationAlone", "\xBF"),
        illFormed("TwoContinuations", "\x80\xBF"),
        illFormed("FirstOfTwoAlone", "\xC3"),
        illFormed("FirstOfThreeAlone", "\xE2"),
        illFormed("TwoOfThree", "\xE2\x82"),
        illFormed("FirstOfFourAlone", "\xF0"),
        illFormed("TwoOfFour", "\xF0\x9F"),
        illFormed("ThreeOfFour", "\xF0\x9F\x98"),
        illFormed("OverlongSlash", "\xC0\xAF"),
        illFormed("OverlongNull", "\xC0\x80"),
        illFormed("OverlongDelete", "\xC1\xBF"),
        illFormed("OverlongOfThree", "\xE0\x80\x80"),
        illFormed("LastOverlongOfThree", "\xE0\x9F\xBF"),
        illFormed("OverlongOfFour", "\xF0\x80\x80\x80"),
        illFormed("LastOverlongOfFour", "\xF0\x8F\xBF\xBF"),
        illFormed("FirstSurrogate", "\xED\xA0\x80"),
        illFormed("LastSurrogate", "\xED\xBF\xBF"),
        illFormed("SurrogatePair", "\xED\xA0\xBD\xED\xB8\x80"),
        illFormed("AboveTheLast", "\xF4\x90\x80\x80"),
        illFormed("FarAboveTheLast", "\xF5\x80\x80\x80"),
        illFormed("FiveBytes", "\xF8\x88\x80\x80\x80"),
        illFormed("SixBytes", "\xFC\x84\x80\x80\x80\x80"),
        illFormed("ByteFE", "\xFE"),
        illFormed("ByteFF", "\xFF"),
        illFormed("Latin1", "caf\xE9"),
        illFormed("AfterManyLetters", repeated("x", 1000) + "\x80"),
        illFormed("AfterALetterOfThree", "\xE2\x82\xAC\x80"),
        rejected("IllFormedAtTheEnd", "\"\xC3\""),
        rejected("IllFormedWithoutAnEnd", "\"\xF0\x9F"),
        rejected("IllFormedName", "{\"\xFF\":1}"),
        rejected("IllFormedOutside", "\xFF"),
        rejected("IllFormedAfterTheValue", "1\x80"),
        rejected("IllFormedBetweenValues", "[1,\xC3,2]"),
        rejected("LetterOfTwoBytesOutside", "\xC3\xA9"),
        rejected("EmojiOutside", "\xF0\x9F\x98\x80"),
        accepted("EveryLengthOfUTF8", "\"a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z\"", "aé€😀z"),
    };
}

std::vector<JSONText> depthTexts() {
    return {
        accepted("ArraysAtTheLimit", repeated("[", 512) + repeated("]", 512)).alone(),
        accepted("ArraysBelowTheLimit", repeated("[", 511) + "1" + repeated("]", 511)),
        leftOpen("ArraysAboveTheLimit", repeated("[", 513) + repeated("]", 513), Outcome::tooDeep),
        leftOpen("ArraysFarAboveTheLimit", repeated("[", 100000) + repeated("]", 100000), Outcome::tooDeep),
        accepted("ObjectsAtTheLimit", repeated("{\"a\":", 511) + "{}" + repeated("}", 511)).alone(),
        leftOpen("ObjectsAboveTheLimit", repeated("{\"a\":", 512) + "{}" + repeated("}", 512),
                 Outcome::tooDeep),
        accepted("BothAtTheLimit", repeated("[{\"a\":", 256) + "1" + repeated("}]", 256)).alone(),
        leftOpen("BothAboveTheLimit", repeated("[{\"a\":", 256) + "[]" + repeated("}]", 256),
                 Outcome::tooDeep),
        accepted("ManyBesideOneAnother", "[" + repeated("[],", 2000) + "[]]"),
        accepted("DeepTwice", "[" + repeated("[", 510) + repeated("]", 510) + "," + repeated("[", 510) +
                                  repeated("]", 510) + "]"),
        rejected("DeepWithoutAnEnd", repeated("[", 500)),
        rejected("DeepObjectsWithoutAnEnd", repeated("{\"a\":", 500)),
        rejected("DeepWithOneEndTooFew", repeated("[", 300) + repeated("]", 299)),
        rejected("DeepWithOneEndTooMany", repeated("[", 300) + repeated("]", 301)),
    };
}

} // namespace vorlan::tests
