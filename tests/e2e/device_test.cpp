#include "device_test.h"

#include <QPainter>
#include <fstream>
#include <sstream>

namespace e2e {

vdevice::DeviceOptions sampleDevice() {
    vdevice::DeviceOptions options;
    options.program = E2E_APP_GUI;
    options.shim = E2E_FBEMU;
    options.config = E2E_CONFIG;
#ifdef __SANITIZE_THREAD__
    // The shim answers for mmap(), which ThreadSanitizer calls before it can bear to be called.
    options.environment["LD_PRELOAD"] = "libtsan.so.2 " E2E_FBEMU;
#endif
    return options;
}

void start(vdevice::Device &device, const vdevice::DeviceOptions &options) {
    std::string error;
    ASSERT_TRUE(device.start(options, &error)) << error << "\n" << device.standardError();
}

std::string request(const std::string &method, const json &params) {
    return json{{"jsonrpc", "2.0"}, {"id", 1}, {"method", method}, {"params", params}}.dump();
}

std::string notification(const std::string &method, const json &params) {
    return json{{"jsonrpc", "2.0"}, {"method", method}, {"params", params}}.dump();
}

json call(vdevice::Device &device, const std::string &method, const json &params) {
    const auto reply = device.request(request(method, params));
    EXPECT_TRUE(reply) << method << " got no reply";
    return reply ? json::parse(reply->c_str()) : json();
}

json result(vdevice::Device &device, const std::string &method, const json &params) {
    const json reply = call(device, method, params);
    EXPECT_TRUE(reply.contains("result")) << method << ": " << reply.dump();
    return reply.value("result", json());
}

int errorCode(vdevice::Device &device, const std::string &method, const json &params) {
    const json reply = call(device, method, params);
    EXPECT_TRUE(reply.contains("error")) << method << ": " << reply.dump();
    return reply.contains("error") ? reply["error"]["code"].get<int>() : 0;
}

testing::AssertionResult shows(vdevice::Device &device, const QImage &expected) {
    QImage seen;
    const auto same = [&](const QImage &layer) { return layer == expected; };
    if (device.waitForPixels(same, vdevice::Milliseconds(5000), &seen)) {
        return testing::AssertionSuccess();
    }
    if (seen.size() != expected.size()) {
        return testing::AssertionFailure()
               << "the layer is " << seen.width() << " x " << seen.height();
    }
    for (int y = 0; y < seen.height(); ++y) {
        for (int x = 0; x < seen.width(); ++x) {
            if (seen.pixel(x, y) == expected.pixel(x, y)) continue;
            return testing::AssertionFailure()
                   << "pixel (" << x << ", " << y << ") is " << std::hex << seen.pixel(x, y)
                   << " in place of " << expected.pixel(x, y);
        }
    }
    return testing::AssertionFailure() << "the layer's format differs";
}

QImage emptyLayer(int width, int height) {
    QImage layer(width, height, QImage::Format_ARGB32);
    layer.fill(Qt::transparent);
    return layer;
}

void drawBorder(QImage &layer, const QRect &window, int width, const QColor &color) {
    if (width == 0) return;
    QPainter painter(&layer);
    painter.setPen(QPen(color, width));
    painter.drawRect(window.x() + width / 2, window.y() + width / 2, window.width() - width,
                     window.height() - width);
}

std::string fileText(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

vdevice::Device *SharedDevice::device = nullptr;

void SharedDevice::SetUpTestSuite() {
    device = new vdevice::Device;
    start(*device, sampleDevice());
}

void SharedDevice::TearDownTestSuite() {
    delete device;
    device = nullptr;
}

}  // namespace e2e
