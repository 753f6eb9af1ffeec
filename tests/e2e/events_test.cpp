// The sockets besides the command socket: keepalive surveys and published events.

#include <nanomsg/nn.h>
#include <nanomsg/pubsub.h>

#include "device_test.h"

using namespace e2e;

namespace {

class Events : public SharedDevice {};

TEST_F(Events, KeepaliveSurveysAreAnswered) {
    const auto reply = device->survey();
    ASSERT_TRUE(reply);
    const json answer = json::parse(reply->c_str());
    EXPECT_EQ(answer["result"]["process"], "app_gui");
    EXPECT_EQ(answer["result"]["pid"].is_number_integer(), true);
}

TEST_F(Events, OfTheStreamingProcessReachTheStore) {
    ASSERT_TRUE(device->publishStream(notification(
        "SetStreamingInputStatusChange",
        {{"records", {{{"index", 5}, {"url", "rtsp://camera/5"}, {"name", "Gate"}}}}})));
    // An event is not answered; that it was taken shows in the same one being refused as a command
    // only when its number is wrong.
    EXPECT_EQ(errorCode(*device, "SetStreamingInputStatusChange", {{"records", {{{"index", 64}}}}}),
              -2);
    EXPECT_EQ(result(*device, "SetStreamingInputStatusChange",
                     {{"records", {{{"index", 5}, {"url", "rtsp://camera/5"}, {"name", "Gate"}}}}}),
              0);
}

TEST(PublisherRestarts, AreHeardEachTime) {
    vdevice::Device device;
    start(device, sampleDevice());
    const auto borderWidth = [&] {
        return result(device, "GetVideoOutputDisplayParameter")[0]["BorderWidth"].get<int>();
    };
    const auto event = [](int width) {
        return notification("SetVideoOutputDisplayParameter",
                            {{"records", {{{"BorderWidth", width}}}}});
    };
    for (int width = 11; width <= 14; ++width) {
        // A publisher that ends right after a burst can leave the subscriber unconnected for good.
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(device.publishCodec(event(5), vdevice::Milliseconds(10000)));
        }
        device.restartCodec();
        const auto heard = [&] {
            return device.publishCodec(event(width), vdevice::Milliseconds(100)) &&
                   borderWidth() == width;
        };
        EXPECT_TRUE(vdevice::wait_until(heard, vdevice::Milliseconds(10000))) << width;
    }
}

}  // namespace
