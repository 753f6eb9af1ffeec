/**
 * @file stand_in.cpp
 * A small program in app_gui's place: it opens what app_gui opens and tells what it sees.
 *
 * Commands, as plain text: "fill AARRGGBB" paints the screen, "mode WxH" asks for a mode, "exists
 * PATH", "writable PATH", "statx PATH", "variable NAME", "event" (the last one heard), "exit N".
 * Whatever else comes is answered with itself.
 */
#include <fcntl.h>
#include <linux/fb.h>
#include <nanomsg/nn.h>
#include <nanomsg/pubsub.h>
#include <nanomsg/reqrep.h>
#include <nanomsg/survey.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace {

std::string last_event;

struct Screen {
    int fd = -1;
    fb_var_screeninfo variable{};
    fb_fix_screeninfo fixed{};
    unsigned char *memory = nullptr;

    bool open() {
        fd = ::open("/dev/fb1", O_RDWR | O_CLOEXEC);
        return fd >= 0 && look();
    }

    bool look() {
        if (ioctl(fd, FBIOGET_VSCREENINFO, &variable) != 0) return false;
        if (ioctl(fd, FBIOGET_FSCREENINFO, &fixed) != 0) return false;
        if (memory != nullptr) return true;
        void *map = mmap(nullptr, fixed.smem_len, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        memory = map == MAP_FAILED ? nullptr : static_cast<unsigned char *>(map);
        return memory != nullptr;
    }

    void fill(uint32_t pixel) {
        for (uint32_t y = 0; y < variable.yres; ++y) {
            auto *row = reinterpret_cast<uint32_t *>(memory + size_t(y) * fixed.line_length);
            for (uint32_t x = 0; x < variable.xres; ++x)
                row[x] = pixel;
        }
    }

    bool setMode(unsigned width, unsigned height) {
        fb_var_screeninfo wanted = variable;
        wanted.xres = wanted.xres_virtual = width;
        wanted.yres = wanted.yres_virtual = height;
        return ioctl(fd, FBIOPUT_VSCREENINFO, &wanted) == 0 && look();
    }
};

std::string yes_or_no(bool yes) {
    return yes ? "yes" : "no";
}

std::string looked_up(const char *path) {
    struct statx status;
    if (statx(AT_FDCWD, path, 0, STATX_BASIC_STATS, &status) != 0) {
        return "errno " + std::to_string(errno);
    }
    if (S_ISDIR(status.stx_mode)) return "folder";
    return "file of " + std::to_string(status.stx_size) + " bytes";
}

std::string answer(Screen &screen, const std::string &message) {
    std::istringstream words(message);
    std::string verb, noun;
    words >> verb >> noun;
    unsigned width = 0, height = 0;
    if (verb == "fill") {
        screen.fill(static_cast<uint32_t>(std::strtoul(noun.c_str(), nullptr, 16)));
        return "filled";
    }
    if (verb == "mode" && std::sscanf(noun.c_str(), "%ux%u", &width, &height) == 2) {
        return yes_or_no(screen.setMode(width, height));
    }
    if (verb == "exists") return yes_or_no(access(noun.c_str(), F_OK) == 0);
    if (verb == "writable") return yes_or_no(std::ofstream(noun, std::ios::app).good());
    if (verb == "statx") return looked_up(noun.c_str());
    if (verb == "event") return last_event;
    if (verb == "exit") std::exit(std::atoi(noun.c_str()));
    if (verb == "variable") {
        const char *value = std::getenv(noun.c_str());
        return value != nullptr ? value : "(unset)";
    }
    return message;
}

int subscriber(const char *address) {
    const int socket = nn_socket(AF_SP, NN_SUB);
    nn_setsockopt(socket, NN_SUB, NN_SUB_SUBSCRIBE, "", 0);
    nn_connect(socket, address);
    return socket;
}

void serve(Screen &screen, int socket, bool replies) {
    char *bytes = nullptr;
    const int length = nn_recv(socket, &bytes, NN_MSG, NN_DONTWAIT);
    if (length < 0) return;
    const std::string message(bytes, static_cast<size_t>(length));
    nn_freemsg(bytes);
    if (!replies) {
        last_event = message;
        return;
    }
    const std::string reply = answer(screen, message);
    nn_send(socket, reply.c_str(), reply.size() + 1, 0);
}

}  // namespace

int main() {
    Screen screen;
    if (!screen.open()) {
        std::perror("/dev/fb1");
        return 3;
    }
    nn_pollfd sockets[4] = {};
    sockets[0].fd = nn_socket(AF_SP, NN_REP);
    if (nn_bind(sockets[0].fd, "ipc:///tmp/ipc/app_gui.command") < 0) return 4;
    sockets[1].fd = nn_socket(AF_SP, NN_RESPONDENT);
    nn_connect(sockets[1].fd, "ipc:///tmp/ipc/keepalive");
    sockets[2].fd = subscriber("ipc:///tmp/ipc/app_codec.event");
    sockets[3].fd = subscriber("ipc:///tmp/ipc/app_stream.event");
    for (nn_pollfd &socket : sockets)
        socket.events = NN_POLLIN;
    std::puts("serving");
    std::fflush(stdout);
    for (;;) {
        if (nn_poll(sockets, 4, 1000) <= 0) continue;
        for (int i = 0; i < 4; ++i) {
            if (sockets[i].revents & NN_POLLIN) serve(screen, sockets[i].fd, i < 2);
        }
    }
}
