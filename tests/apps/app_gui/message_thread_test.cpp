/**
 * @file message_thread_test.cpp The message thread, in a process of its own, over real sockets.
 *
 * The thread's addresses are fixed. Where the kernel lets the test have a /tmp/ipc of its own it
 * has one; elsewhere a lock keeps two runs of this test apart.
 */

#include <dlfcn.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <nanomsg/nn.h>
#include <nanomsg/pubsub.h>
#include <nanomsg/reqrep.h>
#include <nanomsg/survey.h>
#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QEventLoop>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "gui_cfg_store.h"
#include "store_fixture.h"

using namespace store_test;
namespace fs = std::filesystem;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

extern char **environ;

namespace {

constexpr const char *kCommand = "ipc:///tmp/ipc/app_gui.command";
constexpr const char *kKeepalive = "ipc:///tmp/ipc/keepalive";
constexpr const char *kCodec = "ipc:///tmp/ipc/app_codec.event";
constexpr const char *kStream = "ipc:///tmp/ipc/app_stream.event";
constexpr const char *kSocketFile = "/tmp/ipc/app_gui.command";
constexpr int kPatienceMs = 20000;

// ---- faults of nanomsg in the device process ----------------------------------------------------

constexpr const char *kFaultVariable = "MESSAGE_THREAD_TEST_FAULT";

/** In a function's place: each poll is told. */
constexpr const char *kWatchPolls = "watch_polls";

/** Calls number `first` to `last` of a function fail with `error`. */
struct Fault {
    std::string function;  ///< "" for none
    int first = 0, last = 0;
    int error = 0;
    int calls = 0;
} fault;

void read_fault() {
    if (const char *text = std::getenv(kFaultVariable)) {
        std::istringstream(text) >> fault.function >> fault.first >> fault.last >> fault.error;
    }
}

bool fails(const char *function) {
    if (fault.function != function) return false;
    ++fault.calls;
    errno = fault.error;
    return fault.calls >= fault.first && fault.calls <= fault.last;
}

/** With a fault, the sockets' lives are told. */
void tell(const char *what, int socket) {
    if (fault.function.empty()) return;
    std::printf("%s %d\n", what, socket);
    std::fflush(stdout);
}

template <typename Function>
Function *real(const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// These stand in for the library's within this program.
extern "C" {

int nn_socket(int domain, int protocol) {
    const int socket = real<decltype(nn_socket)>("nn_socket")(domain, protocol);
    tell("opened", socket);
    return socket;
}

int nn_close(int socket) {
    tell("closed", socket);
    return real<decltype(nn_close)>("nn_close")(socket);
}

int nn_setsockopt(int socket, int level, int option, const void *value, size_t size) {
    if (level == NN_SUB && option == NN_SUB_SUBSCRIBE && fails("subscribe")) return -1;
    return real<decltype(nn_setsockopt)>("nn_setsockopt")(socket, level, option, value, size);
}

int nn_connect(int socket, const char *address) {
    if (fails("nn_connect")) return -1;
    return real<decltype(nn_connect)>("nn_connect")(socket, address);
}

int nn_poll(nn_pollfd *entries, int count, int timeout) {
    if (fault.function == kWatchPolls) {
        const bool stale = std::any_of(entries, entries + count,
                                       [](const nn_pollfd &entry) { return entry.revents != 0; });
        std::printf("poll with %s answers\n", stale ? "stale" : "no");
        std::fflush(stdout);
    }
    if (fails("nn_poll")) return -1;
    return real<decltype(nn_poll)>("nn_poll")(entries, count, timeout);
}

int nn_recv(int socket, void *buffer, size_t size, int flags) {
    if (fails("nn_recv")) return -1;
    return real<decltype(nn_recv)>("nn_recv")(socket, buffer, size, flags);
}

int nn_send(int socket, const void *buffer, size_t size, int flags) {
    if (fails("nn_send")) return -1;
    return real<decltype(nn_send)>("nn_send")(socket, buffer, size, flags);
}

}  // extern "C"

namespace {

// ---- the device process -------------------------------------------------------------------------

void *message_thread(void *) {
    const void *const result = recv_msg_routine(nullptr);
    std::printf("thread returned %s\n", result ? "something" : "null");
    std::fflush(stdout);
    return nullptr;
}

/** Opens sockets until only `left` can still be opened. */
void leave_sockets(int left) {
    std::vector<int> sockets;
    for (int s = nn_socket(AF_SP, NN_PUB); s >= 0; s = nn_socket(AF_SP, NN_PUB)) {
        sockets.push_back(s);
    }
    for (int i = 0; i < left; ++i) {
        nn_close(sockets.back());
        sockets.pop_back();
    }
}

/** How many sockets can be opened now. */
int free_sockets() {
    int count = 0;
    while (nn_socket(AF_SP, NN_PUB) >= 0)
        ++count;
    return count;
}

/**
 * What the test starts as a child: the store of `folder`, the message thread, and a line on
 * standard output for every event that is posted.
 * @param sockets  sockets that the thread can open; below 0: as many as it likes.
 */
int run_device(const char *folder, int sockets) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    read_fault();
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
    int argc = 1;
    char name[] = "device";
    char *argv[] = {name, nullptr};
    QApplication application(argc, argv);
    gui_cfg::config_root = folder;
    if (init_parameters() != 0) return 1;
    take_events();
    if (sockets >= 0) leave_sockets(sockets);
    pthread_t thread;
    if (pthread_create(&thread, nullptr, message_thread, nullptr) != 0) return 1;
    if (sockets >= 0) {
        pthread_join(thread, nullptr);
        std::printf("free sockets %d\n", free_sockets());
        std::fflush(nullptr);
        _exit(0);
    }
    for (;;) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        for (const PostedEvent &event : take_events()) {
            std::printf("posted %d with %d\n", event.type, static_cast<int>(event.param));
        }
        std::fflush(stdout);
    }
}

// ---- the test's side ----------------------------------------------------------------------------

using Clock = std::chrono::steady_clock;

bool expired(Clock::time_point start, int milliseconds = kPatienceMs) {
    return Clock::now() - start > std::chrono::milliseconds(milliseconds);
}

/** The reading end of a pipe and what came out of it so far. */
class Output {
public:
    explicit Output(int fd) : fd_(fd) {}
    ~Output() { close(fd_); }

