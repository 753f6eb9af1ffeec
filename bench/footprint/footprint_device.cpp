// Runs start_probe with a program of the build on a virtual device with the sample configuration:
//
//     footprint_device MODE learn|time PICTURE PROGRAM [NAME=VALUE...]
//
// MODE is the framebuffer's, e.g. 1920x1080; PROGRAM a file beside this one; the variables are
// added to the program's environment. Prints what start_probe prints.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "device.h"
#include "device_files.h"

namespace {

namespace fs = std::filesystem;

constexpr vdevice::Milliseconds kLongest{150000};
constexpr char kPictureInside[] = "/tmp/picture";

bool set_mode(const std::string &mode, fbemu::Options *framebuffer) {
    return std::sscanf(mode.c_str(), "%ux%u", &framebuffer->width, &framebuffer->height) == 2;
}

vdevice::DeviceOptions options_for(char **arguments, int variables) {
    const vdevice::DeviceFiles files = vdevice::find_device_files();
    const fs::path bin = fs::path(files.program).parent_path();
    const std::string picture = fs::absolute(arguments[2]), program = bin / arguments[3];
    // A bind needs a file.
    std::ofstream(picture, std::ios::app);
    vdevice::DeviceOptions options;
    options.program = bin / "start_probe";
    options.arguments = {arguments[1], kPictureInside, program};
    options.shim = files.shim;
    options.config = files.config;
    options.fonts = files.fonts;
    options.binds = {{picture, kPictureInside, true}, {program, program, false}};
    options.waitUntilServing = false;
    for (int i = 0; i < variables; ++i) {
        const std::string variable = arguments[4 + i];
        const size_t equals = variable.find('=');
        if (equals != std::string::npos) {
            options.environment[variable.substr(0, equals)] = variable.substr(equals + 1);
        }
    }
    return options;
}

}  // namespace

int main(int argc, char **argv) {
    fbemu::Options framebuffer;
    if (argc < 5 || !set_mode(argv[1], &framebuffer)) {
        std::fprintf(stderr,
                     "usage: footprint_device MODE learn|time PICTURE PROGRAM [NAME=VALUE...]\n");
        return 2;
    }
    vdevice::DeviceOptions options = options_for(argv + 1, argc - 5);
    options.framebuffer = framebuffer;
    vdevice::Device device;
    std::string error;
    if (!device.start(options, &error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    const bool ended = device.waitForEnd(kLongest);
    std::fputs(device.standardOutput().c_str(), stdout);
    if (ended && device.exitStatus() == 0) return 0;
    std::fprintf(stderr, "%s %s: %s\n", argv[1], argv[4], device.standardError().c_str());
    return 1;
}
