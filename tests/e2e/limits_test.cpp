// What is too large, too deep or too long is refused with the reason, and the device goes on.

#include <fstream>

#include "device_test.h"
#include "peers.h"
#include "record_codec/record_schema.h"

using namespace e2e;

namespace {

using vdevice::Milliseconds;

class Limits : public SharedDevice {
protected:
    static json answer(const std::string &message) {
        const auto reply = device->request(message);
        EXPECT_TRUE(reply) << "no reply";
        return reply ? json::parse(reply->c_str()) : json();
    }
    static int codeOf(const std::string &message) {
        return answer(message).value("error", json::object()).value("code", 0);
    }
};

TEST_F(Limits, OfAMessagesSizeAreKept) {
    const std::string request = R"({"jsonrpc":"2.0","id":1,"method":"Keepalive"})";
    const auto padded = [&](size_t size) {
        return request + std::string(size - request.size(), ' ');
    };
    EXPECT_TRUE(answer(padded(4u << 20)).contains("result"));
    EXPECT_EQ(codeOf(padded((4u << 20) + 1)), -32600);
    EXPECT_EQ(codeOf(padded((8u << 20) - 4)), -32600);  // a request's number comes before it
    // A larger one is not read at all; its sender is cut off, nobody else.
    vdevice::CommandClient greedy(device->commandAddress());
    EXPECT_FALSE(greedy.request(padded((8u << 20) + 1), Milliseconds(300)));
    expectServed(*device);
}

TEST_F(Limits, OfNestingAreKept) {
    const auto nested = [](size_t levels) {
        return R"({"jsonrpc":"2.0","id":1,"method":"Keepalive","extra":)" +
               std::string(levels - 1, '[') + std::string(levels - 1, ']') + "}";
    };
    EXPECT_TRUE(answer(nested(32)).contains("result"));
    EXPECT_EQ(codeOf(nested(33)), -32700);
    EXPECT_EQ(codeOf(nested(1000000)), -32700);
}

TEST_F(Limits, OfEveryTextAreItsFieldsSizeLessOne) {
    for (const char *name :
         {"WatermarkOSDParameter", "WatermarkPictureParameter", "WatermarkDotmatrixParameter"}) {
        const record_codec::Record *record = record_codec::find_record(name);
        ASSERT_NE(record, nullptr);
        for (size_t i = 0; i < record->field_count; ++i) {
            const record_codec::Field &field = record->fields[i];
            if (field.kind != record_codec::FieldKind::kText) continue;
            const auto set = [&](size_t length) {
                const json value = {{field.name, std::string(length, 'a')}};
                return codeOf(request(std::string("Set") + name,
                                      {{"if_name", "HDMI1"}, {"records", {value}}}));
            };
            EXPECT_EQ(set(field.size), -32602) << name << " " << field.name;
            EXPECT_NE(set(field.size - 1), -32602) << name << " " << field.name;
        }
    }
}

std::string bigEndian(uint32_t number) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(number >> shift & 0xff);
    }
    return bytes;
}

int occurrences(const std::string &text, const std::string &part) {
    int count = 0;
    for (size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

TEST(PictureLimits, AFewBytesThatClaimAHugePictureAreRefusedAndTheOldOneStays) {
    const std::string side = "60000 60000";
    const std::string huge[] = {
        "P6 " + side + " 255\n",
        std::string("GIF89a\x60\xEA\x60\xEA", 10),
        "BM" + std::string(16, '\0') + "\x60\xEA" + std::string(2, '\0') + "\x60\xEA" +
            std::string(2, '\0') + std::string("\1\0\x18\0", 4) + std::string(24, '\0'),
        "\x89PNG\r\n\x1a\n" + bigEndian(13) + "IHDR" + bigEndian(60000) + bigEndian(60000) +
            std::string("\x8\x6\0\0\0", 5) + bigEndian(0x80d27542),
        "",
    };
    vdevice::Device device;
    vdevice::DeviceOptions options = sampleDevice();
    const auto put = [](const vdevice::RootPaths &paths, const std::string &bytes) {
        std::ofstream(paths.tmp() + "/logo", std::ios::binary) << bytes;
    };
    options.prepare = [&](const vdevice::RootPaths &paths) {
        put(paths, "P6 2 1 255\n\xff" + std::string(5, '\0'));
    };
    start(device, options);
    const QImage before = device.settledLayer();
    EXPECT_EQ(
        result(device, "SetWatermarkPictureParameter",
               {{"if_name", "HDMI1"},
                {"records", {{{"file", "/tmp/logo"}, {"visible", 1}, {"x", 100}, {"y", 100}}}}}),
        0);
    ASSERT_TRUE(device.waitForPixels([&](const QImage &layer) { return layer != before; }));
    const QImage shown = device.settledLayer();
    int refused = 0;
    for (const std::string &bytes : huge) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        put(device.paths(), bytes);
        EXPECT_EQ(result(device, "UploadWatermarkPicture", {{"if_name", "HDMI1"}}), 0);
        EXPECT_EQ(device.settledLayer(), shown);
        EXPECT_EQ(++refused, occurrences(device.standardError(), "load /tmp/logo failed!\n"));
        ASSERT_TRUE(device.running());
    }
    put(device.paths(), "P6 1 2 255\n" + std::string(6, '\x7f'));
    EXPECT_EQ(result(device, "UploadWatermarkPicture", {{"if_name", "HDMI1"}}), 0);
    EXPECT_TRUE(device.waitForPixels([&](const QImage &layer) { return layer != shown; }));
}

}  // namespace
