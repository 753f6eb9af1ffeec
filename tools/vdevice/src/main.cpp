/**
 * @file main.cpp
 * vdevice: a device on a PC, from the command line.
 */
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <fstream>

#include "arrangement_query.h"
#include "device_files.h"
#include "tour.h"

namespace {

using namespace vdevice;

/** What the user asked for. */
struct Arguments {
    DeviceOptions device;
    std::string sandbox = "auto";
    std::string mode = "1920x1080";
    std::string format = "argb8888";
    std::string self;  ///< the command as it was called
    std::string out = "out";
    std::string root;
    std::string message;
    unsigned timeout = 5000;  ///< milliseconds for a reply
    bool layerOnly = false;
};

void print(const std::string &line) {
    std::puts(line.c_str());
    std::fflush(stdout);
}

int fail(const std::string &reason) {
    std::fprintf(stderr, "vdevice: %s\n", reason.c_str());
    return 1;
}

/** Settles the sandbox and says which one it is. */
bool choose_sandbox(Arguments &arguments, std::string *error) {
    const std::map<std::string, SandboxKind> named = {{"bwrap", SandboxKind::kBwrap},
                                                      {"proot", SandboxKind::kProot}};
    const auto asked = named.find(arguments.sandbox);
    const SandboxKind kind = asked == named.end() ? find_sandbox() : asked->second;
    if (!sandbox_works(kind)) {
        *error = arguments.sandbox == "auto"
                     ? "neither bwrap nor proot works here (Debian packages bubblewrap, proot)"
                     : arguments.sandbox + " does not work here";
        return false;
    }
    arguments.device.sandbox = kind;
    print(std::string("sandbox: ") + sandbox_name(kind));
    return true;
}

bool read_framebuffer_options(Arguments &arguments, std::string *error) {
    fbemu::Options &options = arguments.device.framebuffer;
    if (std::sscanf(arguments.mode.c_str(), "%5ux%5u", &options.width, &options.height) != 2) {
        *error = "a mode is given as WIDTHxHEIGHT, e.g. 1920x1080";
        return false;
    }
    options.format = arguments.format.c_str();
    return true;
}

int tour(Arguments &arguments) {
    std::string error;
    if (!choose_sandbox(arguments, &error)) return fail(error);
    const int faults = walk_tour(arguments.device, arguments.out, print);
    return faults == 0 ? 0 : fail(std::to_string(faults) + " faults");
}

void print_instructions(const Device &device, const std::string &self) {
    print("root folder:     " + device.paths().root);
    print("command socket:  " + device.commandAddress() + "  (nanomsg, request and reply)");
    print("configuration:   " + device.configFolder());
    print("output:          " + device.paths().out() + "  " + device.paths().err());
    const std::string root = " --root " + device.paths().root;
    print("picture:         " + self + " shot" + root + " --out shot.png");
    print("command:         " + self + " call" + root +
          " '{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"rpc.discover\"}'");
    print("end:             Ctrl+C");
}

/** Surveys once a second until SIGINT or SIGTERM, which must be blocked, or the process's end. */
int keep_up(Device &device, const sigset_t &ends) {
    const timespec second{1, 0};
    while (sigtimedwait(&ends, nullptr, &second) < 0) {
        if (!device.running()) {
            return fail("app_gui ended with status " + std::to_string(device.exitStatus()) + "\n" +
                        device.standardError());
        }
        if (!device.survey()) print("no answer to the keepalive survey");
    }
    return 0;
}

int stay(Arguments &arguments) {
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    sigprocmask(SIG_BLOCK, &ends, nullptr);
    std::string error;
    if (!choose_sandbox(arguments, &error)) return fail(error);
    if (!read_framebuffer_options(arguments, &error)) return fail(error);
    Device device;
    if (!device.start(arguments.device, &error)) return fail(error);
    print_instructions(device, arguments.self);
    return keep_up(device, ends);
}

int shot(const Arguments &arguments) {
    const RootPaths paths{arguments.root};
    FramebufferFile framebuffer;
    std::string error;
    if (!framebuffer.open(paths.framebuffer(), &error)) return fail(error);
    QImage picture = framebuffer.layer();
    if (!arguments.layerOnly) {
        CommandClient client(paths.commandAddress());
        const auto arrangement = query_arrangement([&](const std::string &message) {
            return client.request(message, Milliseconds(arguments.timeout));
        });
        if (!arrangement) return fail("the device does not tell its split");
        picture = compose(test_video(*arrangement, picture.size()), picture);
    }
    if (!picture.save(QString::fromStdString(arguments.out), "PNG")) {
        return fail(arguments.out + ": not written");
    }
    return 0;
}

int call(const Arguments &arguments) {
    CommandClient client(RootPaths{arguments.root}.commandAddress());
    const auto reply = client.request(arguments.message, Milliseconds(arguments.timeout));
    if (!reply) return fail("no reply");
    print(*reply);
    return 0;
}

void add_device_options(CLI::App *command, Arguments &arguments) {
    DeviceOptions &device = arguments.device;
    command->add_option("--sandbox", arguments.sandbox, "bwrap, proot, or auto: what works here")
        ->check(CLI::IsMember({"auto", "bwrap", "proot"}))
        ->capture_default_str();
    command->add_option("--program", device.program, "the process")->capture_default_str();
    command->add_option("--shim", device.shim, "libfbemu.so")->capture_default_str();
    command->add_option("--config", device.config, "configuration folder, copied")
        ->capture_default_str();
    command->add_option("--font", device.fonts, "font files for the device's font folder");
}

/** For the commands that talk to a device that is up. */
void add_root_options(CLI::App *command, Arguments &arguments) {
    command->add_option("--root", arguments.root, "its root folder")->required();
    command->add_option("--timeout", arguments.timeout, "milliseconds to wait for a reply")
        ->capture_default_str();
}

void add_stay_options(CLI::App *command, Arguments &arguments) {
    add_device_options(command, arguments);
    command->add_option("--mode", arguments.mode, "start mode of the framebuffer")
        ->capture_default_str();
    command->add_option("--format", arguments.format, "pixel format of the framebuffer")
        ->check([](const std::string &name) {
            return fbemu::is_format(name.c_str()) ? "" : "unknown format " + name;
        })
        ->capture_default_str();
    command->add_option("--padding", arguments.device.framebuffer.padding,
                        "bytes that the driver adds to each row");
}

}  // namespace

