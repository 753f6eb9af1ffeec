// docs/protocol.md against the process: every example is run, every command and code has one.

#include <cstdio>
#include <fstream>
#include <regex>
#include <set>

#include "command_protocol/command_table.h"
#include "device_test.h"
#include "docs_examples.h"
#include "json_rpc.h"
#include "params.h"

using namespace e2e;
using docs_examples::Block;

namespace {

std::string documentText() {
    return fileText(PROTOCOL_DOCUMENT);
}

std::vector<Block> documentBlocks() {
    return docs_examples::fenced_blocks(documentText());
}

bool startsWith(const std::string &text, const std::string &start) {
    return text.compare(0, start.size(), start) == 0;
}

bool isReply(const Block &block) {
    return startsWith(block.info, "json reply");
}

// ---- devices ------------------------------------------------------------------------------------

/** The picture that an example shows. */
void putPicture(const vdevice::RootPaths &paths) {
    QImage picture(64, 64, QImage::Format_RGB32);
    picture.fill(QColor(0, 255, 0));
    ASSERT_TRUE(picture.save(QString::fromStdString(paths.tmp() + "/logo.png")));
}

/** Gives a capability of the first interface another value. */
void setCapability(const vdevice::RootPaths &paths, const std::string &name, int value) {
    const std::string file = paths.config() + "/capability_sets/VideoOutputInterfaces.json";
    json interfaces = json::parse(fileText(file));
    ASSERT_TRUE(interfaces[0].contains(name)) << name;
    interfaces[0][name] = value;
    std::ofstream(file) << interfaces;
}

/**
 * A device whose peers are not there: before the process starts, their sockets are removed, and the
 * addresses are free for the commands of an example.
 */
vdevice::DeviceOptions deviceWithoutPeers() {
    vdevice::DeviceOptions options = sampleDevice();
    const std::string program = options.program;
    const std::string folder = program.substr(0, program.rfind("/bin/"));
    options.program = "/bin/sh";
    options.arguments = {"-c",
                         "cd /tmp/ipc && rm -f keepalive app_codec.event app_stream.event && "
                         "exec " +
                             program};
    options.binds = {{program, program, false}, {folder + "/lib", folder + "/lib", false}};
    return options;
}

// ---- blocks -------------------------------------------------------------------------------------

/** Runs the blocks of the document one after another on one device. */
class Examples {
public:
    explicit Examples(std::vector<Block> blocks) : m_blocks(std::move(blocks)) {}

    void run(vdevice::Device &device) {
        for (m_at = 0; m_at < m_blocks.size() && !testing::Test::HasFatalFailure(); ++m_at) {
            SCOPED_TRACE("docs/protocol.md:" + std::to_string(block().line));
            ASSERT_NO_FATAL_FAILURE(runBlock(device));
        }
    }

private:
    const Block &block() const { return m_blocks[m_at]; }

    void runBlock(vdevice::Device &device) {
        static constexpr struct {
            const char *info;  ///< how the words behind the fence start
            void (Examples::*run)(vdevice::Device &);
        } kKinds[] = {
            {"json request without reply", &Examples::runUnanswered},
            {"json request repeated=", &Examples::runRepeated},
            {"json request WatermarkSupported=", &Examples::runWithCapability},
            {"json request", &Examples::runRequest},
            {"json survey", &Examples::runSurvey},
            {"json codec-event", &Examples::runCodecEvent},
            {"json stream-event", &Examples::runStreamEvent},
            {"screen", &Examples::runScreen},
            {"console", &Examples::leaveOut},
        };
        for (const auto &kind : kKinds) {
            if (startsWith(block().info, kind.info)) return (this->*kind.run)(device);
        }
        FAIL() << "a block that nobody runs: " << block().info;
    }

    /** Takes the reply that has to follow and holds it against the one received. */
    void expectReply(const std::optional<std::string> &reply, const char *info = "json reply") {
        ASSERT_TRUE(reply) << "no reply to " << block().text;
        ASSERT_LT(++m_at, m_blocks.size());
        ASSERT_EQ(block().info, info);
        EXPECT_EQ(docs_examples::text_difference(block().text, reply->c_str()), "") << *reply;
    }

    void runRequest(vdevice::Device &device) { expectReply(device.request(block().text)); }

    void runUnanswered(vdevice::Device &device) {
        EXPECT_FALSE(device.request(block().text, vdevice::Milliseconds(200)));
    }

