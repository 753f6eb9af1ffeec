#include "app_gui.h"

#include <fcntl.h>
#include <malloc.h>
#include <nanomsg/nn.h>
#include <nanomsg/pipeline.h>
#include <nanomsg/pubsub.h>
#include <nanomsg/reqrep.h>
#include <nanomsg/survey.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <QApplication>
#include <QFile>
#include <QFont>
#include <QStyleFactory>
#include <QThread>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>

#include "app_gui_sockets.h"
#include "command_protocol/command_protocol.h"
#include "diagnostics.h"
#include "encoderapp.h"
#include "gui_cfg.h"
#include "mainwindow.h"
#include "stream_guard/stream_guard.h"
#include "window_server/qws_platform.h"
#include "window_server/qws_server.h"
#include "wnd_split.h"

using diagnostics::debug_line;
using diagnostics::error_line;

// ---- the message thread -------------------------------------------------------------------------

namespace {

constexpr const char *kProcess = "app_gui";
constexpr const char *kMessageRoutine = "recv_msg_routine";
constexpr const char *kCommandAddress = "ipc:///tmp/ipc/app_gui.command";
constexpr const char *kKeepaliveAddress = "ipc:///tmp/ipc/keepalive";
constexpr const char *kCodecAddress = "ipc:///tmp/ipc/app_codec.event";
constexpr const char *kStreamAddress = "ipc:///tmp/ipc/app_stream.event";
constexpr int kPollMilliseconds = 1000;
/** nanomsg drops the connection of a larger message; room for the library to refuse one in words.
 */
constexpr int kLargestMessage = 8 << 20;
/** Messages up to this size are always read. All larger ones on their way share the room. */
constexpr int kFreeMessage = 16 << 10;
constexpr int kMessageRoom = 16 << 20;
constexpr int kMessagePatienceMilliseconds = 2000;

/** One socket of the thread: what it is, where it leads, whether its messages are answered. */
struct Endpoint {
    int protocol;
    const char *protocol_name;
    const char *address;
    const char *failure_address;  ///< the address that the failure to connect names
    bool bound;                   ///< bound, else connected
    bool answered;
};

constexpr Endpoint kEndpoints[] = {
    {NN_REP, "NN_REP", kCommandAddress, kCommandAddress, true, true},
    {NN_RESPONDENT, "NN_RESPONDENT", kKeepaliveAddress, kKeepaliveAddress, false, true},
    {NN_SUB, "NN_SUB", kCodecAddress, kCodecAddress, false, false},
    // Kept: the stream socket's failure names the codec's address.
    {NN_SUB, "NN_SUB", kStreamAddress, kCodecAddress, false, false},
};
constexpr size_t kSlots = std::size(kEndpoints);

using PollSet = std::array<nn_pollfd, kSlots>;

const char *last_error() {
    return nn_strerror(nn_errno());
}

/** An error line of the thread, wherever in it something failed. */
#define MESSAGE_ERROR(...) error_line(__FILE__, __LINE__, kMessageRoutine, __VA_ARGS__)

bool subscribe_to_everything(int socket) {
    if (nn_setsockopt(socket, NN_SUB, NN_SUB_SUBSCRIBE, "", 0) >= 0) return true;
    MESSAGE_ERROR("[%s]nn_setsockopt(NN_SUB, NN_SUB_SUBSCRIBE) fail: %s\n", kProcess, last_error());
    return false;
}

bool bind_socket(int socket, const Endpoint &endpoint) {
    // Kept: the text with its scheme names no file, so a stale socket file stays for nanomsg to
    // judge.
    unlink(endpoint.address);
    const bool possible = can_make_room(path_of(endpoint.address));
    if (possible && nn_bind(socket, endpoint.address) >= 0) return true;
    MESSAGE_ERROR("nn_bind(%s) fail: %s\n", endpoint.address,
                  possible ? last_error() : nn_strerror(EADDRINUSE));
    return false;
}

bool connect_socket(int socket, const Endpoint &endpoint) {
    if (nn_connect(socket, endpoint.address) >= 0) return true;
    MESSAGE_ERROR("nn_connect(%s) fail: %s\n", endpoint.failure_address, last_error());
    return false;
}

/** Opens one socket; `*socket` holds it also when a later step of it failed. */
bool open_socket(const Endpoint &endpoint, int *socket) {
    *socket = nn_socket(AF_SP, endpoint.protocol);
    if (*socket < 0) {
        *socket = -1;
        MESSAGE_ERROR("nn_socket(AF_SP, %s) fail: %s\n", endpoint.protocol_name, last_error());
        return false;
    }
    nn_setsockopt(*socket, NN_SOL_SOCKET, NN_RCVMAXSIZE, &kLargestMessage, sizeof kLargestMessage);
    if (endpoint.protocol == NN_SUB && !subscribe_to_everything(*socket)) return false;
    return endpoint.bound ? bind_socket(*socket, endpoint) : connect_socket(*socket, endpoint);
}

bool open_sockets(PollSet &set) {
    for (size_t slot = 0; slot < kSlots; ++slot) {
        if (!open_socket(kEndpoints[slot], &set[slot].fd)) return false;
    }
    return true;
}

void close_sockets(const PollSet &set) {
    for (const nn_pollfd &entry : set) {
        if (entry.fd != -1) nn_close(entry.fd);
    }
}

/** Sends a reply with its terminating NUL; a full or interrupted socket is tried again at once. */
void send_reply(int socket, const char *response) {
    const size_t length = std::strlen(response) + 1;
    while (nn_send(socket, response, length, NN_DONTWAIT) < 0) {
        const int number = nn_errno();
        if (number == EAGAIN || number == EINTR) continue;
        MESSAGE_ERROR("nn_send(%d, %s, %d) failed: %s\n", socket, response,
                      static_cast<int>(length), nn_strerror(number));
        return;
    }
}

void serve_slot(int socket, const Endpoint &endpoint) {
    void *message = nullptr;
    const int length = nn_recv(socket, &message, NN_MSG, NN_DONTWAIT);
    if (length < 0) {
        MESSAGE_ERROR("nn_recv fail: %s\n", last_error());
        return;
    }
    char *response = nullptr;
    parse_command_and_get_response_with_len(static_cast<const char *>(message), length, 1,
                                            &response);
    if (response && endpoint.answered) send_reply(socket, response);
    std::free(response);
    nn_freemsg(message);
}

/**
 * Finds connecting sockets that nanomsg has given up on. When a peer closes right after its
 * greeting or its message, version 1.1.5 can leave our socket neither connected nor trying to:
 * there is no connection (its own count of them may still say one), and the count of failed
 * attempts, which grows some ten times a second while a peer is away, stands still.
 */
class ConnectionWatch {
public:
    /** Renews such sockets; does so at most once a second. While memory is short it does nothing.
     */
    void check(PollSet &set) try {
        const auto now = std::chrono::steady_clock::now();
        if (now - checked_ < std::chrono::milliseconds(kPollMilliseconds)) return;
        checked_ = now;
        for (size_t slot = 0; slot < kSlots; ++slot) {
            const bool has_message = (set[slot].revents & NN_POLLIN) != 0;
            if (!kEndpoints[slot].bound && !has_message) check_slot(slot, &set[slot].fd);
        }
    } catch (...) {  // std::bad_alloc
    }

private:
    static constexpr uint64_t kConnected = UINT64_MAX;

