#include "tour.h"

namespace vdevice {
namespace {

constexpr auto kClient = Sender::kClient;
constexpr auto kCodec = Sender::kCodec;
constexpr auto kStream = Sender::kStream;

constexpr char kSetInterface[] = "SetVideoOutputInterfaceParameter";
constexpr char kSetSplit[] = "SetVideoOutputScreenSplitParameter";
constexpr char kSetDisplay[] = "SetVideoOutputDisplayParameter";
constexpr char kSetOsd[] = "SetVideoOutputOSDParameter";
constexpr char kSetText[] = "SetWatermarkOSDParameter";
constexpr char kSetPicture[] = "SetWatermarkPictureParameter";
constexpr char kSetSource[] = "SetVideoOutSourceChange";
constexpr char kSetAudio[] = "SetAudioOutSourceChange";
constexpr char kSetStream[] = "SetStreamingInputStatusChange";

const std::vector<TourStep> &full_hd_steps() {
    static const std::vector<TourStep> steps = {
        {"mode9",
         "nine windows, the audio of window 5",
         1,
         {{kClient, kSetDisplay,
           R"({"records":[{"BorderWidth":4,"VideoBorderColor":"#00C878",
               "AudioBorderColor":"#FF3030","BackgroundColor":"#000000"}]})"},
          {kClient, kSetInterface,
           R"({"if_name":"HDMI1","records":[{"ScreenSplitMode":"Mode9","UserSplitIndex":-1}]})"},
          {kCodec, kSetSource, R"({"records":[{"Channel":4,"if_name":"","index":4,"type":0}]})"},
          {kCodec, kSetAudio,
           R"({"records":[{"Channel":0,"if_name":"HDMI1","index":4,"type":0}]})"}}},
        {"mode1",
         "one window",
         1,
         {{kClient, kSetInterface,
           R"({"if_name":"HDMI1","records":[{"ScreenSplitMode":"Mode1"}]})"}}},
        {"mode4-border",
         "four windows, borders of 12 pixels",
         1,
         {{kClient, kSetDisplay, R"({"records":[{"BorderWidth":12}]})"},
          {kClient, kSetInterface,
           R"({"if_name":"HDMI1","records":[{"ScreenSplitMode":"Mode4"}]})"}}},
        {"mode16",
         "sixteen windows, borders of 2 pixels",
         1,
         {{kClient, kSetDisplay, R"({"records":[{"BorderWidth":2}]})"},
          {kClient, kSetInterface,
           R"({"if_name":"HDMI1","records":[{"ScreenSplitMode":"Mode16"}]})"}}},
        {"user-layout",
         "a user layout with a window over two others",
         1,
         {{kClient, kSetDisplay, R"({"records":[{"BorderWidth":6}]})"},
          {kClient, kSetSplit,
           R"({"if_name":"HDMI1","records":[{"WindowNum":4,"SplitString":
               "0,0,4096,8192,0;4096,0,4096,4096,0;4096,4096,4096,4096,0;2731,2731,2731,2731,1"},
               {},{},{}]})"},
          {kClient, kSetInterface, R"({"if_name":"HDMI1","records":[{"UserSplitIndex":0}]})"}}},
        {"osd",
         "OSD texts: date and time, plain text, name and URL of the source",
         1,
         {{kClient, kSetDisplay, R"({"records":[{"BorderWidth":4}]})"},
          {kClient, kSetInterface,
           R"({"if_name":"HDMI1","records":[{"ScreenSplitMode":"Mode4","UserSplitIndex":-1}]})"},
          {kStream, kSetStream,
           R"({"records":[{"index":1,"url":"rtsp://192.168.1.21/live","name":"大厅 Lobby",
               "status":1,"status2":0}]})"},
          {kCodec, kSetSource, R"({"records":[{"Channel":1,"if_name":"","index":1,"type":1}]})"},
          {kClient, kSetOsd,
           R"({"Channel":0,"records":[
               {"visible":1,"font":3,"head":"会议室 Meeting room","stroke":1,"backalpha":255,
                "x":192,"y":256},
               {"visible":1,"font":5,"bold":1,"content":"主会场","forecolor":"#FFD200","stroke":1,
                "backcolor":"#802000","backalpha":255,"corner":2,"x":192,"y":256},{},{}]})"},
          {kClient, kSetOsd,
           R"({"Channel":1,"records":[
               {"visible":1,"font":3,"content":"yyyy-MM-dd hh:mm","backalpha":160,"corner":1,
                "x":192,"y":256},{},{},
               {"visible":1,"font":4,"content":"Name","backcolor":"#004080","backalpha":200,
                "corner":3,"x":192,"y":256}]})"},
          {kClient, kSetOsd,
           R"({"Channel":2,"records":[{},{},{},
               {"visible":1,"font":3,"content":"URL","tail":"直播 live","stroke":1,
                "backalpha":255,"corner":0,"x":192,"y":256}]})"}}},
        {"watermark-text",
         "a rotated watermark text, three by three",
         1,
         {{kClient, kSetText,
           R"({"if_name":"HDMI1","records":[{"visible":1,"font":3,"forecolor":"#FFFFFF",
               "forealpha":150,"backalpha":0,"x":512,"y":512,"contet":"内部资料 Internal",
               "angle":20,"arrangement_mode":3}]})"}}},
        {"watermark-picture",
         "a translucent picture, tiled",
         1,
         {{kClient, kSetText, R"({"if_name":"HDMI1","records":[{"visible":0}]})"},
          {kClient, kSetPicture,
           R"({"if_name":"HDMI1","records":[{"visible":1,"file":"/tmp/logo.png","alpha":110,
               "sizemode":1,"arramode":1,"angle":0}]})"}}},
        {"scroll",
         "a scrolling text",
         4,
         {{kClient, kSetPicture, R"({"if_name":"HDMI1","records":[{"visible":0}]})"},
          {kClient, kSetText,
           R"({"if_name":"HDMI1","records":[{"visible":1,"font":5,"forecolor":"#FFE000",
               "forealpha":255,"stroke":1,"backalpha":255,"x":0,"y":3500,
               "contet":"滚动字幕 scrolling","angle":0,"arrangement_mode":1,
               "en":1,"step":120,"speed":1,"direction":0}]})"}}},
        {"everything",
         "nine windows with borders, texts and watermark",
         1,
         {{kClient, kSetInterface,
           R"({"if_name":"HDMI1","records":[{"ScreenSplitMode":"Mode9"}]})"},
          {kClient, kSetText,
           R"({"if_name":"HDMI1","records":[{"font":3,"forecolor":"#FFFFFF","forealpha":120,
               "stroke":0,"backalpha":0,"x":480,"y":1500,"contet":"内部资料 Internal","angle":20,
               "arrangement_mode":3,"en":0}]})"},
          {kClient, kSetOsd,
           R"({"Channel":4,"records":[{},
               {"visible":1,"font":5,"bold":1,"content":"主讲人 Speaker","forecolor":"#FFD200",
                "backalpha":150,"corner":2,"x":256,"y":256},{},{}]})"},
          {kClient, kSetOsd,
           R"({"Channel":8,"records":[{},{},{},
               {"visible":1,"font":4,"content":"Name","head":"频道 Channel 9","stroke":1,
                "backalpha":255,"corner":3,"x":256,"y":256}]})"}}},
    };
    return steps;
}

const std::vector<TourStep> &ultra_hd_steps() {
    static const std::vector<TourStep> steps = {
        {"mode6-2160p",
         "six windows of 3840 x 2160",
         1,
         {{kClient, kSetDisplay, R"({"records":[{"BorderWidth":8,"VideoBorderColor":"#00C878"}]})"},
          {kClient, kSetInterface,
           R"({"if_name":"HDMI1","records":[{"ScreenSplitMode":"Mode6_0","UserSplitIndex":-1}]})"},
          {kClient, kSetOsd,
           R"({"Channel":0,"records":[{"visible":1,"font":4,"head":"四千像素 2160p","stroke":1,
               "backalpha":255,"x":128,"y":192},{},{},{}]})"}}},
    };
    return steps;
}

}  // namespace

const std::vector<TourPart> &tour_parts() {
    static const std::vector<TourPart> parts = {
        {1920, 1080, full_hd_steps()},
        {3840, 2160, ultra_hd_steps()},
    };
    return parts;
}

}  // namespace vdevice
