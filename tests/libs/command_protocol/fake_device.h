/**
 * @file fake_device.h
 * Command handlers of a small device, exported by the test executable as a real process exports its
 * own: two interfaces "HDMI1" and "HDMI2", four windows with four OSD texts each.
 *
 * Not exported on purpose: GetWatermarkDotmatrixParameterSize, so that neither the Get nor the Set
 * of that record can be served.
 */
#ifndef TESTS_COMMAND_PROTOCOL_FAKE_DEVICE_H
#define TESTS_COMMAND_PROTOCOL_FAKE_DEVICE_H

#include <string>
#include <vector>

#include "record_codec/records.h"

constexpr int kFakeInterfaces = 2;
constexpr int kFakeChannels = 4;
constexpr int kFakeTextsPerChannel = 4;
constexpr int kFakeLayoutsPerInterface = 4;

struct FakeDevice {
    FakeDevice();

    int get_status = 0;      ///< what every Get returns, when negative
    int set_status = 0;      ///< what every Set, event and upload returns, when not 0
    int watermark_size = 0;  ///< what GetWatermarkOSDParameterSize returns, when not 0
    int uploads = 0;

    VideoOutputInterfaceParameter interfaces[kFakeInterfaces] = {};
    VideoOutputScreenSplitParameter layouts[kFakeInterfaces * kFakeLayoutsPerInterface] = {};
    VideoOutputDisplayParameter display = {};
    WatermarkOSDParameter watermarks[kFakeInterfaces] = {};
    WatermarkPictureParameter pictures[kFakeInterfaces] = {};
    VideoOutputOSDParameter texts[kFakeChannels * kFakeTextsPerChannel] = {};
    VideoOutSourceChange video_source = {};
    AudioOutSourceChange audio_source = {};
    StreamingInputStatusChange stream = {};

    /** Names of the handlers in the order of their calls, with their keys: "GetX(HDMI1)". */
    std::vector<std::string> calls;
};

/** The device that the handlers serve. Assign FakeDevice() for a fresh one. */
FakeDevice &fake_device();

#endif