    void check_slot(size_t slot, int *socket) {
        const bool connected = nn_get_statistic(*socket, NN_STAT_CURRENT_CONNECTIONS) > 0 &&
                               has_connection(path_of(kEndpoints[slot].address));
        const uint64_t failed =
            connected ? kConnected : nn_get_statistic(*socket, NN_STAT_CONNECT_ERRORS);
        const bool stands_still = !connected && failed == failed_attempts_[slot];
        failed_attempts_[slot] = stands_still ? kConnected : failed;
        if (!stands_still) return;
        int renewed = -1;
        if (open_socket(kEndpoints[slot], &renewed)) {
            nn_close(*socket);
            *socket = renewed;
        } else if (renewed != -1) {
            nn_close(renewed);
        }
    }

    std::chrono::steady_clock::time_point checked_{};
    /// Failed attempts at the last check; kConnected when there was a connection.
    std::array<uint64_t, kSlots> failed_attempts_{kConnected, kConnected, kConnected, kConnected};
};

/** Serves messages until polling fails for another reason than a signal. */
void serve(PollSet &set) {
    ConnectionWatch watch;
    for (;;) {
        // A poll that times out leaves the answers of the one before.
        for (nn_pollfd &entry : set)
            entry.revents = 0;
        const int ready = nn_poll(set.data(), static_cast<int>(kSlots), kPollMilliseconds);
        if (ready < 0 && nn_errno() == EINTR) {
            debug_line(__FILE__, 245, "nn_poll msg EINTR\n");
            continue;
        }
        if (ready < 0) {
            MESSAGE_ERROR("nn_poll msg fail: %s\n", last_error());
            return;
        }
        for (size_t slot = 0; ready > 0 && slot < kSlots; ++slot) {
            if (set[slot].revents & NN_POLLIN) serve_slot(set[slot].fd, kEndpoints[slot]);
        }
        watch.check(set);
    }
}

}  // namespace