    void runRepeated(vdevice::Device &device) {
        const json once = json::parse(block().text);
        ASSERT_EQ(once.size(), 1u);
        const auto count = std::stoul(block().info.substr(block().info.find('=') + 1));
        const auto reply =
            device.request(json(count, once[0]).dump(), vdevice::Milliseconds(20000));
        ASSERT_TRUE(reply);
        const json replies = json::parse(*reply);
        ASSERT_EQ(replies.size(), count);
        expectReply(replies.back().dump(), "json reply last");
    }

    void runWithCapability(vdevice::Device &) {
        const std::string word = block().info.substr(std::string("json request ").size());
        const size_t equals = word.find('=');
        vdevice::DeviceOptions options = sampleDevice();
        options.prepare = [&](const vdevice::RootPaths &paths) {
            setCapability(paths, word.substr(0, equals), std::stoi(word.substr(equals + 1)));
        };
        vdevice::Device other;
        ASSERT_NO_FATAL_FAILURE(start(other, options));
        runRequest(other);
    }

    /** The supervisor counts its surveys; its n-th stands for the one shown. */
    void runSurvey(vdevice::Device &device) {
        const auto answer = device.survey();
        ASSERT_TRUE(answer);
        json reply = json::parse(*answer);
        const json shown = json::parse(block().text);
        ASSERT_EQ(shown, json::parse(request("Keepalive", nullptr))
                             .patch(json::parse(R"([{"op": "remove", "path": "/params"}])")));
        reply["id"] = shown["id"];
        expectReply(reply.dump());
    }

    void runCodecEvent(vdevice::Device &device) { ASSERT_TRUE(device.publishCodec(block().text)); }

    void runStreamEvent(vdevice::Device &device) {
        ASSERT_TRUE(device.publishStream(block().text));
    }

    /** Lines such as "(100, 1) #FF0000" or "(100, 1) transparent". */
    void runScreen(vdevice::Device &device) {
        const std::regex line(R"(\((\d+), (\d+)\) (#[0-9A-F]{6}|transparent))");
        std::istringstream lines(block().text);
        for (std::string text; std::getline(lines, text);) {
            std::smatch parts;
            ASSERT_TRUE(std::regex_match(text, parts, line)) << text;
            const QPoint place(std::stoi(parts[1]), std::stoi(parts[2]));
            const QColor colour(QString::fromStdString(parts[3]));
            QImage seen;
            EXPECT_TRUE(device.waitForPixels(
                [&](const QImage &layer) { return layer.pixel(place) == colour.rgba(); },
                vdevice::Milliseconds(5000), &seen))
                << text << " is " << std::hex << seen.pixel(place);
        }
    }

    /** Run by tests of their own, on a device without peers. */
    void leaveOut(vdevice::Device &) {}

    std::vector<Block> m_blocks;
    size_t m_at = 0;
};

TEST(ProtocolDocument, ShowsWhatTheDeviceAnswersAndDraws) {
    vdevice::DeviceOptions options = sampleDevice();
    options.prepare = putPicture;
    vdevice::Device device;
    ASSERT_NO_FATAL_FAILURE(start(device, options));
    const std::vector<Block> blocks = documentBlocks();
    ASSERT_GT(blocks.size(), 50u);
    Examples(blocks).run(device);
}

// ---- console ------------------------------------------------------------------------------------

std::string replaced(std::string text, const std::string &what, const std::string &with) {
    for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
        text.replace(at, what.size(), with);
    }
    return text;
}

