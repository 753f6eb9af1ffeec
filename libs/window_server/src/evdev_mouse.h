/**
 * @file evdev_mouse.h
 * Mice, tablets and FIFOs of input records as the screen's pointer.
 *
 * The pointer starts at the screen's centre. A source that ends or goes away is closed quietly; the
 * others go on.
 *
 * Thread: the display thread; reading hangs on its event loop.
 */
#ifndef WINDOW_SERVER_EVDEV_MOUSE_H
#define WINDOW_SERVER_EVDEV_MOUSE_H

#include <QByteArray>
#include <QSocketNotifier>
#include <QStringList>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "evdev_decoder.h"

namespace qws {

/** Gives each event to Qt's queue, where the application's filter sees it first. */
void queueReport(const PointerReport &report);

/** One open source. */
class EvdevSource {
public:
    using Handler = std::function<void(const input_event &, EvdevDecoder *)>;

    /** @param descriptor  non-blocking; owned from now on. */
    EvdevSource(QString path, int descriptor, Handler handler);
    ~EvdevSource();
    EvdevSource(const EvdevSource &) = delete;
    EvdevSource &operator=(const EvdevSource &) = delete;

private:
    void read();
    void dispatch(size_t bytes);
    void stop();

    QString m_path;
    int m_descriptor;
    Handler m_handler;
    EvdevDecoder m_decoder;
    std::unique_ptr<QSocketNotifier> m_notifier;
    /// Records may arrive in pieces through a FIFO: the piece of one that is not yet whole.
    QByteArray m_rest;
};

/** All sources together. */
class EvdevMouse {
public:
    using Receiver = std::function<void(const PointerReport &)>;

    /**
     * @param screen  asked at every record for where the pointer may be.
     * @param receive    what becomes of the reports.
     */
    EvdevMouse(std::function<QRect()> screen, Receiver receive);

    /** Opens what `sources` names; one error line for each that cannot be opened. */
    void open(const QStringList &sources);
    /** Opens those of `candidates` that say they are a mouse or a tablet; the others are left
     * quietly. */
    void openMice(const QStringList &candidates);

private:
    void add(const QString &path, int descriptor);

    std::function<QRect()> m_screen;
    Receiver m_receive;
    PointerState m_pointer;
    std::vector<std::unique_ptr<EvdevSource>> m_sources;
};

/** The paths in a list such as "evdev:/dev/input/event3,evdev:/tmp/mouse"; others are left. */
QStringList mousePaths(const QString &sources);

/** Every /dev/input/event*, sorted. */
QStringList inputDevices();

}  // namespace qws

#endif
