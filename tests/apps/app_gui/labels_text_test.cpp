#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "label_paint.h"
#include "record_text.h"
#include "watermark_text.h"

namespace {

const TextMeasure kTenByTwenty = {10, 20, 24};

TEST(WatermarkText, TheWrapWidthDependsOnTheArrangement) {
    const QRect cell(0, 0, 1001, 10);
    EXPECT_EQ(wrap_width(cell, 0), 500);
    EXPECT_EQ(wrap_width(cell, 1), 500);
    EXPECT_EQ(wrap_width(cell, 2), 500);
    EXPECT_EQ(wrap_width(cell, 3), 750);
    EXPECT_EQ(wrap_width(cell, 4), 667);
    EXPECT_EQ(wrap_width(cell, 5), 500);
    EXPECT_EQ(wrap_width(QRect(0, 0, 0, 10), 3), 0);
}

TEST(WatermarkText, ATextThatFitsStaysWhole) {
    EXPECT_EQ(wrapped_once("abcdef", 60, 70, kTenByTwenty), "abcdef") << "60 + 10 is not above 70";
    EXPECT_EQ(wrapped_at_blanks("a b c", 60, 70, kTenByTwenty), "a b c");
}

TEST(WatermarkText, ATextThatDoesNotFitBreaksOnceWhereLatinLettersFill) {
    EXPECT_EQ(wrapped_once("abcdef", 60, 69, kTenByTwenty), "abcdef\n");
    EXPECT_EQ(wrapped_once("abcdef", 60, 45, kTenByTwenty), "abcd\nef");
    EXPECT_EQ(wrapped_once("abcdefghijklmn", 140, 45, kTenByTwenty), "abcd\nefghijklmn");
    EXPECT_EQ(wrapped_once("abc", 30, 5, kTenByTwenty), "\nabc");
}

TEST(WatermarkText, AWideTextOfFewCharactersIsFilledUpWithBlanksToTheBreak) {
    EXPECT_EQ(wrapped_once(QString::fromUtf8("\u4e2d\u6587"), 40, 45, kTenByTwenty),
              QString::fromUtf8("\u4e2d\u6587  \n"));
}

TEST(WatermarkText, AFontWithoutLettersDoesNotDivideByZero) {
    EXPECT_EQ(wrapped_once("abc", 30, 2, TextMeasure{0, 0, 0}), "ab\nc");
}

TEST(WatermarkText, ADateThatDoesNotFitBreaksAtEachBlank) {
    EXPECT_EQ(wrapped_at_blanks("2024-06-11 12:30:00 Tue", 230, 200, kTenByTwenty),
              "2024-06-11\n12:30:00\nTue");
}

TEST(WatermarkText, PartsStandOnLinesOfTheirOwn) {
    EXPECT_EQ(joined_lines("one", "two", "three"), "one\ntwo\nthree");
    EXPECT_EQ(joined_lines("", "two", "three"), "two\nthree");
    EXPECT_EQ(joined_lines("one", "", "three"), "one\nthree");
    EXPECT_EQ(joined_lines("one", "two", ""), "one\ntwo");
    EXPECT_EQ(joined_lines("", "", "three"), "three");
    EXPECT_EQ(joined_lines("", "", ""), "");
}

TEST(WatermarkText, MeasuringBreaksAfterTheCharacterThatPassesTheLimit) {
    const MeasuredText text = wrapped_by_measure("abcdefg", "abcdefg", 25, kTenByTwenty);
    // 10, 20, 30: a break after "c"; again 10, 20, 30; the second place counts in the first text.
    EXPECT_EQ(text.text, "abc\nde\nfg");
    EXPECT_EQ(text.lines, 3);
    EXPECT_FALSE(text.wide);
}

TEST(WatermarkText, IdeographsCountTheirOwnWidth) {
    const QString text = QString::fromUtf8("\u4e00\u9fff\u4e2d");
    const MeasuredText wrapped = wrapped_by_measure(text, text, 30, kTenByTwenty);
    EXPECT_EQ(wrapped.text, QString::fromUtf8("\u4e00\u9fff\n\u4e2d"));
    EXPECT_EQ(wrapped.lines, 2);
    EXPECT_TRUE(wrapped.wide);
}

TEST(WatermarkText, OtherCharactersCountWhatTheOneBeforeDid) {
    // Cyrillic after Latin counts 10, after an ideograph 20, at the start nothing.
    const QString narrow = QString::fromUtf8("a\u0416\u0416");
    EXPECT_EQ(wrapped_by_measure(narrow, narrow, 25, kTenByTwenty).text,
              QString::fromUtf8("a\u0416\u0416\n"));
    const QString wide = QString::fromUtf8("\u4e2d\u0416\u0416");
    EXPECT_EQ(wrapped_by_measure(wide, wide, 35, kTenByTwenty).text,
              QString::fromUtf8("\u4e2d\u0416\n\u0416"));
    const QString first = QString::fromUtf8("\u0416\u0416\u0416");
    EXPECT_EQ(wrapped_by_measure(first, first, 1, kTenByTwenty).text, first);
    // The neighbours of the two ranges are outside them.
    EXPECT_FALSE(
        wrapped_by_measure(QString(QChar(0x4dff)), QString(QChar(0x4dff)), 9, kTenByTwenty).wide);
    EXPECT_FALSE(
        wrapped_by_measure(QString(QChar(0xa000)), QString(QChar(0xa000)), 9, kTenByTwenty).wide);
    const QString control = QString("a") + QChar(127) + QChar(31);
    EXPECT_EQ(wrapped_by_measure(control, control, 20, kTenByTwenty).lines, 2);
}

TEST(WatermarkText, PlacesAreCountedWithinTheContetAlsoBehindAFirstSlot) {
    const MeasuredText text = wrapped_by_measure("first\nabcd", "abcd", 25, kTenByTwenty);
    EXPECT_EQ(text.text, "fir\nst\nabcd");
    EXPECT_EQ(text.lines, 3);
}

TEST(WatermarkText, ATurnedLabelIsAsHighAsItsTurnedBox) {
    EXPECT_EQ(turned_height({200, 50}, 90), 200);
    EXPECT_EQ(turned_height({200, 50}, -90), 200);
    EXPECT_EQ(turned_height({200, 50}, 270), 200);
    EXPECT_EQ(turned_height({200, 50}, 450), 200);
    EXPECT_EQ(turned_height({200, 50}, 180), 50);
    EXPECT_EQ(turned_height({200, 50}, 30), int(100 + 50 * std::sqrt(3) / 2));
    EXPECT_GE(turned_height({200, 50}, INT_MIN), 50);
    EXPECT_GE(turned_height({200, 50}, INT_MAX), 50);
}

TEST(RecordText, AFieldEndsAtItsNulOrWithItsArray) {
    char field[4] = {'a', 'b', '\0', 'c'};
    EXPECT_EQ(record_text(field), "ab");
    field[2] = 'x';
    EXPECT_EQ(record_text(field), "abxc");
    EXPECT_EQ(record_bytes(field), "abxc");
}

TEST(RecordText, BytesThatAreNoUtf8BecomeReplacementCharacters) {
    const char field[] = "a\xff\xc3";
    EXPECT_EQ(record_text(field), QString("a") + QChar(0xfffd) + QChar(0xfffd));
}

TEST(RecordColor, NamesAreReadAndAlphasCut) {
    EXPECT_EQ(record_color("#FF8001", 128), QColor(255, 128, 1, 128));
    EXPECT_EQ(record_color("red", 7), QColor(255, 0, 0, 7));
    EXPECT_EQ(record_color("#00ff00", -5).alpha(), 0);
    EXPECT_EQ(record_color("#00ff00", INT_MAX).alpha(), 255);
}

TEST(RecordColor, WhatIsNoColourIsBlack) {
    for (const char *name : {"", "#12", "nonsense", "\xff\xfe"}) {
        EXPECT_EQ(record_color(name, 90).rgba(), qRgba(0, 0, 0, 90)) << name;
    }
}

}  // namespace
