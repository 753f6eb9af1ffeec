#include "store_fixture.h"

#include <unistd.h>

#include <QApplication>
#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "gui_cfg_store.h"
#include "mainwindow.h"
#include "record_codec/record_json.h"

namespace fs = std::filesystem;

namespace store_test {

// ---- the sample device --------------------------------------------------------------------------

namespace {

constexpr const char *kNames[] = {"HDMI1", "HDMI2"};

VideoOutputInterface sample_interface(int position) {
    VideoOutputInterface interface {};
    put(interface.if_name, kNames[position]);
    put(interface.Timing, "1920x1080P@60;1280x720P@60;3840x2160P@30");
    interface.OSDMaxX = kOsdLimitX;
    interface.OSDMaxY = kOsdLimitY;
    interface.SplitParamNum = kSplitRecords;
    put(interface.ScreenSplitMode, "Mode1;Mode4;Mode9;Mode16");
    interface.DisplaySupported = 1;
    interface.WatermarkSupported = 1;
    interface.OSDSupported = 1;
    interface.OSDNumPerChannel = kOsdEntries;
    return interface;
}

VideoOutputInterfaceParameter sample_interface_parameter(int position) {
    VideoOutputInterfaceParameter record{};
    put(record.if_name, kNames[position]);
    put(record.Timing, "1280x720P@60");
    record.Width = 1280;
    record.Height = 720;
    record.FrameRate = 50 + position;
    put(record.AudioInterface, kNames[position]);
    put(record.ScreenSplitMode, "Mode4");
    record.UserSplitIndex = -1;
    record.Enable = 1;
    return record;
}

VideoOutputOSDParameter sample_osd(int channel, int index) {
    VideoOutputOSDParameter entry{};
    entry.Channel = channel;
    entry.Index = index;
    entry.type = 1;
    entry.visible = 1;
    put(entry.forecolor, "#00FF00");
    put(entry.backcolor, "#112233");
    entry.x = static_cast<uint32_t>(100 + channel);
    entry.y = static_cast<uint32_t>(200 + index);
    entry.scale = 90;
    put(entry.content, "osd " + std::to_string(channel) + "/" + std::to_string(index));
    put(entry.head, "head");
    return entry;
}

WatermarkOSDParameter sample_text(int position) {
    WatermarkOSDParameter record{};
    put(record.if_name, kNames[position]);
    record.visible = 1;
    record.font = 4;
    put(record.forecolor, "#ABCDEF");
    put(record.contet, "watermark " + std::to_string(position));
    record.arrangement_mode = 2;
    record.speed = 3;
    return record;
}

WatermarkPictureParameter sample_picture(int position) {
    WatermarkPictureParameter record{};
    put(record.if_name, kNames[position]);
    record.visible = 1;
    record.w = 300 + position;
    put(record.file, "/mnt/usr/picture.png");
    record.arramode = 2;
    return record;
}

WatermarkDotmatrixParameter sample_dots(int position) {
    WatermarkDotmatrixParameter record{};
    put(record.if_name, kNames[position]);
    record.visible = 1;
    put(record.color, "#0000FF");
    record.step = 5 + position;
    record.speed = 2;
    return record;
}

template <typename R>
void write_object(const fs::path &path, const char *record_name, const R &record) {
    std::string text;
    record_codec::append_record(text, *record_codec::find_record(record_name), &record);
    write_text(path, text);
}

/** Not through the writers of the codec, which wait for the disk. */
template <typename R>
void write_array(const fs::path &path, const char *record_name, const std::vector<R> &records) {
    std::string text = "[";
    for (const R &record : records) {
        if (&record != records.data()) text += ",\n";
        record_codec::append_record(text, *record_codec::find_record(record_name), &record);
    }
    write_text(path, text + "]");
}

}  // namespace

const char *interface_name(int position) {
    return kNames[position];
}

SampleDevice::SampleDevice() {
    device.VideoOutputChannelNum = kChannels;
    device.AudioOutputNum = kAudioOutputs;
    decode.MaxCache = kLargestCache;
    streaming.StreamingInputNum = kStreams;

    display.reserved_0[0] = 7;
    display.reserved_0[4] = 9;
    put(display.BackgroundColor, "#101010");
    put(display.VideoBorderColor, "#202020");
    put(display.AudioBorderColor, "#303030");
    display.BorderWidth = 4;
    display.cache = 10;
    display.playmode = 1;

    for (int i = 0; i < kInterfaces; ++i) {
        interfaces.push_back(sample_interface(i));
        interface_parameters.push_back(sample_interface_parameter(i));
        texts.push_back(sample_text(i));
        pictures.push_back(sample_picture(i));
        dots.push_back(sample_dots(i));
        for (int k = 0; k < kSplitRecords; ++k) {
            VideoOutputScreenSplitParameter split{};
            put(split.if_name, kNames[i]);
            split.Index = k;
            split.WindowNum = 2;
            put(split.SplitString,
                "0,0,4096,8192,0;4096,0,4096,8192," + std::to_string(i * 10 + k));
            splits.push_back(split);
        }
    }
    for (int c = 0; c < kChannels; ++c) {
        VideoOutputCapabilitySet set{};
        put(set.SupportedVideoInputChannelList, "0-3;40");
        put(set.SupportedInputStreamingIndexList, "0-19");
        channels.push_back(set);
        sources.push_back({c, (c + 3) % kStreams, 1, 5});
        for (int k = 0; k < kOsdEntries; ++k)
            osd.push_back(sample_osd(c, k));
    }
    for (int a = 0; a < kAudioOutputs; ++a) {
        AudioOutputCapabilitySet set{};
        put(set.bound_list, "0-3;40");
        put(set.if_name_list, ";HDMI2;HDMI1");
        put(set.index_list, "5;7");
        put(set.banyin_list, "0-15");
        audio_outputs.push_back(set);
        AudioOutputParameter output{};
        output.Channel = a;
        put(output.if_name, "HDMI1");
        output.index = 7;
        output.type = 1;
        audio.push_back(output);
    }
    for (int i = 0; i < kStreams; ++i) {
        StreamingInputParameter stream{};
        stream.index = i;
        put(stream.url, "rtsp://10.0.0." + std::to_string(i) + "/live");
        put(stream.name, "camera " + std::to_string(i));
        stream.reserved_324[0] = 1;
        streams.push_back(stream);
    }
}

void SampleDevice::write_capabilities(const fs::path &folder) const {
    write_object(folder / "DeviceCapabilitySet.json", "DeviceCapabilitySet", device);
    write_object(folder / "VideoDecodeCapabilitySet.json", "VideoDecodeCapabilitySet", decode);
    write_object(folder / "StreamingInputCapabilitySet.json", "StreamingInputCapabilitySet",
                 streaming);
    write_array(folder / "VideoOutputCapabilitySet.json", "VideoOutputCapabilitySet", channels);
    write_array(folder / "VideoOutputInterfaces.json", "VideoOutputInterface", interfaces);
    write_array(folder / "AudioOutputCapabilitySet.json", "AudioOutputCapabilitySet",
                audio_outputs);
}

void SampleDevice::write_parameters(const fs::path &folder) const {
    write_object(folder / "VideoOutputDisplayParameters.json", "VideoOutputDisplayParameter",
                 display);
    write_array(folder / "VideoOutputInterfaceParameters.json", "VideoOutputInterfaceParameter",
                interface_parameters);
    write_array(folder / "VideoOutputAccessParameters.json", "VideoOutputSourceParameter", sources);
    write_array(folder / "VideoOutputScreenSplitParameters.json", "VideoOutputScreenSplitParameter",
                splits);
    write_array(folder / "AudioOutputParameters.json", "AudioOutputParameter", audio);
    write_array(folder / "VideoOutputOSDParameters.json", "VideoOutputOSDParameter", osd);
    write_array(folder / "WatermarkOSDParameters.json", "WatermarkOSDParameter", texts);
    write_array(folder / "WatermarkPictureParameters.json", "WatermarkPictureParameter", pictures);
    write_array(folder / "WatermarkDotmatrixParameters.json", "WatermarkDotmatrixParameter", dots);
    write_array(folder / "StreamingInputParameters.json", "StreamingInputParameter", streams);
}

// ---- error lines --------------------------------------------------------------------------------

std::string captured(int descriptor, const std::function<void()> &work) {
    std::fflush(nullptr);
    std::FILE *file = std::tmpfile();
    const int saved = dup(descriptor);
    dup2(fileno(file), descriptor);
    work();
    std::fflush(nullptr);
    dup2(saved, descriptor);
    close(saved);
    std::string text;
    std::rewind(file);
    for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) {
        text.push_back(static_cast<char>(c));
    }
    std::fclose(file);
    return text;
}