void *recv_msg_routine(void *) {
    const auto pid = static_cast<long>(getpid());
    debug_line(__FILE__, 143, "thread %s, pid = %ld Enter\n", kMessageRoutine, pid);
    prctl(PR_SET_NAME, "app_gui_msg");
    PollSet set;
    set.fill({-1, NN_POLLIN, 0});
    if (open_sockets(set)) serve(set);
    close_sockets(set);
    debug_line(__FILE__, 307, "thread %s, pid = %ld Exit\n", kMessageRoutine, pid);
    return nullptr;
}

// ---- start-up -----------------------------------------------------------------------------------

namespace {

constexpr const char *kFramebuffer = "/dev/fb1";
constexpr const char *kPluginFolder = "/usr/lib/plugins/";

bool framebuffer_present() {
    const int fd = open(kFramebuffer, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    close(fd);
    return true;
}

void set_environment(const QByteArray &display) {
    setenv("QWS_DISPLAY", display.constData(), 1);
    setenv("QT_QWS_FONTDIR", "/tmp/", 1);
    setenv("QT_PLUGIN_PATH", kPluginFolder, 1);
    // A board may name another platform for its other programs.
    unsetenv("QT_QPA_PLATFORM");
}

/** The application's style sheet, where the resource is there: its text up to the first NUL. */
void apply_style_sheet(QFile &file) {
    if (!file.open(QIODevice::ReadOnly)) return;
    const QByteArray text = file.readAll();
    qApp->setStyleSheet(QString::fromUtf8(text.constData()));
}

/** Told by a thread of nanomsg's. */
void tell_ended_connections(unsigned connections, const char *reason) {
    ERROR_LINE("connections ended: %u, the last because %s\n", connections, reason);
}

/** No local peer may end the process or exhaust its memory. */
void guard_streams() {
    const StreamGuardLimits limits{kLargestMessage, kFreeMessage, kMessageRoom,
                                   kMessagePatienceMilliseconds, tell_ended_connections};
    stream_guard_start(&limits);
}

void start_message_thread() {
    pthread_t thread;
    errno = 0;
    const int result = pthread_create(&thread, nullptr, recv_msg_routine, nullptr);
    if (result == 0) return;
    // The result is EAGAIN whatever the cause; errno tells it where the C library sets it.
    error_line(__FILE__, 371, "main", "[%s]pthread_create recv_msg fail! errno:%d\n", kProcess,
               errno != 0 ? errno : result);
}

/** The end where memory is short and no caller can be told: a line, no dump of memory, and whoever
 * looks after the process starts it again. The files are whole whenever it comes. */
void end_out_of_memory() {
    constexpr char kLine[] = "\033[1;31m<ERROR! app_gui>: out of memory\n\033[0m";
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, kLine, sizeof kLine - 1);
    _exit(EXIT_FAILURE);
}

}  // namespace

