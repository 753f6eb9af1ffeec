#include "evdev_mouse.h"

#include <fcntl.h>
#include <qpa/qwindowsysteminterface.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

#include "error_line.h"

namespace qws {
namespace {

/// One read: a flood of records must leave the event loop its turn.
constexpr int kRecordsPerRead = 64;
constexpr size_t kRecordBytes = sizeof(input_event);

template <int kBits>
class BitSet {
public:
    bool fill(int descriptor, int eventType) {
        return ::ioctl(descriptor, EVIOCGBIT(eventType, sizeof m_words), m_words) >= 0;
    }
    bool has(int bit) const { return m_words[bit / kWordBits] >> (bit % kWordBits) & 1UL; }

private:
    static constexpr int kWordBits = sizeof(unsigned long) * CHAR_BIT;
    unsigned long m_words[kBits / kWordBits + 1] = {};
};

/// Buttons alone make a remote control, axes alone a sensor.
bool isPointer(int descriptor) {
    BitSet<KEY_CNT> keys;
    BitSet<REL_CNT> relative;
    BitSet<ABS_CNT> absolute;
    if (!keys.fill(descriptor, EV_KEY)) return false;
    relative.fill(descriptor, EV_REL);
    absolute.fill(descriptor, EV_ABS);
    return (keys.has(BTN_LEFT) || keys.has(BTN_TOUCH)) &&
           ((relative.has(REL_X) && relative.has(REL_Y)) ||
            (absolute.has(ABS_X) && absolute.has(ABS_Y)));
}

AxisRange axisRange(int descriptor, int axis) {
    input_absinfo info{};
    if (::ioctl(descriptor, EVIOCGABS(axis), &info) < 0) return {};
    return {info.minimum, info.maximum};
}

int openSource(const QString &path) {
    return ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

}  // namespace

void queueReport(const PointerReport &report) {
    for (const MouseEvent &event : report.mouse) {
        QWindowSystemInterface::handleMouseEvent(nullptr, event.globalPosition,
                                                 event.globalPosition, event.buttons, event.button,
                                                 event.kind);
    }
    for (const WheelEvent &event : report.wheel) {
        QWindowSystemInterface::handleWheelEvent(nullptr, event.globalPosition,
                                                 event.globalPosition, QPoint(), event.angleDelta);
    }
}

EvdevSource::EvdevSource(QString path, int descriptor, Handler handler)
    : m_path(std::move(path)),
      m_descriptor(descriptor),
      m_handler(std::move(handler)),
      m_notifier(std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read)) {
    m_decoder.setRanges(axisRange(descriptor, ABS_X), axisRange(descriptor, ABS_Y));
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [this] { read(); });
}

EvdevSource::~EvdevSource() {
    stop();
}

void EvdevSource::read() {
    char buffer[kRecordsPerRead * kRecordBytes];
    const ssize_t bytes = ::read(m_descriptor, buffer, sizeof buffer);
    if (bytes > 0) {
        m_rest.append(buffer, static_cast<int>(bytes));
        dispatch(static_cast<size_t>(m_rest.size()) / kRecordBytes * kRecordBytes);
        return;
    }
    if (bytes < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (bytes < 0 && errno != ENODEV) {
        QWS_ERROR("%s read fail! errno:%d %s\n", qPrintable(m_path), errno, std::strerror(errno));
    }
    stop();
}

void EvdevSource::dispatch(size_t bytes) {
    for (size_t at = 0; at < bytes; at += kRecordBytes) {
        input_event record;
        std::memcpy(&record, m_rest.constData() + at, kRecordBytes);
        m_handler(record, &m_decoder);
    }
    m_rest.remove(0, static_cast<int>(bytes));
}

/// The notifier may be the caller: it is switched off here and deleted with the source.
void EvdevSource::stop() {
    if (m_descriptor < 0) return;
    m_notifier->setEnabled(false);
    ::close(m_descriptor);
    m_descriptor = -1;
}

EvdevMouse::EvdevMouse(std::function<QRect()> screen, Receiver receive)
    : m_screen(std::move(screen)), m_receive(std::move(receive)) {
    m_pointer.position = m_screen().center();
}

void EvdevMouse::open(const QStringList &sources) {
    for (const QString &path : sources) {
        const int descriptor = openSource(path);
        if (descriptor >= 0) {
            add(path, descriptor);
        } else {
            QWS_ERROR("%s open fail! errno:%d %s\n", qPrintable(path), errno, std::strerror(errno));
        }
    }
}

void EvdevMouse::openMice(const QStringList &candidates) {
    for (const QString &path : candidates) {
        const int descriptor = openSource(path);
        if (descriptor < 0) continue;
        if (isPointer(descriptor)) {
            add(path, descriptor);
        } else {
            ::close(descriptor);
        }
    }
}

void EvdevMouse::add(const QString &path, int descriptor) {
    const auto handle = [this](const input_event &record, EvdevDecoder *decoder) {
        const PointerReport report = decoder->take(record, m_screen(), &m_pointer);
        if (!report.mouse.isEmpty() || !report.wheel.isEmpty()) m_receive(report);
    };
    m_sources.push_back(std::make_unique<EvdevSource>(path, descriptor, handle));
}

QStringList mousePaths(const QString &sources) {
    const QLatin1String kind("evdev:");
    QStringList paths;
    for (const QString &part : sources.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QString source = part.trimmed();
        if (source.startsWith(kind, Qt::CaseInsensitive) && source.size() > kind.size()) {
            paths << source.mid(kind.size());
        }
    }
    return paths;
}

QStringList inputDevices() {
    const QDir folder(QStringLiteral("/dev/input"));
    QStringList paths;
    for (const QString &name :
         folder.entryList({QStringLiteral("event*")}, QDir::System | QDir::Files, QDir::Name)) {
        paths << folder.filePath(name);
    }
    return paths;
}

}  // namespace qws
