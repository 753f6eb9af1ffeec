#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "record_codec/record_json.h"

namespace {

using record_codec::OrderedJson;
using record_codec::Record;
using record_codec::Span;

const Record &record_named(const char *name) {
    const Record *record = record_codec::find_record(name);
    if (!record) throw std::runtime_error(name);
    return *record;
}

std::vector<std::pair<uint32_t, uint32_t>> reserved_spans(const char *name) {
    const Record &record = record_named(name);
    std::vector<std::pair<uint32_t, uint32_t>> spans;
    Span span{};
    for (uint32_t at = 0; record_codec::next_reserved_span(record, at, &span);
         at = span.offset + span.size) {
        spans.emplace_back(span.offset, span.size);
    }
    return spans;
}

TEST(ReservedSpans, AreTheBytesThatNoFieldNames) {
    using Spans = std::vector<std::pair<uint32_t, uint32_t>>;
    const std::pair<const char *, Spans> cases[] = {
        {"DeviceCapabilitySet", {{0, 24}, {28, 8}, {40, 24}}},
        {"VideoDecodeCapabilitySet", {{0, 276}}},
        {"StreamingInputCapabilitySet", {{0, 20}, {24, 4}}},
        {"VideoOutputCapabilitySet", {{512, 256}}},
        {"AudioOutputCapabilitySet", {}},
        {"VideoOutputInterface", {{64, 144}, {2328, 8}}},
        {"VideoOutputInterfaceParameter", {{128, 192}, {336, 12}}},
        {"VideoOutputScreenSplitParameter", {}},
        {"VideoOutputDisplayParameter", {{0, 8}}},
        {"VideoOutputSourceParameter", {}},
        {"VideoOutSourceChange", {}},
        {"AudioOutSourceChange", {}},
        {"AudioOutputParameter", {}},
        {"VideoOutputOSDParameter", {}},
        {"WatermarkOSDParameter", {{220, 4}, {232, 4}}},
        {"WatermarkPictureParameter", {{68, 4}, {80, 4}}},
        {"WatermarkDotmatrixParameter", {}},
        {"StreamingInputParameter", {{324, 32}}},
        {"StreamingInputStatusChange", {}},
    };
    for (const auto &[name, spans] : cases) {
        EXPECT_EQ(reserved_spans(name), spans) << name;
    }
}

TEST(ReservedSpans, BeginAtTheOffsetAskedForWhenItLiesInsideOne) {
    const Record &record = record_named("VideoOutputInterface");
    const struct {
        uint32_t from, offset, size;
    } cases[] = {
        {0, 64, 144},  {63, 64, 144},  {64, 64, 144},   {70, 70, 138},
        {207, 207, 1}, {208, 2328, 8}, {2335, 2335, 1},
    };
    for (const auto &row : cases) {
        Span span{};
        ASSERT_TRUE(record_codec::next_reserved_span(record, row.from, &span)) << row.from;
        EXPECT_EQ(span.offset, row.offset) << row.from;
        EXPECT_EQ(span.size, row.size) << row.from;
    }
}

TEST(ReservedSpans, EndWithTheRecord) {
    const Record &record = record_named("VideoOutputInterface");
    for (const uint32_t from : {2336u, 2611u, 2612u, 5000u, UINT32_MAX}) {
        Span span{7, 9};
        EXPECT_FALSE(record_codec::next_reserved_span(record, from, &span)) << from;
        EXPECT_EQ(span.offset, 7u);
        EXPECT_EQ(span.size, 9u);
    }
}

TEST(RecordJsonSchema, DescribesEveryFieldAndNothingElse) {
    size_t count = 0;
    const Record *records = record_codec::all_records(&count);
    for (size_t i = 0; i < count; ++i) {
        SCOPED_TRACE(records[i].name);
        const OrderedJson schema = record_codec::record_json_schema(records[i]);
        EXPECT_EQ(schema["title"], records[i].name);
        EXPECT_EQ(schema["type"], "object");
        EXPECT_EQ(schema["additionalProperties"], false);
        EXPECT_EQ(schema["properties"].size(),
                  records[i].field_count + reserved_spans(records[i].name).size());
        for (size_t k = 0; k < records[i].field_count; ++k) {
            EXPECT_TRUE(schema["properties"].contains(records[i].fields[k].name));
        }
    }
}

TEST(RecordJsonSchema, StatesTheLimitsOfEachKind) {
    const OrderedJson schema =
        record_codec::record_json_schema(record_named("VideoOutputInterfaceParameter"));
    const OrderedJson &fields = schema["properties"];
    EXPECT_EQ(fields["Width"]["type"], "integer");
    EXPECT_EQ(fields["Width"]["minimum"], -2147483648LL);
    EXPECT_EQ(fields["Width"]["maximum"], 2147483647LL);
    EXPECT_EQ(fields["Timing"]["type"], "string");
    EXPECT_EQ(fields["Timing"]["maxLength"], 63);
    EXPECT_EQ(fields["PictureLevel"]["minItems"], 4);
    EXPECT_EQ(fields["PictureLevel"]["maxItems"], 4);
    EXPECT_EQ(fields["reserved_336"]["maxLength"], 24);

    const OrderedJson osd =
        record_codec::record_json_schema(record_named("VideoOutputOSDParameter"));
    EXPECT_EQ(osd["properties"]["x"]["minimum"], 0);
    EXPECT_EQ(osd["properties"]["x"]["maximum"], 4294967295LL);
}

TEST(RecordJsonSchema, StatesADefaultOnlyWhereItIsAValue) {
    const auto property = [](const char *record, const char *field) {
        return record_codec::record_json_schema(record_named(record))["properties"][field];
    };
    EXPECT_EQ(property("VideoOutputInterfaceParameter", "Timing")["default"], "1920x1080P@60");
    EXPECT_EQ(property("VideoOutputInterfaceParameter", "UserSplitIndex")["default"], -1);
    EXPECT_EQ(property("VideoOutputInterfaceParameter", "PictureLevel")["default"],
              OrderedJson({128, 128, 128, 128}));
    EXPECT_EQ(property("WatermarkOSDParameter", "contet")["default"], "");
    EXPECT_FALSE(property("WatermarkOSDParameter", "if_name").contains("default"));
    EXPECT_FALSE(property("VideoOutputOSDParameter", "Index").contains("default"));
    EXPECT_FALSE(property("VideoOutputOSDParameter", "y").contains("default"));
    EXPECT_FALSE(property("VideoOutputOSDParameter", "content").contains("default"));
    EXPECT_FALSE(property("StreamingInputStatusChange", "name").contains("default"));
}

}  // namespace
