#include "evdev_decoder.h"

#include <algorithm>
#include <climits>

namespace qws {
namespace {

struct ButtonRow {
    uint16_t code;
    Qt::MouseButton button;
};

constexpr ButtonRow kButtons[] = {
    {BTN_LEFT, Qt::LeftButton}, {BTN_RIGHT, Qt::RightButton},   {BTN_MIDDLE, Qt::MiddleButton},
    {BTN_SIDE, Qt::BackButton}, {BTN_EXTRA, Qt::ForwardButton}, {BTN_TOUCH, Qt::LeftButton},
};

/// A report that never ends must not grow without bound.
constexpr int kMostChanges = 64;
constexpr int kNotch = 120;
constexpr int64_t kMostNotches = 1000;

int clampedSum(int position, int64_t move, int first, int last) {
    const int64_t sum = position + std::clamp<int64_t>(move, INT_MIN, INT_MAX);
    return static_cast<int>(std::clamp<int64_t>(sum, first, last));
}

int64_t boundedSum(int64_t sum, int value) {
    return std::clamp<int64_t>(sum + value, INT_MIN, INT_MAX);
}

int wheelAngle(int64_t notches) {
    return static_cast<int>(std::clamp(notches, -kMostNotches, kMostNotches)) * kNotch;
}

}  // namespace

PointerReport EvdevDecoder::take(const input_event &record, const QRect &screen,
                                 PointerState *pointer) {
    switch (record.type) {
        case EV_REL:
            takeRelative(record.code, record.value);
            break;
        case EV_ABS:
            if (record.code == ABS_X || record.code == ABS_Y) {
                m_absolute[record.code - ABS_X] = record.value;
                m_hasAbsolute[record.code - ABS_X] = true;
            }
            break;
        case EV_KEY:
            takeButton(record.code, record.value);
            break;
        case EV_SYN:
            if (record.code == SYN_REPORT) return finish(screen, pointer);
            break;
        default:
            break;
    }
    return {};
}

void EvdevDecoder::takeRelative(uint16_t code, int value) {
    switch (code) {
        case REL_X:
        case REL_Y:
            m_relative[code - REL_X] = boundedSum(m_relative[code - REL_X], value);
            break;
        case REL_HWHEEL:
            // Qt counts a turn to the left as positive, the kernel one to the right.
            m_wheel[0] = boundedSum(m_wheel[0], value == INT_MIN ? INT_MAX : -value);
            break;
        case REL_WHEEL:
            m_wheel[1] = boundedSum(m_wheel[1], value);
            break;
        default:
            break;
    }
}

void EvdevDecoder::takeButton(uint16_t code, int value) {
    for (const ButtonRow &row : kButtons) {
        if (row.code == code && m_changes.size() < kMostChanges) {
            m_changes.append({row.button, value != 0});
        }
    }
}

/// The pointer moves first, so that a press happens where the finger or pen is.
PointerReport EvdevDecoder::finish(const QRect &screen, PointerState *pointer) {
    PointerReport report;
    const QPoint position = target(screen, pointer->position);
    if (position != pointer->position) {
        pointer->position = position;
        report.mouse.append(
            MouseEvent(QEvent::MouseMove, position, Qt::NoButton, pointer->buttons));
    }
    for (const ButtonChange &change : std::as_const(m_changes)) {
        if (pointer->buttons.testFlag(change.button) == change.down) continue;
        pointer->buttons.setFlag(change.button, change.down);
        report.mouse.append(
            MouseEvent(change.down ? QEvent::MouseButtonPress : QEvent::MouseButtonRelease,
                       position, change.button, pointer->buttons));
    }
    if (m_wheel[0] != 0 || m_wheel[1] != 0) {
        report.wheel.append(
            WheelEvent(position, QPoint(wheelAngle(m_wheel[0]), wheelAngle(m_wheel[1]))));
    }
    m_changes.clear();
    for (int axis = 0; axis < 2; ++axis) {
        m_relative[axis] = m_wheel[axis] = 0;
        m_hasAbsolute[axis] = false;
    }
    return report;
}

QPoint EvdevDecoder::target(const QRect &screen, const QPoint &from) const {
    const int first[] = {screen.left(), screen.top()};
    const int last[] = {screen.right(), screen.bottom()};
    int at[] = {from.x(), from.y()};
    for (int axis = 0; axis < 2; ++axis) {
        if (m_hasAbsolute[axis]) {
            at[axis] = axisToPixel(m_ranges[axis], m_absolute[axis], first[axis], last[axis]);
        }
        at[axis] = clampedSum(at[axis], m_relative[axis], first[axis], last[axis]);
    }
    return QPoint(at[0], at[1]);
}

int axisToPixel(const AxisRange &range, int value, int first, int last) {
    if (range.maximum <= range.minimum) return std::clamp(value, first, last);
    const int64_t span = int64_t{range.maximum} - range.minimum;
    const int64_t along = std::clamp(int64_t{value} - range.minimum, int64_t{0}, span);
    return first + static_cast<int>((along * (last - first) + span / 2) / span);
}

}  // namespace qws
