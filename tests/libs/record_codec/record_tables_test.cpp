/**
 * @file record_tables_test.cpp
 * The byte layout of every record, written down a second time: other processes hold the same bytes.
 */
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "record_codec/record_schema.h"

namespace {

using record_codec::Field;
using record_codec::FieldKind;
using record_codec::Record;

constexpr FieldKind kInt = FieldKind::kInt32;
constexpr FieldKind kUnsigned = FieldKind::kUint32;
constexpr FieldKind kText = FieldKind::kText;
constexpr FieldKind kArray = FieldKind::kInt32Array;

struct ExpectedField {
    const char *name;
    uint32_t offset;
    uint32_t size;
    FieldKind kind;
};

struct ExpectedRecord {
    const char *name;
    uint32_t size;
    std::vector<ExpectedField> fields;
};

const ExpectedRecord kExpected[] = {
    {"DeviceCapabilitySet",
     64,
     {{"VideoOutputChannelNum", 24, 4, kInt}, {"AudioOutputNum", 36, 4, kInt}}},
    {"VideoDecodeCapabilitySet", 280, {{"MaxCache", 276, 4, kInt}}},
    {"StreamingInputCapabilitySet", 28, {{"StreamingInputNum", 20, 4, kInt}}},
    {"VideoOutputCapabilitySet",
     768,
     {{"SupportedVideoInputChannelList", 0, 256, kText},
      {"SupportedInputStreamingIndexList", 256, 256, kText}}},
    {"AudioOutputCapabilitySet",
     1024,
     {{"bound_list", 0, 256, kText},
      {"if_name_list", 256, 256, kText},
      {"index_list", 512, 256, kText},
      {"banyin_list", 768, 256, kText}}},
    {"VideoOutputInterface",
     2612,
     {{"if_name", 0, 64, kText},
      {"Timing", 208, 2112, kText},
      {"OSDMaxX", 2320, 4, kUnsigned},
      {"OSDMaxY", 2324, 4, kUnsigned},
      {"SplitParamNum", 2336, 4, kInt},
      {"ScreenSplitMode", 2340, 256, kText},
      {"DisplaySupported", 2596, 4, kInt},
      {"WatermarkSupported", 2600, 4, kInt},
      {"OSDSupported", 2604, 4, kInt},
      {"OSDNumPerChannel", 2608, 4, kInt}}},
    {"VideoOutputInterfaceParameter",
     500,
     {{"if_name", 0, 64, kText},
      {"Timing", 64, 64, kText},
      {"TimingCustom", 320, 4, kInt},
      {"Width", 324, 4, kInt},
      {"Height", 328, 4, kInt},
      {"FrameRate", 332, 4, kInt},
      {"PictureLevel", 348, 16, kArray},
      {"AudioInterface", 364, 64, kText},
      {"ScreenSplitMode", 428, 64, kText},
      {"UserSplitIndex", 492, 4, kInt},
      {"Enable", 496, 4, kInt}}},
    {"VideoOutputScreenSplitParameter",
     2120,
     {{"if_name", 0, 64, kText},
      {"Index", 64, 4, kInt},
      {"WindowNum", 68, 4, kInt},
      {"SplitString", 72, 2048, kText}}},
    {"VideoOutputDisplayParameter",
     212,
     {{"BackgroundColor", 8, 64, kText},
      {"VideoBorderColor", 72, 64, kText},
      {"BorderWidth", 136, 4, kInt},
      {"AudioBorderColor", 140, 64, kText},
      {"cache", 204, 4, kInt},
      {"playmode", 208, 4, kUnsigned}}},
    {"VideoOutputSourceParameter",
     16,
     {{"Channel", 0, 4, kInt},
      {"index", 4, 4, kInt},
      {"type", 8, 4, kInt},
      {"cache", 12, 4, kInt}}},
    {"VideoOutSourceChange",
     76,
     {{"Channel", 0, 4, kInt},
      {"if_name", 4, 64, kText},
      {"index", 68, 4, kInt},
      {"type", 72, 4, kInt}}},
    {"AudioOutSourceChange",
     76,
     {{"Channel", 0, 4, kInt},
      {"if_name", 4, 64, kText},
      {"index", 68, 4, kInt},
      {"type", 72, 4, kInt}}},
    {"AudioOutputParameter",
     76,
     {{"Channel", 0, 4, kInt},
      {"if_name", 4, 64, kText},
      {"index", 68, 4, kInt},
      {"type", 72, 4, kInt}}},
    {"VideoOutputOSDParameter",
     568,
     {{"Channel", 0, 4, kInt},
      {"Index", 4, 4, kInt},
      {"type", 8, 4, kInt},
      {"visible", 12, 4, kInt},
      {"font", 16, 4, kInt},
      {"size", 20, 4, kInt},
      {"bold", 24, 4, kInt},
      {"stroke", 28, 4, kInt},
      {"forecolor", 32, 64, kText},
      {"forealpha", 96, 4, kInt},
      {"backcolor", 100, 64, kText},
      {"backalpha", 164, 4, kInt},
      {"corner", 168, 4, kInt},
      {"x", 172, 4, kUnsigned},
      {"y", 176, 4, kUnsigned},
      {"scale", 180, 4, kInt},
      {"content", 184, 256, kText},
      {"head", 440, 64, kText},
      {"tail", 504, 64, kText}}},
    {"WatermarkOSDParameter",
     1036,
     {{"if_name", 0, 64, kText},
      {"visible", 64, 4, kInt},
      {"font", 68, 4, kInt},
      {"size", 72, 4, kInt},
      {"bold", 76, 4, kInt},
      {"stroke", 80, 4, kInt},
      {"forecolor", 84, 64, kText},
      {"forealpha", 148, 4, kInt},
      {"backcolor", 152, 64, kText},
      {"backalpha", 216, 4, kInt},
      {"x", 224, 4, kInt},
      {"y", 228, 4, kInt},
      {"contet", 236, 256, kText},
      {"type1", 492, 4, kInt},
      {"text1", 496, 256, kText},
      {"type2", 752, 4, kInt},
      {"text2", 756, 256, kText},
      {"angle", 1012, 4, kInt},
      {"arrangement_mode", 1016, 4, kInt},
      {"en", 1020, 4, kInt},
      {"step", 1024, 4, kInt},
      {"speed", 1028, 4, kInt},
      {"direction", 1032, 4, kInt}}},
    {"WatermarkPictureParameter",
     380,
     {{"if_name", 0, 64, kText},
      {"visible", 64, 4, kInt},
      {"x", 72, 4, kInt},
      {"y", 76, 4, kInt},
      {"w", 84, 4, kInt},
      {"h", 88, 4, kInt},
      {"file", 92, 256, kText},
      {"alpha", 348, 4, kInt},
      {"sizemode", 352, 4, kInt},
      {"angle", 356, 4, kInt},
      {"arramode", 360, 4, kInt},
      {"en", 364, 4, kInt},
      {"step", 368, 4, kInt},
      {"speed", 372, 4, kInt},
      {"direction", 376, 4, kInt}}},
    {"WatermarkDotmatrixParameter",
     408,
     {{"if_name", 0, 64, kText},
      {"visible", 64, 4, kInt},
      {"color", 68, 64, kText},
      {"alpha", 132, 4, kInt},
      {"en", 136, 4, kInt},
      {"step", 140, 4, kInt},
      {"speed", 144, 4, kInt},
      {"direction", 148, 4, kInt},
      {"text", 152, 256, kText}}},
    {"StreamingInputParameter",
     356,
     {{"index", 0, 4, kInt}, {"url", 4, 256, kText}, {"name", 260, 64, kText}}},
    {"StreamingInputStatusChange",
     332,
     {{"index", 0, 4, kInt},
      {"url", 4, 256, kText},
      {"name", 260, 64, kText},
      {"status", 324, 4, kInt},
      {"status2", 328, 4, kInt}}},
};

TEST(RecordTables, EveryRecordTypeHasItsTable) {
    size_t count = 0;
    const Record *records = record_codec::all_records(&count);
    ASSERT_EQ(count, std::size(kExpected));
    for (size_t i = 0; i < count; ++i) {
        EXPECT_EQ(record_codec::find_record(records[i].name), &records[i]) << records[i].name;
        EXPECT_STRNE(records[i].meaning, "") << records[i].name;
    }
}

TEST(RecordTables, EveryRecordHasItsSizeAndFields) {
    for (const ExpectedRecord &expected : kExpected) {
        SCOPED_TRACE(expected.name);
        const Record *record = record_codec::find_record(expected.name);
        ASSERT_NE(record, nullptr);
        EXPECT_EQ(record->size, expected.size);
        EXPECT_EQ(record->field_count, expected.fields.size());
    }
}

TEST(RecordTables, EveryFieldHasItsPlaceAndKind) {
    for (const ExpectedRecord &expected : kExpected) {
        const Record *record = record_codec::find_record(expected.name);
        ASSERT_NE(record, nullptr) << expected.name;
        for (const ExpectedField &row : expected.fields) {
            SCOPED_TRACE(std::string(expected.name) + "." + row.name);
            const Field *field = record_codec::find_field(*record, row.name);
            ASSERT_NE(field, nullptr);
            EXPECT_EQ(field->offset, row.offset);
            EXPECT_EQ(field->size, row.size);
            EXPECT_EQ(field->kind, row.kind);
        }
    }
}

TEST(RecordTables, FieldsAreDescribedForPeople) {
    size_t count = 0;
    const Record *records = record_codec::all_records(&count);
    for (size_t i = 0; i < count; ++i) {
        for (size_t k = 0; k < records[i].field_count; ++k) {
            const Field &field = records[i].fields[k];
            SCOPED_TRACE(std::string(records[i].name) + "." + field.name);
            EXPECT_STRNE(field.range, "");
            EXPECT_STRNE(field.readers, "");
            EXPECT_STRNE(field.meaning, "");
        }
    }
}

TEST(RecordTables, TheStructuresAgreeWithTheFormat) {
    EXPECT_EQ(sizeof(VideoOutputInterface), 2612u);
    EXPECT_EQ(offsetof(VideoOutputInterface, SplitParamNum), 2336u);
    EXPECT_EQ(sizeof(VideoOutputInterfaceParameter::PictureLevel), 16u);
    EXPECT_EQ(offsetof(WatermarkOSDParameter, contet), 236u);
    EXPECT_EQ(offsetof(StreamingInputStatusChange, status2), 328u);
}

TEST(RecordTables, UnknownNamesAreNotFound) {
    for (const char *name :
         {"", "WatermarkOSD", "watermarkosdparameter", "WatermarkOSDParameter "}) {
        EXPECT_EQ(record_codec::find_record(name), nullptr) << name;
    }
    const Record *record = record_codec::find_record("WatermarkOSDParameter");
    ASSERT_NE(record, nullptr);
    for (const char *name : {"", "content", "Font", "reserved_220", "fon"}) {
        EXPECT_EQ(record_codec::find_field(*record, name), nullptr) << name;
    }
}

}  // namespace
