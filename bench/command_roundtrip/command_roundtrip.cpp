// How long a command takes beside the bare transport: round trips to a running device's command
// socket and, in turn with them, to an echo process that moves as many bytes and does nothing else.
// Nothing on the device changes: the Set sends back what the Get has read.

#include <nanomsg/nn.h>
#include <nanomsg/reqrep.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "echo_process.h"

namespace {

using Json = nlohmann::ordered_json;
using Microseconds = std::chrono::duration<double, std::micro>;

class Requester {
public:
    explicit Requester(const std::string &address) : m_socket(nn_socket(AF_SP, NN_REQ)) {
        const int timeout_ms = 5000, any_size = -1;
        nn_setsockopt(m_socket, NN_SOL_SOCKET, NN_RCVTIMEO, &timeout_ms, sizeof timeout_ms);
        nn_setsockopt(m_socket, NN_SOL_SOCKET, NN_RCVMAXSIZE, &any_size, sizeof any_size);
        if (nn_connect(m_socket, address.c_str()) < 0) throw std::runtime_error(address);
    }
    ~Requester() { nn_close(m_socket); }
    Requester(const Requester &) = delete;
    Requester &operator=(const Requester &) = delete;

    std::string ask(const std::string &request) const {
        void *reply = nullptr;
        nn_send(m_socket, request.data(), request.size(), 0);
        const int length = nn_recv(m_socket, &reply, NN_MSG, 0);
        if (length < 0) throw std::runtime_error(nn_strerror(nn_errno()));
        std::string text(static_cast<char *>(reply), length);
        nn_freemsg(reply);
        return text;
    }

    double timed(const std::string &request) const {
        const auto start = std::chrono::steady_clock::now();
        ask(request);
        return Microseconds(std::chrono::steady_clock::now() - start).count();
    }

private:
    int m_socket;
};

/** Round trips of one command and of as many bytes without it. */
struct Series {
    const char *name;
    std::string command;
    std::string echo;
    size_t reply_length;
    std::vector<double> command_us;
    std::vector<double> echo_us;
};

double percentile(std::vector<double> *values, double part) {
    const auto at = values->begin() + static_cast<long>((values->size() - 1) * part);
    std::nth_element(values->begin(), at, values->end());
    return *at;
}

std::string request(const char *method, const Json &params) {
    return Json{{"jsonrpc", "2.0"}, {"id", 1}, {"method", method}, {"params", params}}.dump();
}

/** The reply, when it is a result and no error. */
std::string checked_reply(const Requester &device, const std::string &message) {
    const std::string reply = device.ask(message);
    if (reply.find("\"error\"") != std::string::npos) throw std::runtime_error(reply.c_str());
    return reply;
}

Series make_series(const char *name, const Requester &device, const std::string &command) {
    const size_t reply_length = checked_reply(device, command).size();
    return {
        name,         command, echo_request(command.size(), static_cast<uint32_t>(reply_length)),
        reply_length, {},      {}};
}

std::string set_of_what_is(const Requester &device, const std::string &if_name) {
    Json params = {{"if_name", if_name}};
    const Json reply =
        Json::parse(checked_reply(device, request("GetWatermarkOSDParameter", params)).c_str());
    params["records"] = reply.at("result");
    return request("SetWatermarkOSDParameter", params);
}

/** Prints one command's figures and returns its ratio at the median. */
double report(Series *series) {
    const double command = percentile(&series->command_us, 0.5);
    const double echo = percentile(&series->echo_us, 0.5);
    std::printf(
        "%-28s %5zu / %5zu bytes   p50 %7.1f us, echo %7.1f us   p99 %7.1f us, echo %7.1f us"
        "   ratio of p50 %.2f\n",
        series->name, series->command.size(), series->reply_length, command, echo,
        percentile(&series->command_us, 0.99), percentile(&series->echo_us, 0.99), command / echo);
    return command / echo;
}

struct Options {
    std::string socket = "ipc:///tmp/ipc/app_gui.command";
    std::string if_name = "HDMI1";
    int channel = 0;
    int rounds = 5000;
    double limit = 0;
};

int measure(const Options &options) {
    const EchoProcess echo_process;
    const Requester echo(echo_process.address());
    const Requester device(options.socket);
    Series all[] = {
        make_series("Get of a channel's OSD texts", device,
                    request("GetVideoOutputOSDParameter", {{"Channel", options.channel}})),
        make_series("Set of one watermark", device, set_of_what_is(device, options.if_name)),
    };
    const int warm_up = options.rounds / 10;
    for (int round = -warm_up; round < options.rounds; ++round) {
        for (Series &series : all) {
            const double echo_us = echo.timed(series.echo);
            const double command_us = device.timed(series.command);
            if (round < 0) continue;
            series.echo_us.push_back(echo_us);
            series.command_us.push_back(command_us);
        }
    }
    bool within = true;
    for (Series &series : all) {
        const double ratio = report(&series);
        within = within && (options.limit == 0 || ratio <= options.limit);
    }
    return within ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
    CLI::App app("Command round trips of a running device beside bare ones of the same sizes.");
    Options options;
    app.add_option("--socket", options.socket, "command socket")->capture_default_str();
    app.add_option("--if-name", options.if_name, "interface of the Set")->capture_default_str();
    app.add_option("--channel", options.channel, "channel of the Get")->capture_default_str();
    app.add_option("--rounds", options.rounds, "round trips of each kind")
        ->capture_default_str()
        ->check(CLI::Range(1, 1000000));
    app.add_option("--limit", options.limit, "end with 1 when a ratio is above it, 0 for none")
        ->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    try {
        return measure(options);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "command_roundtrip: %s\n", error.what());
        return 2;
    }
}
