/**
 * @file evdev_decoder.h
 * The kernel's input records (linux/input.h) of a mouse or tablet to raw events.
 *
 * Pure: no descriptors, no windows. Any record content is harmless.
 */
#ifndef WINDOW_SERVER_EVDEV_DECODER_H
#define WINDOW_SERVER_EVDEV_DECODER_H

#include <linux/input.h>

#include <QPoint>
#include <QRect>
#include <QVector>
#include <cstdint>

#include "window_server/qws_event.h"

namespace qws {

/** Where the pointer is and what is held: one for all mice together. */
struct PointerState {
    QPoint position;
    Qt::MouseButtons buttons = Qt::NoButton;
};

/** What an absolute axis reports from edge to edge. With `maximum` not above `minimum`: pixels. */
struct AxisRange {
    int minimum = 0;
    int maximum = 0;
};

/** What one report (up to SYN_REPORT) amounts to, in this order. */
struct PointerReport {
    QVector<MouseEvent> mouse;
    QVector<WheelEvent> wheel;
};

class EvdevDecoder {
public:
    void setRanges(const AxisRange &x, const AxisRange &y) { m_ranges[0] = x, m_ranges[1] = y; }

    /**
     * Takes one record.
     * @param screen   where the pointer may be; it is clamped into it.
     * @param pointer  changed when a report is complete.
     * @return what happened; empty before the report is complete.
     */
    PointerReport take(const input_event &record, const QRect &screen, PointerState *pointer);

private:
    struct ButtonChange {
        Qt::MouseButton button;
        bool down;
    };

    void takeRelative(uint16_t code, int value);
    void takeButton(uint16_t code, int value);
    PointerReport finish(const QRect &screen, PointerState *pointer);
    QPoint target(const QRect &screen, const QPoint &from) const;

    AxisRange m_ranges[2];
    int64_t m_relative[2] = {0, 0};
    bool m_hasAbsolute[2] = {false, false};
    int m_absolute[2] = {0, 0};
    int64_t m_wheel[2] = {0, 0};
    QVector<ButtonChange> m_changes;
};

/** A position of an axis on the screen's `first` to `last` pixel, clamped. */
int axisToPixel(const AxisRange &range, int value, int first, int last);

}  // namespace qws

#endif
