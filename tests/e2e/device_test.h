/**
 * @file device_test.h
 * The real process in a virtual device: what the end-to-end tests share.
 */
#ifndef TESTS_E2E_DEVICE_TEST_H
#define TESTS_E2E_DEVICE_TEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <nlohmann/json.hpp>
#include <string>

#include "device.h"

namespace e2e {

using nlohmann::json;

/** Options of a device with the sample configuration, 1920 x 1080 with straight alpha. */
vdevice::DeviceOptions sampleDevice();

/** Starts a device; a failure to start is a failure of the test. */
void start(vdevice::Device &device, const vdevice::DeviceOptions &options);

/** A JSON-RPC request; `id` is 1. */
std::string request(const std::string &method, const json &params);
/** The same without id: an event. */
std::string notification(const std::string &method, const json &params);

/** Sends a command and returns its reply, parsed; a missing one fails the test and gives null. */
json call(vdevice::Device &device, const std::string &method, const json &params = json::object());
/** The `result` of a command that must succeed. */
json result(vdevice::Device &device, const std::string &method,
            const json &params = json::object());
/** The error code of a command that must be refused. */
int errorCode(vdevice::Device &device, const std::string &method, const json &params);

/** Waits until the layer equals `expected` pixel by pixel; tells the first differing one. */
testing::AssertionResult shows(vdevice::Device &device, const QImage &expected);

/** A transparent layer. */
QImage emptyLayer(int width = 1920, int height = 1080);
/** Draws a window's border as the device does: the stroke lies inside the rectangle. */
void drawBorder(QImage &layer, const QRect &window, int width, const QColor &color);

/** Content of a file, "" when there is none. */
std::string fileText(const std::string &path);

/** One device for all tests of a suite. */
class SharedDevice : public testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    static vdevice::Device *device;
};

}  // namespace e2e

#endif