/** Runs a command of the document in a shell where the device's addresses are those of `device`. */
std::string shellOutput(const vdevice::Device &device, const std::string &command) {
    const std::string ipc = device.paths().tmp() + "/ipc/";
    const std::string script =
        "exec 2>&1\n"
        "app_guictl() {\n"
        "    if [ \"$1\" = publish ]; then\n"
        "        '" APP_GUICTL "' \"$@\" --address \"ipc://" +
        ipc +
        "app_$2.event\"\n"
        "    else\n"
        "        '" APP_GUICTL "' --socket 'ipc://" +
        ipc +
        "app_gui.command' \"$@\"\n"
        "    fi\n"
        "}\n" +
        replaced(command, "/tmp/ipc/", ipc) + "\n";
    FILE *pipe = popen(script.c_str(), "r");
    std::string output;
    char buffer[4096];
    for (size_t size; pipe && (size = fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
        output.append(buffer, size);
    }
    if (pipe) pclose(pipe);
    return output;
}

/** Runs the console blocks that do, or do not, name `program`. */
void runConsoleBlocks(const std::string &program, bool naming) {
    vdevice::Device device;
    ASSERT_NO_FATAL_FAILURE(start(device, deviceWithoutPeers()));
    int steps = 0;
    for (const Block &block : documentBlocks()) {
        const bool names = block.text.find(program) != std::string::npos;
        if (block.info != "console" || names != naming) continue;
        SCOPED_TRACE("docs/protocol.md:" + std::to_string(block.line));
        for (const docs_examples::ConsoleStep &step : docs_examples::console_steps(block.text)) {
            ++steps;
            const std::string output = shellOutput(device, step.command);
            EXPECT_EQ(docs_examples::text_difference(step.output, output), "") << step.command;
        }
    }
    EXPECT_GE(steps, 5);
}

TEST(ProtocolDocument, ShowsWhatAppGuictlPrints) {
    runConsoleBlocks("nanocat", false);
}

TEST(ProtocolDocument, ShowsWhatNanocatPrints) {
    if (std::system("command -v nanocat >/dev/null") != 0) {
        GTEST_SKIP() << "nanocat (Debian package nanomsg-utils) is not installed";
    }
    runConsoleBlocks("nanocat", true);
}

// ---- completeness -------------------------------------------------------------------------------

/** What the examples show: the methods that have a result, and the codes of errors. */
struct Shown {
    std::set<std::string> methods;
    std::set<int> codes;
};

Shown whatIsShown() {
    Shown shown;
    const std::vector<Block> blocks = documentBlocks();
    for (size_t i = 1; i < blocks.size(); ++i) {
        if (!isReply(blocks[i])) continue;
        const json reply = json::parse(blocks[i].text);
        const json request = json::parse(blocks[i - 1].text, nullptr, false);
        if (!reply.is_object()) continue;
        if (reply.contains("error")) shown.codes.insert(reply["error"]["code"].get<int>());
        if (reply.contains("result")) shown.methods.insert(request["method"]);
    }
    return shown;
}

TEST(ProtocolDocument, HasASectionAndAnExampleForEveryCommand) {
    const std::string text = documentText();
    const Shown shown = whatIsShown();
    for (const command_protocol::Command &command : command_protocol::kCommands) {
        EXPECT_THAT(text, testing::HasSubstr("\n### " + std::string(command.name) + "\n"));
        EXPECT_EQ(shown.methods.count(command.name), 1u) << command.name;
    }
}

/** Every code with its message: those of JSON-RPC and those that the device describes. */
std::map<int, std::string> allCodes() {
    std::map<int, std::string> codes = {{-32700, "Parse error"},
                                        {-32600, "Invalid Request"},
                                        {-32601, "Method not found"},
                                        {-32602, "Invalid params"},
                                        {-32603, "Internal error"}};
    vdevice::Device device;
    start(device, sampleDevice());
    const json document = result(device, "rpc.discover");
    for (const json &error : document["components"]["errors"]) {
        codes[error["code"]] = error["message"];
    }
    return codes;
}

TEST(ProtocolDocument, HasARowAndAnExampleForEveryCode) {
    const std::string text = documentText();
    const std::set<int> shown = whatIsShown().codes;
    const std::map<int, std::string> codes = allCodes();
    EXPECT_GT(codes.size(), 5u);
    for (const auto &[code, message] : codes) {
        const std::string row = "\n| " + std::to_string(code) + " | " + message + " | ";
        EXPECT_THAT(text, testing::HasSubstr(row));
        const bool never = text.find(row + "not answered by any command") != std::string::npos;
        EXPECT_NE(shown.count(code) == 1, never) << code;
    }
}

TEST(ProtocolDocument, NamesTheLimitsOfTheLibrary) {
    const std::string text = documentText();
    const size_t start = text.find("\n## Limits\n");
    ASSERT_NE(start, std::string::npos);
    const std::string limits = text.substr(start, text.find("\n## ", start + 1) - start);
    using namespace command_protocol;
    const std::string rows[] = {
        "| message | " + std::to_string(kMaxMessage) + " bytes",
        "| nesting of arrays and objects in a message | " + std::to_string(kMaxDepth) + " levels",
        "| requests of a batch | " + std::to_string(kMaxBatch) + " |",
        "| reply of a batch | once it has " + std::to_string(kMaxBatchReply) + " bytes",
        "| `records` of a request | " + std::to_string(kMaxRecords) + " |",
        "| `if_name` of `params` | " + std::to_string(kMaxInterfaceName) + " bytes",
    };
    for (const std::string &row : rows) {
        EXPECT_THAT(limits, testing::HasSubstr(row));
    }
}

}  // namespace