std::vector<std::string> error_lines(const std::string &text, const std::string &file) {
    constexpr std::string_view kStart = "\033[1;31m<ERROR! ";
    constexpr std::string_view kEnd = "\n\033[0m";
    std::vector<std::string> lines;
    std::string_view rest = text;
    while (!rest.empty()) {
        const size_t end = rest.find(kEnd);
        const size_t colon = rest.find(':');
        const size_t comma = rest.find(", ");
        const size_t bracket = rest.find(">: ");
        if (rest.substr(0, kStart.size()) != kStart || end == rest.npos || comma > bracket ||
            bracket > end || colon > comma) {
            ADD_FAILURE() << "not an error line: " << rest;
            break;
        }
        const std::string_view path = rest.substr(kStart.size(), colon - kStart.size());
        const std::string_view number = rest.substr(colon + 1, comma - colon - 1);
        EXPECT_GT(std::atoi(std::string(number).c_str()), 0) << rest.substr(0, end);
        if (path.substr(0, 5) != "libs/") {
            if (!file.empty()) {
                EXPECT_EQ(path, file);
            }
            const std::string_view function = rest.substr(comma + 2, bracket - comma - 2);
            const std::string_view message = rest.substr(bracket + 3, end + 1 - (bracket + 3));
            lines.push_back(std::string(function) + ": " + std::string(message));
        }
        rest.remove_prefix(end + kEnd.size());
    }
    return lines;
}

