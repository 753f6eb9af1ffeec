// A hundred thousand random requests, valid and not: every one answered, the process alive, its
// memory flat after the first thousand.

#include <algorithm>
#include <csignal>
#include <fstream>
#include <random>

#include "device_test.h"
#include "record_codec/record_schema.h"

using namespace e2e;

namespace {

// A sanitizer takes its time for each request and memory of its own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

/** Makes requests; the same seed makes the same ones. */
class RequestMaker {
public:
    explicit RequestMaker(unsigned seed) : random_(seed) {}

    /** A message and whether JSON-RPC wants it answered for certain. */
    std::string next() {
        std::string message = any(16) == 0 ? batch() : one().dump();
        if (any(4) == 0) mutate(message);
        return message;
    }

private:
    unsigned any(unsigned below) {
        return std::uniform_int_distribution<unsigned>(0, below - 1)(random_);
    }

    std::string batch() {
        json requests = json::array();
        for (unsigned i = any(5); i > 0; --i) {
            requests.push_back(one());
        }
        return requests.dump();
    }

    json one() {
        static const char *kMethods[] = {"GetVideoOutputInterfaceParameter",
                                         "SetVideoOutputInterfaceParameter",
                                         "GetVideoOutputScreenSplitParameter",
                                         "SetVideoOutputScreenSplitParameter",
                                         "GetVideoOutputDisplayParameter",
                                         "SetVideoOutputDisplayParameter",
                                         "GetVideoOutputOSDParameter",
                                         "SetVideoOutputOSDParameter",
                                         "GetWatermarkOSDParameter",
                                         "SetWatermarkOSDParameter",
                                         "GetWatermarkPictureParameter",
                                         "SetWatermarkPictureParameter",
                                         "GetWatermarkDotmatrixParameter",
                                         "SetWatermarkDotmatrixParameter",
                                         "SetVideoOutSourceChange",
                                         "SetAudioOutSourceChange",
                                         "SetStreamingInputStatusChange",
                                         "UploadWatermarkPicture",
                                         "Keepalive",
                                         "exit",
                                         "GetVideoOutputOSDParameterSize",
                                         ""};
        const std::string method = kMethods[any(std::size(kMethods))];
        json message = {{"jsonrpc", "2.0"}, {"method", method}, {"params", params(method)}};
        if (any(8) != 0) message["id"] = any(1000);
        return message;
    }

    json params(const std::string &method) {
        json params = json::object();
        if (any(3) != 0)
            params["if_name"] = any(5) == 0 ? text(70) : "HDMI" + std::to_string(1 + any(2));
        if (method.find("OSDParameter") != std::string::npos &&
            method.find("Video") != std::string::npos) {
            params.erase("if_name");
            if (any(4) != 0) params["Channel"] = static_cast<int>(any(20)) - 2;
        }
        if (method.find("Display") != std::string::npos ||
            method.find("Change") != std::string::npos) {
            params.erase("if_name");
        }
        if (method.rfind("Set", 0) == 0) params["records"] = records(method.substr(3));
        return params;
    }

    json records(const std::string &name) {
        const record_codec::Record *record = record_codec::find_record(name);
        const unsigned counts[] = {1, 1, 4, 4, 0, any(70)};
        json records = json::array();
        for (unsigned i = counts[any(std::size(counts))]; i > 0; --i) {
            json value = json::object();
            for (unsigned k = record ? any(4) : 0; k > 0; --k) {
                const record_codec::Field &field =
                    record->fields[any(static_cast<unsigned>(record->field_count))];
                value[field.name] = fieldValue(field);
            }
            records.push_back(value);
        }
        return records;
    }

    json fieldValue(const record_codec::Field &field) {
        switch (any(12)) {
            case 0:
                return nullptr;
            case 1:
                return text(field.size * 2);
            case 2:
                return static_cast<int32_t>(random_());
            default:
                break;
        }
        if (field.kind == record_codec::FieldKind::kText)
            return text(std::min(field.size - 1, 40u));
        if (field.kind == record_codec::FieldKind::kInt32Array) return {1, 2, 3, 4};
        return static_cast<int>(any(10));
    }

    std::string text(unsigned longest) {
        static const char *kPieces[] = {"a",    "7",  ";", ",", " ", "#", "<img>", "\xE9\xAD\x91",
                                        "yyyy", "\n", "-"};
        std::string text;
        for (unsigned left = any(longest + 1); left > 0; --left) {
            text += kPieces[any(std::size(kPieces))];
        }
        return text.substr(0, text.size());
    }

