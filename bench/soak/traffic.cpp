#include "traffic.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "record_codec/record_schema.h"

namespace soak {
namespace {

enum class Key { kInterface, kChannel, kNone };

/** The range of a number that is set to a sensible value. */
struct Range {
    const char *field;
    int lowest, highest;
};

/** Fields whose values matter to the display; others get small numbers. */
constexpr Range kRanges[] = {
    {"visible", 0, 1},    {"font", 0, 8},        {"size", 8, 72},
    {"stroke", 0, 1},     {"forealpha", 0, 255}, {"backalpha", 0, 255},
    {"alpha", 0, 255},    {"x", 0, 8192},        {"y", 0, 8192},
    {"w", 0, 8192},       {"h", 0, 8192},        {"angle", -360, 360},
    {"sizemode", 0, 3},   {"arramode", 0, 5},    {"arrangement_mode", 0, 5},
    {"en", 0, 1},         {"step", 0, 64},       {"speed", 0, 4},
    {"direction", 0, 3},  {"corner", 0, 3},      {"BorderWidth", 0, 16},
    {"playmode", 0, 1},   {"cache", -1, 3},      {"UserSplitIndex", -1, 4},
    {"WindowNum", 0, 16}, {"type", 0, 3},        {"type1", 0, 2},
    {"type2", 0, 2},      {"Enable", 0, 1},
};

constexpr const char *kModes[] = {"Mode1", "Mode4", "Mode5", "Mode9", "Mode16", "Mode6_4"};
constexpr const char *kLayouts[] = {
    "", "0,0,4096,8192,0;4096,0,4096,8192,0", "0,0,8192,8192,0;2048,2048,4096,4096,1",
    "0,0,2731,2731,0;2731,0,2731,2731,0;5462,0,2730,2731,0", "1,2,3"};
constexpr const char *kFormats[] = {"yyyy-MM-dd hh:mm:ss", "Name", "URL", "hh:mm"};
constexpr const char *kPieces[] = {
    "a",     "Camera", "7", " ",  "#", "<b>", "\xE4\xBC\x9A", "\xE9\xAD\x91",
    "hh:mm", "\n",     ";", "%s", "-"};

const Range *range_of(const char *field) {
    const auto row = std::find_if(std::begin(kRanges), std::end(kRanges), [&](const Range &range) {
        return std::strcmp(range.field, field) == 0;
    });
    return row == std::end(kRanges) ? nullptr : row;
}

bool ends_with(const std::string &text, const char *end) {
    const size_t length = std::strlen(end);
    return text.size() >= length && text.compare(text.size() - length, length, end) == 0;
}

std::string message(const std::string &method, const Json &params, bool answered) {
    Json message = {{"jsonrpc", "2.0"}, {"method", method}, {"params", params}};
    if (answered) message["id"] = 1;
    return message.dump();
}

}  // namespace

struct Traffic::Family {
    const char *record;
    Key key;
    unsigned per_key;                    ///< records of one key
    unsigned keys;                       ///< keys of the sample device
    std::vector<const char *> settable;  ///< what a valid request may change
};

namespace {

const std::vector<const char *> kTextFields = {
    "visible", "font",  "size",   "forecolor", "backcolor",
    "x",       "y",     "contet", "angle",     "arrangement_mode",
    "en",      "step",  "speed",  "direction", "type1",
    "text1",   "stroke"};
const std::vector<const char *> kPictureFields = {
    "visible",  "x",     "y",        "w",  "h",    "file",  "alpha",
    "sizemode", "angle", "arramode", "en", "step", "speed", "direction"};
const std::vector<const char *> kOsdFields = {"visible",   "font",   "size", "stroke", "forecolor",
                                              "backcolor", "corner", "x",    "y",      "content",
                                              "head",      "tail",   "type"};

}  // namespace

unsigned Traffic::any(unsigned below) {
    return std::uniform_int_distribution<unsigned>(0, below - 1)(m_random);
}

int Traffic::between(int lowest, int highest) {
    return std::uniform_int_distribution<int>(lowest, highest)(m_random);
}

std::string Traffic::text(unsigned longest) {
    std::string text;
    for (unsigned left = any(12); left > 0; --left) {
        const char *piece = kPieces[any(std::size(kPieces))];
        if (text.size() + std::strlen(piece) > longest) break;
        text += piece;
    }
    return text;
}

std::string Traffic::color() {
    char name[8];
    std::snprintf(name, sizeof name, "#%06X", any(0x1000000));
    return name;
}

Json Traffic::value(const Family &family, const char *name) {
    const record_codec::Record *record = record_codec::find_record(family.record);
    const record_codec::Field *field = record_codec::find_field(*record, name);
    const std::string field_name = name;
    if (field->kind == record_codec::FieldKind::kText) {
        if (field_name == "ScreenSplitMode") return kModes[any(std::size(kModes))];
        if (field_name == "SplitString") return kLayouts[any(std::size(kLayouts))];
        if (field_name == "file") return m_pictures[any(static_cast<unsigned>(m_pictures.size()))];
        if (field_name == "content" && oneOf(2)) return kFormats[any(std::size(kFormats))];
        const bool is_color = ends_with(field_name, "olor") || ends_with(field_name, "Color");
        return is_color ? color() : text(field->size - 1);
    }
    const Range *range = range_of(name);
    return range ? between(range->lowest, range->highest) : between(0, 9);
}

Json Traffic::wildValue() {
    switch (any(5)) {
        case 0:
            return nullptr;
        case 1:
            return std::string(any(4000), 'x');
        case 2:
            return static_cast<int32_t>(m_random());
        case 3:
            return int64_t{1} << between(31, 62);
        default:
            return Json::array({1, "a", Json::object()});
    }
}

Json Traffic::record(const Family &family) {
    Json record = Json::object();
    for (unsigned left = any(4); left > 0; --left) {
        const char *field = family.settable[any(static_cast<unsigned>(family.settable.size()))];
        record[field] = oneOf(20) ? wildValue() : value(family, field);
    }
    return record;
}

std::string Traffic::setRequest() {
    static const Family kFamilies[] = {
        {"VideoOutputInterfaceParameter",
         Key::kInterface,
         1,
         2,
         {"ScreenSplitMode", "UserSplitIndex", "Enable"}},
        {"VideoOutputScreenSplitParameter", Key::kInterface, 4, 2, {"WindowNum", "SplitString"}},
        {"VideoOutputDisplayParameter",
         Key::kNone,
         1,
         1,
         {"BorderWidth", "VideoBorderColor", "AudioBorderColor", "cache", "playmode"}},
        {"VideoOutputOSDParameter", Key::kChannel, 4, 16, kOsdFields},
        {"WatermarkOSDParameter", Key::kInterface, 1, 2, kTextFields},
        {"WatermarkPictureParameter", Key::kInterface, 1, 2, kPictureFields},
        {"WatermarkDotmatrixParameter",
         Key::kInterface,
         1,
         2,
         {"text", "color", "alpha", "step", "speed"}},
    };
    const Family &family = kFamilies[any(std::size(kFamilies))];
    const bool all = family.key != Key::kNone && oneOf(8);
    Json params = Json::object();
    if (family.key == Key::kInterface) params["if_name"] = all ? "" : oneOf(2) ? "HDMI1" : "HDMI2";
    if (family.key == Key::kChannel) params["Channel"] = all ? -1 : between(0, 15);
    const unsigned count = family.per_key * (all ? family.keys : 1) + (oneOf(40) ? 1 : 0);
    params["records"] = Json::array();
    for (unsigned i = 0; i < count; ++i) {
        params["records"].push_back(record(family));
    }
    return message(std::string("Set") + family.record, params, true);
}

std::string Traffic::getRequest() {
    static constexpr const char *kMethods[] = {"GetVideoOutputInterfaceParameter",
                                               "GetVideoOutputScreenSplitParameter",
                                               "GetVideoOutputDisplayParameter",
                                               "GetVideoOutputOSDParameter",
                                               "GetWatermarkOSDParameter",
                                               "GetWatermarkPictureParameter",
                                               "GetWatermarkDotmatrixParameter",
                                               "Keepalive",
                                               "rpc.discover",
                                               "GetNothing"};
    return message(kMethods[any(std::size(kMethods))], Json::object(), true);
}

/** Cut short, or with something before it: never JSON, so never a notification by chance. */
std::string Traffic::damaged(std::string message) {
    if (oneOf(2)) return message.substr(0, any(static_cast<unsigned>(message.size())));
    std::string noise;
    for (unsigned left = 1 + any(300); left > 0; --left) {
        noise += static_cast<char>(0x80 + any(0x80));
    }
    return noise + message;
}

std::string Traffic::request() {
    const unsigned kind = any(100);
    if (kind < 55) return setRequest();
    if (kind < 75) return getRequest();
    if (kind < 80) {
        return message("UploadWatermarkPicture", {{"if_name", oneOf(9) ? "HDMI7" : "HDMI1"}}, true);
    }
    if (kind < 85) return message("SetVideoOutSourceChange", {{"records", wildValue()}}, true);
    if (kind < 87) return std::string(between(0, 200000), '[');
    return damaged(setRequest());
}

std::string Traffic::codecEvent() {
    if (oneOf(10)) return damaged(message("SetVideoOutSourceChange", Json::object(), false));
    if (oneOf(4)) {
        const Json record = {
            {"Channel", 0}, {"if_name", "HDMI1"}, {"index", between(-1, 16)}, {"type", any(3)}};
        return message("SetAudioOutSourceChange", {{"records", {record}}}, false);
    }
    const Json record = {
        {"Channel", between(-1, 16)}, {"index", between(-1, 64)}, {"type", any(3)}};
    return message("SetVideoOutSourceChange", {{"records", {record}}}, false);
}

std::string Traffic::streamEvent() {
    if (oneOf(10)) return damaged(message("SetStreamingInputStatusChange", Json::object(), false));
    const Json record = {{"index", between(-1, 64)},
                         {"url", "rtsp://192.168.1." + std::to_string(any(256)) + "/live"},
                         {"name", text(60)},
                         {"status", any(3)}};
    return message("SetStreamingInputStatusChange", {{"records", {record}}}, false);
}

}  // namespace soak