int main(int argc, char *argv[]) {
    Arguments arguments;
    arguments.self = argv[0];
    const DeviceFiles files = find_device_files();
    arguments.device.program = files.program;
    arguments.device.shim = files.shim;
    arguments.device.config = files.config;
    arguments.device.fonts = files.fonts;

    CLI::App app("A device on a PC: app_gui on an emulated framebuffer, with its peers.",
                 "vdevice");
    app.require_subcommand(1);
    CLI::App *tourCommand =
        app.add_subcommand("tour", "start a device, show it all, save pictures");
    add_device_options(tourCommand, arguments);
    tourCommand->add_option("--out", arguments.out, "folder for the pictures")
        ->capture_default_str();
    CLI::App *stayCommand = app.add_subcommand("stay", "start a device and keep it up");
    add_stay_options(stayCommand, arguments);
    CLI::App *shotCommand = app.add_subcommand("shot", "picture of a device that is up");
    add_root_options(shotCommand, arguments);
    shotCommand->add_option("--out", arguments.out, "picture file (PNG)")->required();
    shotCommand->add_flag("--layer", arguments.layerOnly, "the layer alone, with its alpha");
    CLI::App *callCommand = app.add_subcommand("call", "send a message to a device that is up");
    add_root_options(callCommand, arguments);
    callCommand->add_option("message", arguments.message, "JSON-RPC 2.0 text")->required();
    CLI11_PARSE(app, argc, argv);

    if (tourCommand->parsed()) return tour(arguments);
    if (stayCommand->parsed()) return stay(arguments);
    if (shotCommand->parsed()) return shot(arguments);
    return call(arguments);
}