    void mutate(std::string &message) {
        for (unsigned times = 1 + any(3); times > 0 && !message.empty(); --times) {
            const size_t at = any(static_cast<unsigned>(message.size()));
            if (any(2) == 0) {
                message[at] = static_cast<char>(any(256));
            } else {
                message.erase(at, 1 + any(10));
            }
        }
    }

    std::mt19937 random_;
};

/**
 * Memory that a process made for itself and holds, in KiB: the parts of libraries and font files
 * that it happened to touch come and go with the kernel's page cache.
 */
long ownMemory(pid_t pid) {
    const std::string name = "RssAnon:";
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(name, 0) == 0) return std::stol(line.substr(name.size()));
    }
    return 0;
}

bool is_response(const json &value) {
    return value.is_object() && value.value("jsonrpc", "") == "2.0" && value.contains("id") &&
           value.contains("result") != value.contains("error");
}

/** Whether the message, as JSON-RPC sees it, is to be answered. */
bool is_answered(const std::string &message) {
    const json value = json::parse(message, nullptr, false);
    const auto is_notification = [](const json &item) {
        return item.is_object() && !item.contains("id") && item.value("jsonrpc", json()) == "2.0" &&
               item.contains("method") && item["method"].is_string();
    };
    if (value.is_array() && !value.empty()) {
        return !std::all_of(value.begin(), value.end(), is_notification);
    }
    return !is_notification(value);
}

/** Ends the process; a sanitizer has told what it found then, such as memory that was lost. */
void expectNoReport(vdevice::Device &device) {
    constexpr vdevice::Milliseconds kCheck(60000);
    ASSERT_TRUE(device.kill(SIGTERM));
    ASSERT_TRUE(vdevice::wait_until([&] { return !device.running(); }, kCheck));
    const std::string errors = device.standardError();
    EXPECT_EQ(errors.find("Sanitizer"), errors.npos) << errors.substr(errors.find("=="));
}

class RandomRequests : public testing::TestWithParam<unsigned> {
protected:
    /** Sends one message and judges what comes back. */
    void exchange(const std::string &message) {
        if (!is_answered(message)) {
            // Nothing comes back; the request behind it must.
            ASSERT_FALSE(device_.request(message, vdevice::Milliseconds(0)));
            return;
        }
        const auto reply = device_.request(message);
        ASSERT_TRUE(reply) << "no reply to " << message;
        const json answer = json::parse(reply->c_str(), nullptr, false);
        ASSERT_FALSE(answer.is_discarded()) << *reply;
        if (answer.is_array()) {
            EXPECT_TRUE(std::all_of(answer.begin(), answer.end(), is_response)) << *reply;
        } else {
            ASSERT_TRUE(is_response(answer)) << *reply;
        }
    }

    vdevice::Device device_;
};

TEST_P(RandomRequests, AreAllAnsweredByAProcessWhoseMemoryStaysFlat) {
    constexpr int kRequests = kSanitized ? 5000 : 100000;
    constexpr int kWarmUp = 1000;
    // What the fonts may take (see FontMemory), the layouts of the texts on show and the
    // allocator's leftovers. A leak of 42 bytes a request does not pass.
    constexpr long kFluctuation = 4 * 1024;  // KiB
    start(device_, sampleDevice());
    RequestMaker maker(GetParam());
    long warm = 0;
    long half = 0;
    for (int sent = 0; sent < kRequests; ++sent) {
        if (sent == kWarmUp) warm = ownMemory(device_.pid());
        if (sent == kRequests / 2) half = ownMemory(device_.pid());
        ASSERT_NO_FATAL_FAILURE(exchange(maker.next())) << "request " << sent;
    }
    EXPECT_EQ(result(device_, "Keepalive")["process"], "app_gui");
    if (kSanitized) {
        expectNoReport(device_);
        return;
    }
    const long end = ownMemory(device_.pid());
    RecordProperty("KiB",
                   std::to_string(warm) + " " + std::to_string(half) + " " + std::to_string(end));
    ASSERT_GT(warm, 0);
    EXPECT_LT(end, warm + kFluctuation);
    EXPECT_LT(end, half + kFluctuation / 2);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomRequests, testing::Values(20u, 21u, 24u));

}  // namespace