int run_app_gui(int argc, char **argv) {
    std::set_terminate(end_out_of_memory);
    // Buffers of this size and more go back to the system when they are freed. By itself the
    // allocator raises the limit to its largest buffer so far, and the heap grows with its gaps.
    mallopt(M_MMAP_THRESHOLD, 1024 * 1024);
    // Who reads our lines may go away; the display goes on.
    std::signal(SIGPIPE, SIG_IGN);
    const int loaded = init_parameters();
    if (loaded != 0) {
        debug_line(__FILE__, 322, "init_parameters fail %d\n", loaded);
        return loaded;
    }
    const QByteArray display = QByteArray("linuxFB:") + kFramebuffer;
    if (!framebuffer_present()) {
        debug_line(__FILE__, 330, "%s invalid\n", kFramebuffer);
        return 0;
    }
    set_environment(display);
    QCoreApplication::addLibraryPath(kPluginFolder);
    qws::registerPlatform();
    qws::prepareEnvironment();
    EncoderApp application(argc, argv, static_cast<language_type>(0));
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Windows")));
    qws::Server::setBackground(QBrush(Qt::transparent, Qt::SolidPattern));
    qws::Server::setCursorVisible(false);
    const QFont font(QStringLiteral("fzlth"), 16, QFont::Normal, false);
    QApplication::setFont(font);
    QFile style_sheet(QStringLiteral(":/resources/qss/normalStyle.qss"));
    apply_style_sheet(style_sheet);
    MainWindow *window = MainWindow::instance();
    // Nothing is painted before there is something to show: the device is clear.
    window->setUpdatesEnabled(false);
    window->showFullScreen();
    // The window is mapped and laid out before anything is posted to it.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    prepare_start_process();
    guard_streams();
    start_message_thread();
    start_process();
    gui_refresh_screen(1);
    window->setUpdatesEnabled(true);
    return QApplication::exec();
}

// ---- the bridge ---------------------------------------------------------------------------------

namespace {

/// Events that are made and not yet delivered.
std::atomic<int> undelivered{0};

/** Requests come as fast as senders like, and each may cost the display much more than the sender:
 * beyond so many events in the queue the message thread waits for one to be delivered, so that the
 * queue cannot fill the memory. None is dropped; a display that stands still only slows it down. */
constexpr int kMostUndelivered = 1024;
constexpr int kLongestWaitMilliseconds = 1000;

void wait_for_room() {
    if (undelivered.load() < kMostUndelivered) return;
    if (qApp == nullptr || QThread::currentThread() == qApp->thread()) return;
    for (int waited = 0; waited < kLongestWaitMilliseconds; ++waited) {
        if (undelivered.load() < kMostUndelivered) return;
        QThread::msleep(1);
    }
}

}  // namespace

UserEvent::UserEvent(int type, qint64 data, qint64 param)
    : QEvent(static_cast<QEvent::Type>(type)), data(data), param(param) {
    ++undelivered;
}

UserEvent::~UserEvent() {
    --undelivered;
}