std::vector<std::string> errors_of(const std::function<void()> &work, const std::string &file) {
    return error_lines(captured(STDERR_FILENO, work), file);
}

// ---- posted events ------------------------------------------------------------------------------

void PrintTo(const PostedEvent &event, std::ostream *out) {
    *out << "{type " << event.type << ", data " << event.data << ", param " << event.param << ", "
         << event.bytes.size() << " bytes}";
}

PostedEvent number_event(int type, int number) {
    return {type, number, 0, {}};
}

namespace {

/** How the payload of an event type is laid out; types without a row carry a number. */
struct Payload {
    int type;
    size_t size;
    bool counted;  ///< `param` is the number of records
};
constexpr Payload kPayloads[] = {
    {1001, 212, false}, {1002, 380, false}, {1003, 1036, false}, {1005, 2120, true},
    {1009, 408, false}, {1010, 568, false}, {1011, 332, true},   {1012, 76, true},
};

class EventRecorder : public QObject {
public:
    bool eventFilter(QObject *, QEvent *event) override {
        const int type = event->type();
        if (type < 1001 || type > 1012) return false;
        const auto &posted = static_cast<const UserEvent &>(*event);
        EXPECT_EQ(posted.reserved[0], 0);
        EXPECT_EQ(posted.reserved[1], 0);
        events.push_back(record(posted));
        return true;
    }

