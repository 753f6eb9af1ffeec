/**
 * @file record_round_trip_test.cpp
 * Every record type through its own exported functions: what is written is read back, byte by byte.
 */
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "random_record.h"
#include "record_codec/record_codec.h"
#include "record_codec/record_json.h"
#include "temporary_folder.h"

namespace {

template <typename X>
struct Codec;

#define CODEC(X, bytes)                                    \
    template <>                                            \
    struct Codec<X> {                                      \
        static constexpr const char *kName = #X;           \
        static constexpr size_t kBytes = bytes;            \
        static constexpr auto kRead = f2s_##X;             \
        static constexpr auto kReadArray = f2s_array_##X;  \
        static constexpr auto kWriteArray = s2f_array_##X; \
    };
RECORD_CODEC_RECORDS(CODEC)
#undef CODEC

using AllRecords =
    ::testing::Types<DeviceCapabilitySet, VideoDecodeCapabilitySet, StreamingInputCapabilitySet,
                     VideoOutputCapabilitySet, AudioOutputCapabilitySet, VideoOutputInterface,
                     VideoOutputInterfaceParameter, VideoOutputScreenSplitParameter,
                     VideoOutputDisplayParameter, VideoOutputSourceParameter, VideoOutSourceChange,
                     AudioOutSourceChange, AudioOutputParameter, VideoOutputOSDParameter,
                     WatermarkOSDParameter, WatermarkPictureParameter, WatermarkDotmatrixParameter,
                     StreamingInputParameter, StreamingInputStatusChange>;

template <typename X>
class RecordRoundTrip : public ::testing::Test {
protected:
    const record_codec::Record &record() const {
        return *record_codec::find_record(Codec<X>::kName);
    }
    std::vector<X> random_records(size_t count) {
        std::vector<X> records(count);
        for (X &one : records) {
            fill_with_random(random_, record(), &one);
        }
        return records;
    }

    TemporaryFolder folder_;
    Random random_{20240229};
};

struct RecordName {
    template <typename X>
    static std::string GetName(int) {
        return Codec<X>::kName;
    }
};
TYPED_TEST_SUITE(RecordRoundTrip, AllRecords, RecordName);

TYPED_TEST(RecordRoundTrip, AnArrayIsReadBackByteByByte) {
    const std::string path = this->folder_.path("array.json");
    for (const unsigned written : {0u, 1u, 2u, 64u}) {
        SCOPED_TRACE(written);
        const std::vector<TypeParam> records = this->random_records(written);
        ASSERT_EQ(Codec<TypeParam>::kWriteArray(path.c_str(), records.data(), written), 0);

        std::vector<TypeParam> back(70);
        unsigned count = 70;
        ASSERT_EQ(Codec<TypeParam>::kReadArray(path.c_str(), back.data(), &count), 0);
        ASSERT_EQ(count, written);
        const auto *bytes = reinterpret_cast<const char *>(records.data());
        EXPECT_TRUE(std::equal(bytes, bytes + written * Codec<TypeParam>::kBytes,
                               reinterpret_cast<const char *>(back.data())));
    }
}

TYPED_TEST(RecordRoundTrip, AnObjectIsReadBackByteByByte) {
    for (int round = 0; round < 20; ++round) {
        const std::vector<TypeParam> records = this->random_records(1);
        std::string text;
        record_codec::append_record(text, this->record(), records.data(), round % 2 ? "" : nullptr);
        const std::string path = this->folder_.write("object.json", text);

        TypeParam back;
        std::memset(&back, 0x5A, sizeof back);
        ASSERT_EQ(Codec<TypeParam>::kRead(path.c_str(), &back), 0);
        EXPECT_EQ(std::memcmp(&back, records.data(), sizeof back), 0);
    }
}

TYPED_TEST(RecordRoundTrip, AnEmptyObjectIsAZeroRecord) {
    const std::string path = this->folder_.write("empty.json", "{}");
    TypeParam back;
    std::memset(&back, 0x5A, sizeof back);
    ASSERT_EQ(Codec<TypeParam>::kRead(path.c_str(), &back), 0);
    const TypeParam zero{};
    EXPECT_EQ(std::memcmp(&back, &zero, sizeof back), 0);
}

TYPED_TEST(RecordRoundTrip, AMissingFileLeavesTheOutputAlone) {
    const std::string path = this->folder_.path("missing.json");
    TypeParam one;
    std::memset(&one, 0x5A, sizeof one);
    const TypeParam before = one;
    unsigned count = 1;
    EXPECT_EQ(Codec<TypeParam>::kRead(path.c_str(), &one), -7);
    EXPECT_EQ(Codec<TypeParam>::kReadArray(path.c_str(), &one, &count), -7);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(std::memcmp(&one, &before, sizeof one), 0);
}

TYPED_TEST(RecordRoundTrip, NullArgumentsAreRefused) {
    const std::string path = this->folder_.write("array.json", "[]");
    TypeParam one{};
    unsigned count = 1;
    EXPECT_EQ(Codec<TypeParam>::kRead(nullptr, &one), -2);
    EXPECT_EQ(Codec<TypeParam>::kRead(path.c_str(), nullptr), -2);
    EXPECT_EQ(Codec<TypeParam>::kReadArray(nullptr, &one, &count), -2);
    EXPECT_EQ(Codec<TypeParam>::kReadArray(path.c_str(), nullptr, &count), -2);
    EXPECT_EQ(Codec<TypeParam>::kReadArray(path.c_str(), &one, nullptr), -2);
    EXPECT_EQ(Codec<TypeParam>::kWriteArray(nullptr, &one, 1), -2);
    EXPECT_EQ(Codec<TypeParam>::kWriteArray(path.c_str(), nullptr, 1), -2);
    EXPECT_EQ(this->folder_.read("array.json"), "[]");
    EXPECT_EQ(Codec<TypeParam>::kWriteArray(path.c_str(), nullptr, 0), 0);
}

}  // namespace