namespace {

thread_local int post_priority = Qt::NormalEventPriority;

int post(UserEventType type, qint64 data, qint64 param) {
    wait_for_room();
    QCoreApplication::postEvent(MainWindow::instance(), new UserEvent(type, data, param),
                                post_priority);
    return 0;
}

/** The C allocator's: the receiver of a copy frees it in the same way. */
struct Free {
    void operator()(void *block) const { std::free(block); }
};

/** Posts a copy of `copied` records, which becomes the receiver's. */
template <typename Record>
int post_records(const char *function, const char *record_name, UserEventType type,
                 const Record *records, int copied, qint64 param) {
    if (!records) {
        ERROR_LINE_AS(function, "invalid para\n");
        return -2;
    }
    // No block holds a negative number of records, or more than can be addressed.
    const bool possible =
        copied >= 0 && static_cast<size_t>(copied) <= PTRDIFF_MAX / sizeof(Record);
    const size_t bytes = possible ? static_cast<size_t>(copied) * sizeof(Record) : 0;
    std::unique_ptr<void, Free> copy(possible ? std::malloc(bytes) : nullptr);
    if (!copy) {
        ERROR_LINE_AS(function, "malloc %s failed!\n", record_name);
        return -6;
    }
    std::memcpy(copy.get(), records, bytes);
    const int result = post(type, reinterpret_cast<qintptr>(copy.get()), param);
    (void)copy.release();
    return result;
}

}  // namespace

FirstInQueue::FirstInQueue() {
    post_priority = Qt::HighEventPriority;
}

FirstInQueue::~FirstInQueue() {
    post_priority = Qt::NormalEventPriority;
}

#define POST_ONE(event, Record, record) post_records(__func__, #Record, event, record, 1, 0)
#define POST_RUN(event, Record, records, count) \
    post_records(__func__, #Record, event, records, count, count)

int gui_update_video_display(const VideoOutputDisplayParameter *record) {
    return POST_ONE(UPDATE_VIDEO_DISPLAY_EVENT, VideoOutputDisplayParameter, record);
}

int gui_update_watermark_pic(const WatermarkPictureParameter *record) {
    return POST_ONE(UPDATE_WATERMARK_PIC_EVENT, WatermarkPictureParameter, record);
}

int gui_update_watermark_osd(const WatermarkOSDParameter *record) {
    return POST_ONE(UPDATE_WATERMARK_OSD_EVENT, WatermarkOSDParameter, record);
}

int gui_update_watermark_dot(const WatermarkDotmatrixParameter *record) {
    return POST_ONE(UPDATE_WATERMARK_DOT_EVENT, WatermarkDotmatrixParameter, record);
}

int gui_update_user_split(const VideoOutputScreenSplitParameter *records, int count) {
    return POST_RUN(UPDATE_USER_SPLIT_EVENT, VideoOutputScreenSplitParameter, records, count);
}

int gui_update_urlinfo(const StreamingInputStatusChange *records, int count) {
    return POST_RUN(UPDATE_URLINFO_EVENT, StreamingInputStatusChange, records, count);
}

int gui_update_video_source(const VideoOutSourceChange *records, int count) {
    return POST_RUN(UPDATE_VIDEO_SOURCE_EVENT, VideoOutSourceChange, records, count);
}

int gui_update_videooutput_osd(const VideoOutputOSDParameter *record, int index) {
    return post_records(__func__, "VideoOutputOSDParameter", UPDATE_VIDEOOUTPUT_OSD_EVENT, record,
                        1, index);
}

int gui_switch_split(int mode) {
    return post(SWITCH_SPLIT_EVENT, mode, 0);
}

int gui_set_ao_window(int window) {
    return post(SELECT_AO_WINDOW_EVENT, window, 0);
}

int gui_refresh_screen(int reason) {
    return post(REFRESH_SCREEN_EVENT, reason, 0);
}

int gui_get_split_window(int mode, int index, int rect[4]) {
    constexpr unsigned kLargestIndex = 4;
    const auto number = static_cast<unsigned>(mode);
    if (checkSplitValid(number) == 0 || !rect || static_cast<unsigned>(index) > kLargestIndex) {
        return -2;
    }
    // Kept: a window's rectangle is never copied out.
    SplitInfo info;
    hal_get_split_info(number, &info);
    if (static_cast<unsigned>(index) >= info.wndCnt) std::fill_n(rect, 4, 0);
    return 0;
}