    /** Waits until the text has come; false when it does not within the time. */
    bool wait_for(const std::string &text, int milliseconds = kPatienceMs) {
        const auto start = Clock::now();
        while (seen.find(text, from_) == seen.npos) {
            pollfd entry = {fd_, POLLIN, 0};
            if (expired(start, milliseconds)) return false;
            if (poll(&entry, 1, 10) > 0 && !read_some()) return false;
        }
        return true;
    }
    /** From now on only later text is looked for. */
    void forget() {
        pollfd entry = {fd_, POLLIN, 0};
        while (poll(&entry, 1, 0) > 0 && read_some()) {
        }
        from_ = seen.size();
    }

    std::string seen;

private:
    bool read_some() {
        char buffer[4096];
        const ssize_t count = read(fd_, buffer, sizeof buffer);
        if (count <= 0) return false;
        seen.append(buffer, static_cast<size_t>(count));
        return true;
    }

    int fd_;
    size_t from_ = 0;
};

/** The child process. */
class Device {
public:
    Device(const fs::path &folder, int sockets = -1) {
        int out[2];
        int err[2];
        EXPECT_EQ(pipe2(out, O_CLOEXEC), 0);
        EXPECT_EQ(pipe2(err, O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, err[1], STDERR_FILENO);
        std::string root = folder.string() + "/";
        std::string left = std::to_string(sockets);
        // Not /proc/self/exe, which an emulator is where the test runs under one.
        char *program = program_invocation_name;
        char mode[] = "--device";
        char *argv[] = {program, mode, root.data(), left.data(), nullptr};
        EXPECT_EQ(posix_spawn(&pid, program, &actions, nullptr, argv, environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        close(out[1]);
        close(err[1]);
        output = std::make_unique<Output>(out[0]);
        errors = std::make_unique<Output>(err[0]);
    }
    ~Device() {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }

    std::string debug_line(int line, const std::string &message) const {
        return "<DEBUG file apps/app_gui/src/app_gui.cpp, line " + std::to_string(line) +
               ">: " + message + "\n";
    }
    std::string enter() const {
        return debug_line(143, "thread recv_msg_routine, pid = " + std::to_string(pid) + " Enter");
    }
    std::string exit() const {
        return debug_line(307, "thread recv_msg_routine, pid = " + std::to_string(pid) + " Exit");
    }

    /** Thread id of the message thread, found by its name; 0 when there is none. */
    pid_t message_thread_id() const {
        for (const auto &entry : fs::directory_iterator("/proc/" + std::to_string(pid) + "/task")) {
            std::string name;
            std::getline(std::ifstream(entry.path() / "comm"), name);
            if (name == "app_gui_msg") return std::atoi(entry.path().filename().c_str());
        }
        return 0;
    }

    pid_t pid = 0;
    std::unique_ptr<Output> output;
    std::unique_ptr<Output> errors;
};

/** A nanomsg socket of the test. */
class Socket {
public:
    explicit Socket(int protocol) : fd(nn_socket(AF_SP, protocol)) { set_patience(kPatienceMs); }
    ~Socket() { nn_close(fd); }

    void set_patience(int milliseconds) {
        nn_setsockopt(fd, NN_SOL_SOCKET, NN_RCVTIMEO, &milliseconds, sizeof milliseconds);
    }
    void send(const std::string &text) {
        EXPECT_EQ(nn_send(fd, text.data(), text.size(), 0), static_cast<int>(text.size()))
            << nn_strerror(nn_errno());
    }
    /** The next message with every byte of it; empty when none comes. */
    std::string receive() {
        void *message = nullptr;
        const int length = nn_recv(fd, &message, NN_MSG, 0);
        if (length < 0) return {};
        std::string text(static_cast<const char *>(message), static_cast<size_t>(length));
        nn_freemsg(message);
        return text;
    }

    int fd;
};

/** A reply's text; fails the test unless it ends in exactly one NUL. */
json reply_of(const std::string &message) {
    EXPECT_FALSE(message.empty()) << "no reply";
    if (message.empty()) return nullptr;
    EXPECT_EQ(message.find('\0'), message.size() - 1);
    return json::parse(message.c_str(), nullptr, false);
}

std::string request(const std::string &method, const json &params, int id) {
    json text = {{"jsonrpc", "2.0"}, {"method", method}};
    if (!params.is_null()) text["params"] = params;
    if (id >= 0) text["id"] = id;
    return text.dump();
}

class MessageThread : public Store {
protected:
    MessageThread() {
        ::unlink(kSocketFile);
        device.write_capabilities(root / "capability_sets");
        device.write_parameters(root / "app_parameters");
    }

    /** Expects that a command is answered. */
    static void expect_answer(int id) {
        Socket client(NN_REQ);
        ASSERT_GE(nn_connect(client.fd, kCommand), 0);
        client.send(request("Keepalive", nullptr, id));
        EXPECT_EQ(reply_of(client.receive())["id"], id);
    }

    /** Publishes `message` again and again until the device has posted `event`. */
    static bool publish_until_posted(Socket &publisher, const std::string &message, Output &output,
                                     int event) {
        const auto start = Clock::now();
        while (!expired(start)) {
            publisher.send(message);
            if (output.wait_for("posted " + std::to_string(event) + " ", 50)) return true;
        }
        return false;
    }
};

TEST_F(MessageThread, EntersWithItsLineAndBearsItsName) {
    Device process(root);
    ASSERT_TRUE(process.output->wait_for(process.enter()));
    EXPECT_THAT(process.output->seen, StartsWith(process.enter()));
    expect_answer(1);
    EXPECT_GT(process.message_thread_id(), 0);
}

TEST_F(MessageThread, RepliesWithTheTerminatingNul) {
    Device process(root);
    Socket client(NN_REQ);
    ASSERT_GE(nn_connect(client.fd, kCommand), 0);
    for (int id = 1; id <= 20; ++id) {
        client.send(request("GetVideoOutputDisplayParameter", nullptr, id));
        const json reply = reply_of(client.receive());
        EXPECT_EQ(reply["id"], id);
        EXPECT_EQ(reply["result"][0]["BorderWidth"], 4);
    }
}

TEST_F(MessageThread, AppliesACommandAndTellsTheDisplay) {
    Device process(root);
    Socket client(NN_REQ);
    ASSERT_GE(nn_connect(client.fd, kCommand), 0);
    client.send(request("SetVideoOutputDisplayParameter",
                        {{"records", json::array({{{"BorderWidth", 9}}})}}, 1));
    EXPECT_EQ(reply_of(client.receive())["result"], 0);
    EXPECT_TRUE(process.output->wait_for("posted 1001 with 0\n"));
    client.send(request("GetVideoOutputDisplayParameter", nullptr, 2));
    EXPECT_EQ(reply_of(client.receive())["result"][0]["BorderWidth"], 9);
}

TEST_F(MessageThread, SendsNothingForANotification) {
    Device process(root);
    Socket silent(NN_REQ);
    ASSERT_GE(nn_connect(silent.fd, kCommand), 0);
    silent.send(request("SetVideoOutputDisplayParameter",
                        {{"records", json::array({{{"BorderWidth", 7}}})}}, -1));
    EXPECT_TRUE(process.output->wait_for("posted 1001 with 0\n")) << "applied all the same";
    expect_answer(5);
    silent.set_patience(300);
    EXPECT_EQ(silent.receive(), "");
}

TEST_F(MessageThread, AnswersAKeepaliveSurvey) {
    Device process(root);
    Socket surveyor(NN_SURVEYOR);
    ASSERT_GE(nn_bind(surveyor.fd, kKeepalive), 0);
    const int deadline = 500;
    nn_setsockopt(surveyor.fd, NN_SURVEYOR, NN_SURVEYOR_DEADLINE, &deadline, sizeof deadline);
    std::string answer;
    const auto start = Clock::now();
    // The respondent connects when it notices the surveyor; earlier surveys reach nobody.
    while (answer.empty() && !expired(start)) {
        surveyor.send(request("Keepalive", nullptr, 3));
        answer = surveyor.receive();
    }
    const json reply = reply_of(answer);
    EXPECT_EQ(reply["id"], 3);
    EXPECT_EQ(reply["result"]["process"], "app_gui");
}

TEST_F(MessageThread, EventsReachTheirHandlersAndAreNeverAnswered) {
    struct Row {
        const char *address;
        std::string message;
        int event;
    };
    const Row rows[] = {
        {kCodec,
         request("SetVideoOutSourceChange",
                 {{"records", json::array({{{"Channel", 9}, {"index", 3}, {"type", 1}}})}}, 77),
         1012},
        {kStream,
         request("SetStreamingInputStatusChange",
                 {{"records", json::array({{{"index", 4}, {"url", "rtsp://new"}}})}}, 78),
         1011},
    };
    Device process(root);
    for (const Row &row : rows) {
        Socket publisher(NN_PUB);
        ASSERT_GE(nn_bind(publisher.fd, row.address), 0);
        EXPECT_TRUE(publish_until_posted(publisher, row.message, *process.output, row.event))
            << row.address;
    }
    expect_answer(6);
    process.errors->forget();
    EXPECT_THAT(process.errors->seen, Not(HasSubstr("ERROR"))) << "nothing was sent there";
}

TEST_F(MessageThread, HearsAPublisherThatGoesAndComesBack) {
    const std::string message =
        request("SetVideoOutSourceChange",
                {{"records", json::array({{{"Channel", 9}, {"index", 3}, {"type", 1}}})}}, -1);
    Device process(root);
    for (int round = 0; round < 4; ++round) {
        Socket publisher(NN_PUB);
        ASSERT_GE(nn_bind(publisher.fd, kCodec), 0);
        EXPECT_TRUE(publish_until_posted(publisher, message, *process.output, 1012)) << round;
        publisher.send(message);
        // Closed right after sending.
        process.output->forget();
    }
}

TEST_F(MessageThread, GoesOnAfterMessagesThatAreNoCommands) {
    Device process(root);
    Socket client(NN_REQ);
    ASSERT_GE(nn_connect(client.fd, kCommand), 0);
    for (const std::string &text :
         {std::string("no JSON"), std::string(1, '\0'), std::string("\xff\xfe\0{", 4),
          std::string(300000, '['), std::string("{}")}) {
        client.send(text);
        EXPECT_TRUE(reply_of(client.receive()).contains("error")) << text.substr(0, 20);
    }
    client.send("");
    expect_answer(8);
}

TEST_F(MessageThread, GoesOnAfterAnInterruptedPoll) {
    Device process(root);
    ASSERT_TRUE(process.output->wait_for(process.enter()));
    expect_answer(1);
    const pid_t thread = process.message_thread_id();
    ASSERT_GT(thread, 0);
    const std::string line = process.debug_line(245, "nn_poll msg EINTR");
    for (int times = 0; times < 3; ++times) {
        process.output->forget();
        // A signal that finds the thread outside of its poll shows nothing: send another.
        const auto start = Clock::now();
        do {
            ASSERT_EQ(syscall(SYS_tgkill, process.pid, thread, SIGUSR1), 0);
        } while (!process.output->wait_for(line, 100) && !expired(start));
        EXPECT_THAT(process.output->seen, HasSubstr(line));
        expect_answer(2 + times);
    }
    EXPECT_THAT(process.output->seen, Not(HasSubstr(process.exit())));
}

TEST_F(MessageThread, EndsWhereTheCommandAddressIsTaken) {
    Socket other(NN_REP);
    ASSERT_GE(nn_bind(other.fd, kCommand), 0);
    Device process(root);
    ASSERT_TRUE(process.output->wait_for("thread returned null\n"));
    EXPECT_THAT(process.output->seen,
                HasSubstr(process.enter() + process.exit() + "thread returned null\n"));
    ASSERT_TRUE(process.errors->wait_for("\033[0m"));
    const size_t start = process.errors->seen.find("\033[1;31m");
    ASSERT_NE(start, std::string::npos);
    EXPECT_EQ(error_lines(process.errors->seen.substr(start), "apps/app_gui/src/app_gui.cpp"),
              (Lines{"recv_msg_routine: nn_bind(ipc:///tmp/ipc/app_gui.command) fail: " +
                     std::string(nn_strerror(EADDRINUSE)) + "\n"}));
}

TEST_F(MessageThread, EndsWithItsLineWhereAFolderStandsAtTheCommandAddress) {
    // nanomsg would try to remove it, fail, and end the whole process.
    const std::string path = std::string(kCommand).substr(std::string("ipc://").size());
    ASSERT_EQ(mkdir(path.c_str(), 0755), 0);
    Device process(root);
    EXPECT_TRUE(process.output->wait_for("thread returned null\n"));
    EXPECT_TRUE(process.errors->wait_for("\033[0m"));
    EXPECT_THAT(process.errors->seen, HasSubstr("nn_bind(" + std::string(kCommand) +
                                                ") fail: " + nn_strerror(EADDRINUSE) + "\n"));
    EXPECT_EQ(rmdir(path.c_str()), 0);
}

TEST_F(MessageThread, ServesInPlaceOfAStaleSocketFile) {
    const int stale = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    put(address.sun_path, kSocketFile);
    ASSERT_EQ(bind(stale, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    close(stale);
    ASSERT_TRUE(fs::exists(kSocketFile));
    Device process(root);
    expect_answer(1);
}

TEST_F(MessageThread, EndsAtTheFirstSocketThatCannotBeOpenedAndClosesTheOthers) {
    const char *protocols[] = {"NN_REP", "NN_RESPONDENT", "NN_SUB", "NN_SUB"};
    for (int left = 0; left < 4; ++left) {
        Device process(root, left);
        const std::string closed = "free sockets " + std::to_string(left) + "\n";
        EXPECT_TRUE(process.output->wait_for("free sockets ")) << left;
        EXPECT_TRUE(process.output->wait_for(closed, 100)) << process.output->seen;
        EXPECT_THAT(process.output->seen,
                    HasSubstr(process.enter() + process.exit() + "thread returned null\n"));
        EXPECT_TRUE(process.errors->wait_for(", recv_msg_routine>: nn_socket(AF_SP, " +
                                             std::string(protocols[left]) +
                                             ") fail: " + nn_strerror(EMFILE) + "\n\033[0m"))
            << process.errors->seen;
    }
}

// ---- faults -------------------------------------------------------------------------------------

/** While it lives, devices start with calls `first` to `last` of the function failing. */
class WithFault {
public:
    WithFault(const std::string &function, int first, int last, int error) {
        setenv(kFaultVariable,
               (function + " " + std::to_string(first) + " " + std::to_string(last) + " " +
                std::to_string(error))
                   .c_str(),
               1);
    }
    ~WithFault() { unsetenv(kFaultVariable); }
};

TEST_F(MessageThread, AsksEachPollAnew) {
    // A poll that times out leaves the answers as they are: a message long served would count.
    const WithFault watched(kWatchPolls, 1, 0, 0);
    Device process(root);
    Socket client(NN_REQ);
    ASSERT_GE(nn_connect(client.fd, kCommand), 0);
    for (int i = 0; i < 3; ++i) {
        client.send(request("Keepalive", json::object(), 1));
        EXPECT_TRUE(reply_of(client.receive()).contains("result"));
    }
    process.output->forget();
    EXPECT_TRUE(process.output->wait_for("poll with no answers"));
    EXPECT_THAT(process.output->seen, Not(HasSubstr("stale")));
}

/** What follows `word` in the lines of `text` that start with it. */
Lines lines_after(const std::string &text, const std::string &word) {
    Lines found;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(word, 0) == 0) found.push_back(line.substr(word.size()));
    }
    return found;
}

TEST_F(MessageThread, EndsAtAFailureWithItsLineAndClosesItsSocketsInTheirOrder) {
    struct Row {
        const char *function;
        int call;
        std::string message;
        size_t opened;
    };
    const std::string subscribe = "[app_gui]nn_setsockopt(NN_SUB, NN_SUB_SUBSCRIBE) fail: ";
    const Row rows[] = {
        {"nn_connect", 1, "nn_connect(" + std::string(kKeepalive) + ") fail: ", 2},
        {"nn_connect", 2, "nn_connect(" + std::string(kCodec) + ") fail: ", 3},
        // Kept: the stream socket's failure names the codec's address.
        {"nn_connect", 3, "nn_connect(" + std::string(kCodec) + ") fail: ", 4},
        {"subscribe", 1, subscribe, 3},
        {"subscribe", 2, subscribe, 4},
        {"nn_poll", 1, "nn_poll msg fail: ", 4},
        {"nn_poll", 2, "nn_poll msg fail: ", 4},
    };
    for (const Row &row : rows) {
        const WithFault fault_of_device(row.function, row.call, INT_MAX, ENOMEM);
        Device process(root);
        EXPECT_TRUE(process.output->wait_for("thread returned null\n")) << row.message;
        EXPECT_THAT(process.output->seen, HasSubstr(process.exit() + "thread returned null\n"));
        EXPECT_TRUE(process.errors->wait_for(", recv_msg_routine>: " + row.message +
                                             nn_strerror(ENOMEM) + "\n\033[0m"))
            << process.errors->seen;
        const Lines opened = lines_after(process.output->seen, "opened ");
        EXPECT_EQ(opened.size(), row.opened) << row.message;
        EXPECT_EQ(lines_after(process.output->seen, "closed "), opened) << row.message;
    }
}

TEST_F(MessageThread, GoesOnAfterAReceiveThatFails) {
    const WithFault fault_of_device("nn_recv", 1, 2, EIO);
    Device process(root);
    expect_answer(1);
    EXPECT_TRUE(process.errors->wait_for(
        ", recv_msg_routine>: nn_recv fail: " + std::string(nn_strerror(EIO)) + "\n\033[0m"))
        << process.errors->seen;
}

TEST_F(MessageThread, SendsAReplyAgainWhileTheSocketIsFullOrInterrupted) {
    for (const int error : {EAGAIN, EINTR}) {
        const WithFault fault_of_device("nn_send", 1, 1000, error);
        Device process(root);
        expect_answer(1);
        process.errors->forget();
        EXPECT_THAT(process.errors->seen, Not(HasSubstr("recv_msg_routine")));
    }
}

TEST_F(MessageThread, DropsAReplyThatCannotBeSentAndGoesOn) {
    const WithFault fault_of_device("nn_send", 1, 1, EIO);
    Device process(root);
    Socket client(NN_REQ);
    ASSERT_GE(nn_connect(client.fd, kCommand), 0);
    client.send(request("Keepalive", nullptr, 7));
    ASSERT_TRUE(
        process.errors->wait_for(") failed: " + std::string(nn_strerror(EIO)) + "\n\033[0m"));
    const std::regex line(R"(, recv_msg_routine>: nn_send\((\d+), (\{.*\}), (\d+)\) failed: )");
    std::smatch parts;
    ASSERT_TRUE(std::regex_search(process.errors->seen, parts, line)) << process.errors->seen;
    ASSERT_TRUE(process.output->wait_for("opened "));
    EXPECT_EQ(parts[1], lines_after(process.output->seen, "opened ").at(0));
    EXPECT_EQ(json::parse(parts[2].str())["id"], 7);
    EXPECT_EQ(parts[3], std::to_string(parts[2].length() + 1)) << "with the NUL";
    expect_answer(8);
}

// ---- a folder of sockets for this process alone -------------------------------------------------

bool write_file(const char *path, const std::string &text) {
    std::ofstream file(path);
    file << text;
    return static_cast<bool>(file.flush());
}

/** A mount namespace of this process's own, if need be inside a user namespace. */
bool enter_namespace() {
    const std::string user = "0 " + std::to_string(getuid()) + " 1";
    const std::string group = "0 " + std::to_string(getgid()) + " 1";
    if (unshare(CLONE_NEWNS) == 0) return true;
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    write_file("/proc/self/setgroups", "deny");
    return write_file("/proc/self/uid_map", user) && write_file("/proc/self/gid_map", group);
}

bool have_own_folder() {
    return enter_namespace() && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("ipc", "/tmp/ipc", "tmpfs", 0, nullptr) == 0;
}

void keep_other_runs_away() {
    mkdir("/tmp/ipc", 0777);
    if (have_own_folder()) return;
    std::printf("no mount namespace here: on the real /tmp/ipc, one run at a time\n");
    const int lock = open("/tmp/ipc/.message_thread_test", O_CREAT | O_RDWR | O_CLOEXEC, 0666);
    if (lock < 0 || flock(lock, LOCK_EX) != 0) std::perror("/tmp/ipc/.message_thread_test");
}

}  // namespace

int main(int argc, char **argv) {
    if (argc == 4 && std::string(argv[1]) == "--device") {
        return run_device(argv[2], std::atoi(argv[3]));
    }
    keep_other_runs_away();
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