    Events events;

private:
    static PostedEvent record(const UserEvent &event) {
        PostedEvent seen{event.type(), event.data, event.param, {}};
        for (const Payload &row : kPayloads) {
            if (row.type != seen.type) continue;
            void *block = reinterpret_cast<void *>(static_cast<intptr_t>(event.data));
            const size_t count =
                row.counted ? static_cast<size_t>(std::max<qint64>(event.param, 0)) : 1;
            seen.bytes.assign(static_cast<const char *>(block), count * row.size);
            seen.data = 0;
            std::free(block);
        }
        return seen;
    }
};

EventRecorder *recorder() {
    static auto *const filter = [] {
        auto *made = new EventRecorder;
        MainWindow::instance()->installEventFilter(made);
        QCoreApplication::sendPostedEvents(MainWindow::instance());
        made->events.clear();
        return made;
    }();
    return filter;
}

/** The application that events are posted through; it lives as long as the process. */
class Application : public testing::Environment {
public:
    void SetUp() override {
        static int argc = 1;
        static char name[] = "store_test";
        static char *argv[] = {name, nullptr};
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        static const auto *const application = new QApplication(argc, argv);
        (void)application;
    }
};
testing::Environment *const application_of_the_tests =
    testing::AddGlobalTestEnvironment(new Application);

}  // namespace

Events take_events() {
    EventRecorder *const filter = recorder();
    QCoreApplication::sendPostedEvents(MainWindow::instance());
    return std::exchange(filter->events, {});
}

// ---- the fixture --------------------------------------------------------------------------------

Store::Store() {
    std::string folder = (fs::temp_directory_path() / "store_test.XXXXXX").string();
    root = mkdtemp(folder.data());
    for (const char *name : {"capability_sets", "app_parameters", "default_parameters"}) {
        fs::create_directory(root / name);
    }
    gui_cfg::config_root = root.string() + "/";
    audWndIdx = -1;
    take_events();
}

Store::~Store() {
    take_events();
    std::error_code ignored;
    fs::remove_all(root, ignored);
}

void Store::load() {
    device.write_capabilities(root / "capability_sets");
    device.write_parameters(root / "app_parameters");
    Lines errors;
    ASSERT_EQ(load_files(&errors), 0);
    ASSERT_EQ(errors, Lines{});
    ASSERT_EQ(take_events(), Events{}) << "loading tells the display nothing";
}

int Store::load_files(Lines *errors) {
    int result = 0;
    const Lines lines = errors_of([&] { result = init_parameters(); });
    if (errors) *errors = lines;
    return result;
}

fs::path Store::capability(const std::string &file) const {
    return root / "capability_sets" / file;
}

fs::path Store::user(const std::string &file) const {
    return root / "app_parameters" / file;
}

fs::path Store::factory(const std::string &file) const {
    return root / "default_parameters" / file;
}

size_t Store::user_files() const {
    return static_cast<size_t>(
        std::distance(fs::directory_iterator(root / "app_parameters"), fs::directory_iterator()));
}

namespace {

template <typename R, size_t N>
void append_array(std::string &out, const R (&records)[N]) {
    out += bytes_of(records, N);
}

}  // namespace

std::string store_bytes() {
    std::string all;
    append_array(all, data_VideoOutputInterfaceParameter);
    append_array(all, data_VideoOutputScreenSplitParameter);
    append_array(all, data_VideoOutputDisplayParameter);
    append_array(all, data_VideoOutSourceChange);
    append_array(all, data_AudioOutSourceChange);
    append_array(all, data_VideoOutputOSDParameter);
    append_array(all, data_WatermarkOSDParameter);
    append_array(all, data_WatermarkPictureParameter);
    append_array(all, data_WatermarkDotmatrixParameter);
    append_array(all, data_StreamingInputStatusChange);
    for (const uint32_t count :
         {num_VideoOutputInterface, num_VideoOutSourceChange, num_VideoOutputOSDParameter,
          num_WatermarkOSDParameter, num_WatermarkPictureParameter, num_WatermarkDotmatrixParameter,
          num_StreamingInputStatusChange}) {
        all += bytes_of(count);
    }
    all += bytes_of(audWndIdx);
    return all;
}

std::string text_of_file(const fs::path &path) {
    std::ifstream file(path, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

void write_text(const fs::path &path, std::string_view text) {
    std::ofstream file(path, std::ios::binary);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    ASSERT_TRUE(file.flush());
}

}  // namespace store_test
