#include "evdev_decoder.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <vector>

namespace qws {
namespace {

const QRect kScreen(0, 0, 1920, 1080);

input_event record(uint16_t type, uint16_t code, int value) {
    input_event event{};
    event.type = type;
    event.code = code;
    event.value = value;
    return event;
}

class EvdevDecoderTest : public testing::Test {
protected:
    /** Gives records and the end of the report; what came of it. */
    PointerReport report(const std::vector<input_event> &records) {
        for (const input_event &event : records) {
            EXPECT_TRUE(decoder.take(event, kScreen, &pointer).mouse.isEmpty());
        }
        return decoder.take(record(EV_SYN, SYN_REPORT, 0), kScreen, &pointer);
    }

    EvdevDecoder decoder;
    PointerState pointer{kScreen.center(), Qt::NoButton};
};

TEST_F(EvdevDecoderTest, MovesAddUpToOneEventPerReport) {
    const PointerReport moved =
        report({record(EV_REL, REL_X, 10), record(EV_REL, REL_Y, -4), record(EV_REL, REL_X, 1)});
    ASSERT_EQ(1, moved.mouse.size());
    EXPECT_EQ(QEvent::MouseMove, moved.mouse[0].kind);
    EXPECT_EQ(QPoint(959 + 11, 539 - 4), moved.mouse[0].globalPosition);
    EXPECT_TRUE(report({}).mouse.isEmpty());
}

TEST_F(EvdevDecoderTest, ThePointerStaysOnTheScreen) {
    const struct {
        int x, y;
        QPoint at;
    } rows[] = {{-5000, 0, {0, 539}},
                {0, -5000, {0, 0}},
                {INT_MAX, INT_MAX, {1919, 1079}},
                {INT_MIN, INT_MIN, {0, 0}}};
    for (const auto &row : rows) {
        report({record(EV_REL, REL_X, row.x), record(EV_REL, REL_Y, row.y)});
        EXPECT_EQ(row.at, pointer.position);
    }
}

TEST_F(EvdevDecoderTest, ASmallerScreenPullsThePointerIn) {
    pointer.position = QPoint(1900, 1000);
    decoder.take(record(EV_SYN, SYN_REPORT, 0), QRect(0, 0, 1280, 720), &pointer);
    EXPECT_EQ(QPoint(1279, 719), pointer.position);
}

TEST_F(EvdevDecoderTest, ButtonsAreTheChangeAndWhatIsHeldAfterIt) {
    const struct {
        uint16_t code;
        Qt::MouseButton button;
    } rows[] = {
        {BTN_LEFT, Qt::LeftButton}, {BTN_RIGHT, Qt::RightButton}, {BTN_MIDDLE, Qt::MiddleButton}};
    for (const auto &row : rows) {
        const PointerReport down = report({record(EV_KEY, row.code, 1)});
        ASSERT_EQ(1, down.mouse.size());
        EXPECT_EQ(QEvent::MouseButtonPress, down.mouse[0].kind);
        EXPECT_EQ(row.button, down.mouse[0].button);
        EXPECT_EQ(Qt::MouseButtons(row.button), down.mouse[0].buttons);
        EXPECT_TRUE(report({record(EV_KEY, row.code, 2)}).mouse.isEmpty()) << "held, not pressed";
        const PointerReport up = report({record(EV_KEY, row.code, 0)});
        ASSERT_EQ(1, up.mouse.size());
        EXPECT_EQ(QEvent::MouseButtonRelease, up.mouse[0].kind);
        EXPECT_EQ(Qt::MouseButtons(Qt::NoButton), up.mouse[0].buttons);
    }
    EXPECT_TRUE(report({record(EV_KEY, KEY_A, 1)}).mouse.isEmpty());
}

TEST_F(EvdevDecoderTest, AClickWithinOneReportIsBothEvents) {
    const PointerReport click = report({record(EV_KEY, BTN_LEFT, 1), record(EV_KEY, BTN_LEFT, 0)});
    ASSERT_EQ(2, click.mouse.size());
    EXPECT_EQ(QEvent::MouseButtonPress, click.mouse[0].kind);
    EXPECT_EQ(QEvent::MouseButtonRelease, click.mouse[1].kind);
}

TEST_F(EvdevDecoderTest, ATabletMovesBeforeItPresses) {
    decoder.setRanges({0, 32767}, {0, 32767});
    const PointerReport touch = report(
        {record(EV_KEY, BTN_TOUCH, 1), record(EV_ABS, ABS_X, 0), record(EV_ABS, ABS_Y, 32767)});
    ASSERT_EQ(2, touch.mouse.size());
    EXPECT_EQ(QEvent::MouseMove, touch.mouse[0].kind);
    EXPECT_EQ(QEvent::MouseButtonPress, touch.mouse[1].kind);
    EXPECT_EQ(QPoint(0, 1079), touch.mouse[1].globalPosition);
}

TEST_F(EvdevDecoderTest, AxesReachBothEdgesAndWithoutARangeArePixels) {
    const struct {
        AxisRange range;
        int value, pixel;
    } rows[] = {{{0, 100}, 0, 0},
                {{0, 100}, 100, 1919},
                {{0, 100}, 50, 960},
                {{-50, 50}, -50, 0},
                {{-50, 50}, 500, 1919},
                {{INT_MIN, INT_MAX}, INT_MIN, 0},
                {{INT_MIN, INT_MAX}, INT_MAX, 1919},
                {{INT_MIN, INT_MAX}, 0, 960},
                {{0, 0}, 123, 123},
                {{0, 0}, -1, 0},
                {{7, 3}, 5000, 1919}};
    for (const auto &row : rows)
        EXPECT_EQ(row.pixel, axisToPixel(row.range, row.value, 0, 1919));
}

TEST_F(EvdevDecoderTest, AWheelTurnsByNotches) {
    const PointerReport turned =
        report({record(EV_REL, REL_WHEEL, 2), record(EV_REL, REL_HWHEEL, 1)});
    ASSERT_EQ(1, turned.wheel.size());
    EXPECT_EQ(QPoint(-120, 240), turned.wheel[0].angleDelta);
    EXPECT_TRUE(turned.mouse.isEmpty());
}

TEST_F(EvdevDecoderTest, AnyRecordsAreHarmless) {
    std::mt19937 random(7);
    const int values[] = {INT_MIN, INT_MAX, -1, 0, 1};
    decoder.setRanges({INT_MIN, INT_MAX}, {INT_MAX, INT_MIN});
    for (int i = 0; i < 200000; ++i) {
        const auto type = static_cast<uint16_t>(random() % 5);
        const auto code = static_cast<uint16_t>(random() % 16 + (type == EV_KEY ? BTN_LEFT : 0));
        const PointerReport result =
            decoder.take(record(type, code, values[random() % 5]), kScreen, &pointer);
        ASSERT_TRUE(kScreen.contains(pointer.position));
        ASSERT_LE(result.mouse.size(), 65);
    }
}

}  // namespace
}  // namespace qws
