/**
 * @file store_fixture.h
 * A parameter store on a sample device in a temporary folder, with everything that it tells the
 * outside made visible: error lines, posted events, files.
 *
 * Thread: the main thread of the test process.
 */
#ifndef TESTS_APP_GUI_STORE_FIXTURE_H
#define TESTS_APP_GUI_STORE_FIXTURE_H

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "app_gui.h"
#include "gui_cfg.h"

class QObject;

namespace store_test {

// ---- what the store is made of ------------------------------------------------------------------

constexpr int kChannels = 16;
constexpr int kInterfaces = 2;
constexpr int kSplitRecords = 4;  ///< per interface
constexpr int kOsdEntries = 4;    ///< per channel
constexpr int kAudioOutputs = 2;
constexpr int kStreams = 20;
constexpr int kLargestCache = 50;
constexpr uint32_t kOsdLimitX = 8192;
constexpr uint32_t kOsdLimitY = 8000;  ///< the smaller one, so that both limits of x are visible

/** The content of every file of a device; all of it valid and none of it a default. */
struct SampleDevice {
    SampleDevice();

    DeviceCapabilitySet device{};
    VideoDecodeCapabilitySet decode{};
    StreamingInputCapabilitySet streaming{};
    std::vector<VideoOutputCapabilitySet> channels;
    std::vector<VideoOutputInterface> interfaces;
    std::vector<AudioOutputCapabilitySet> audio_outputs;

    VideoOutputDisplayParameter display{};
    std::vector<VideoOutputInterfaceParameter> interface_parameters;
    std::vector<VideoOutputSourceParameter> sources;
    std::vector<VideoOutputScreenSplitParameter> splits;
    std::vector<AudioOutputParameter> audio;
    std::vector<VideoOutputOSDParameter> osd;
    std::vector<WatermarkOSDParameter> texts;
    std::vector<WatermarkPictureParameter> pictures;
    std::vector<WatermarkDotmatrixParameter> dots;
    std::vector<StreamingInputParameter> streams;

    void write_capabilities(const std::filesystem::path &folder) const;
    void write_parameters(const std::filesystem::path &folder) const;
};

/** The n-th interface's name: "HDMI1", "HDMI2". */
const char *interface_name(int position);

/** Copies a text into a record's array and zeroes the rest. */
template <size_t N>
void put(char (&array)[N], std::string_view text) {
    ASSERT_LE(text.size(), N);
    std::memset(array, 0, N);
    std::memcpy(array, text.data(), text.size());
}

template <typename R>
std::string bytes_of(const R &record) {
    return std::string(reinterpret_cast<const char *>(&record), sizeof record);
}

template <typename R>
std::string bytes_of(const R *records, size_t count) {
    return std::string(reinterpret_cast<const char *>(records), count * sizeof(R));
}

// ---- error lines --------------------------------------------------------------------------------

/** Runs `work` and returns everything that it wrote to a descriptor (1 or 2). */
std::string captured(int descriptor, const std::function<void()> &work);

/**
 * The error lines of the process in `text`, each as "<function>: <message>", e.g.
 * "check_WatermarkOSDParameter: if_name=HDMI9 invalid\n". Fails the test when `text` holds anything
 * else or a line from another file than `file` ("" for any). Lines of libraries are left out.
 */
std::vector<std::string> error_lines(const std::string &text, const std::string &file = "");

/** Error lines that `work` writes. */
std::vector<std::string> errors_of(const std::function<void()> &work, const std::string &file = "");

using Lines = std::vector<std::string>;

// ---- posted events ------------------------------------------------------------------------------

/** One event of the bridge. `bytes` is a copy of the payload, empty for events without one. */
struct PostedEvent {
    int type = 0;
    qint64 data = 0;  ///< 0 for events with a payload
    qint64 param = 0;
    std::string bytes;

    bool operator==(const PostedEvent &other) const {
        return type == other.type && data == other.data && param == other.param &&
               bytes == other.bytes;
    }
};

void PrintTo(const PostedEvent &event, std::ostream *out);

using Events = std::vector<PostedEvent>;

PostedEvent number_event(int type, int number);
template <typename R>
PostedEvent record_event(int type, const R &record, qint64 param = 0) {
    return {type, 0, param, bytes_of(record)};
}
template <typename R>
PostedEvent run_event(int type, const R *records, int count) {
    return {type, 0, count, bytes_of(records, static_cast<size_t>(count))};
}

/** Takes the bridge's events that were posted to the main window since the last call; the window
 * sees none of them. */
Events take_events();

// ---- the fixture --------------------------------------------------------------------------------

/** A store over a folder of its own; `device` is written when the store is loaded. */
class Store : public testing::Test {
protected:
    Store();
    ~Store() override;

    /** Writes `device` as capability and user files and loads it; expects success. */
    void load();
    /** Runs init_parameters() on the folder as it is. */
    int load_files(Lines *errors = nullptr);

    std::filesystem::path capability(const std::string &file) const;
    std::filesystem::path user(const std::string &file) const;
    std::filesystem::path factory(const std::string &file) const;

    /** Number of files in the folder of user parameters. */
    size_t user_files() const;

    std::filesystem::path root;
    SampleDevice device;
};

/** Everything that the parameter arrays and counts hold, to see that something changed nothing. */
std::string store_bytes();

/** A store that holds the sample device. */
class Settings : public Store {
protected:
    Settings() { load(); }

    /** Expects that `operation` succeeds and neither says, posts, stores nor writes anything. */
    void expect_no_effect(const std::function<int()> &operation) {
        const std::string before = store_bytes();
        const Lines errors = errors_of([&] { EXPECT_EQ(operation(), 0); });
        EXPECT_EQ(errors, Lines{});
        EXPECT_EQ(take_events(), Events{});
        EXPECT_EQ(store_bytes(), before);
    }

    /** Expects that `operation` returns -2 with these error lines and changes nothing. */
    void expect_refused(const std::function<int()> &operation, const Lines &errors) {
        const std::string before = store_bytes();
        EXPECT_EQ(errors_of([&] { EXPECT_EQ(operation(), -2); }), errors);
        EXPECT_EQ(take_events(), Events{});
        EXPECT_EQ(store_bytes(), before);
    }

    /** Expects success without error lines; returns the events. */
    Events events_of(const std::function<int()> &operation) {
        EXPECT_EQ(errors_of([&] { EXPECT_EQ(operation(), 0); }), Lines{});
        return take_events();
    }
};

/** Expects that the array starts with these records. */
template <typename R>
void expect_stored(const R *stored, const std::vector<R> &expected) {
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(bytes_of(stored[i]), bytes_of(expected[i])) << i;
    }
}

/** The records of a file. */
template <typename R>
std::vector<R> read_back(int (*reader)(const char *, R *, unsigned *),
                         const std::filesystem::path &path) {
    std::vector<R> records(100);
    unsigned count = 100;
    EXPECT_EQ(reader(path.c_str(), records.data(), &count), 0) << path;
    records.resize(count);
    return records;
}

std::string text_of_file(const std::filesystem::path &path);
void write_text(const std::filesystem::path &path, std::string_view text);

}  // namespace store_test

#endif
