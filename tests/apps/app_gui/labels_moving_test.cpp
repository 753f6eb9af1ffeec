#include <functional>
#include <memory>
#include <vector>

#include "labels_fixture.h"
#include "moveimage.h"

namespace {

QRect edges(int left, int top, int right, int bottom) {
    QRect rect;
    rect.setCoords(left, top, right, bottom);
    return rect;
}

/** One kind of label: how to make one, and what it does differently from the others. */
struct Kind {
    const char *name;
    std::function<MoveLabel *(QWidget *, bool)> make;
    bool takesInvertedScreens;
    bool heldOnAllSides;
};

const Kind kKinds[] = {
    {"picture",
     [](QWidget *parent, bool movable) { return new MoveImageLabel(parent, movable, false); }, true,
     false},
    {"osd", [](QWidget *parent, bool movable) { return new MoveOSDLabel(parent, movable, false); },
     false, true},
    {"text", [](QWidget *parent, bool movable) { return new MoveWatermarkLabel(parent, movable); },
     false, false},
};

class EveryLabel : public testing::TestWithParam<Kind> {
protected:
    MoveLabel *make(bool movable = true) {
        MoveLabel *label = GetParam().make(&mParent, movable);
        label->resize(40, 20);
        return label;
    }
    EveryLabel() { mParent.resize(800, 600); }

    QWidget mParent;
};

INSTANTIATE_TEST_SUITE_P(Labels, EveryLabel, testing::ValuesIn(kKinds),
                         [](const auto &info) { return info.param.name; });

TEST_P(EveryLabel, ShowsItsTextAsPlainText) {
    MoveLabel *label = make();
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
}

TEST_P(EveryLabel, StartsInTheParentsRectangle) {
    MoveLabel *label = make();
    label->moveInValidRegion({-5, -5});
    EXPECT_EQ(label->pos(), QPoint(0, 0));
    label->moveInValidRegion({790, 595});
    EXPECT_EQ(label->pos(), GetParam().heldOnAllSides ? QPoint(760, 580) : QPoint(790, 595));
}

TEST_P(EveryLabel, WithoutAParentStartsInAFullScreen) {
    const std::unique_ptr<MoveLabel> label(GetParam().make(nullptr, true));
    label->resize(40, 20);
    label->moveInValidRegion({-1, -1});
    EXPECT_EQ(label->pos(), QPoint(0, 0));
    label->moveInValidRegion({1900, 1070});
    EXPECT_EQ(label->pos(), GetParam().heldOnAllSides ? QPoint(1880, 1060) : QPoint(1900, 1070));
}

TEST_P(EveryLabel, TakesOrRefusesInvertedScreensAsItsKindDoes) {
    MoveLabel *label = make();
    for (const QRect &inverted : {edges(10, 10, 9, 50), edges(10, 10, 50, 9), QRect()}) {
        EXPECT_EQ(label->setVirtualScreen(inverted), GetParam().takesInvertedScreens);
        EXPECT_EQ(label->setActualScreen(inverted), GetParam().takesInvertedScreens);
    }
    EXPECT_TRUE(label->setVirtualScreen({0, 0, 1, 1}));
    EXPECT_TRUE(label->setActualScreen({0, 0, 1, 1}));
    EXPECT_TRUE(label->setActualScreen({0, 0, 1, 1})) << "the same again";
}

TEST_P(EveryLabel, ARefusedScreenLeavesTheOldOneAndATakenInvertedOneGivesWayToTheParents) {
    MoveLabel *label = make();
    ASSERT_TRUE(label->setActualScreen({100, 100, 300, 200}));
    label->setActualScreen(edges(500, 500, 400, 400));
    label->moveInValidRegion({-7, 50});
    EXPECT_EQ(label->pos(), GetParam().takesInvertedScreens ? QPoint(0, 50) : QPoint(100, 100));
}

TEST_P(EveryLabel, ScreensAloneDoNotMoveIt) {
    MoveLabel *label = make();
    label->move(7, 9);
    label->setVirtualScreen({0, 0, 100, 100});
    label->setActualScreen({200, 200, 100, 100});
    EXPECT_EQ(label->pos(), QPoint(7, 9));
}

TEST_P(EveryLabel, IsHeldByTheEdgesOfItsScreen) {
    MoveLabel *label = make();
    label->setActualScreen({100, 50, 200, 100});
    label->resize(40, 20);
    const bool all = GetParam().heldOnAllSides;
    label->moveInValidRegion({99, 60});
    EXPECT_EQ(label->pos(), QPoint(100, 60));
    label->moveInValidRegion({261, 131});
    EXPECT_EQ(label->pos(), all ? QPoint(260, 130) : QPoint(261, 131));
    label->resize(201, 101);
    label->moveInValidRegion({150, 60});
    EXPECT_EQ(label->pos(), all ? QPoint(99, 49) : QPoint(150, 60));
}

TEST_P(EveryLabel, IgnoresTheMouseWhenItIsNotMovable) {
    MoveLabel *label = make(false);
    label->move(100, 100);
    EXPECT_FALSE(sendMouse(*label, QEvent::MouseButtonPress, {3, 3}));
    EXPECT_FALSE(sendMouse(*label, QEvent::MouseMove, {90, 90}));
    EXPECT_FALSE(sendMouse(*label, QEvent::MouseButtonRelease, {90, 90}));
    EXPECT_EQ(label->pos(), QPoint(100, 100));
}

TEST_P(EveryLabel, FollowsADragOfAtLeastTheStartDistance) {
    MoveLabel *label = make();
    label->move(100, 100);
    const int distance = QApplication::startDragDistance();
    ASSERT_GT(distance, 2);
    drag(*label, {distance - 1, 0});
    EXPECT_EQ(label->pos(), QPoint(100, 100));
    sendMouse(*label, QEvent::MouseMove, QPoint(3, 3) + QPoint(distance - 1, 1));
    EXPECT_EQ(label->pos(), QPoint(99 + distance, 101));
    sendMouse(*label, QEvent::MouseMove, {-300, 3});
    EXPECT_EQ(label->pos(), QPoint(0, 101)) << "held by the left edge";
}

TEST_P(EveryLabel, NothingMovesBeforeThePressAndAfterTheRelease) {
    MoveLabel *label = make();
    label->move(100, 100);
    sendMouse(*label, QEvent::MouseMove, {90, 90});
    EXPECT_EQ(label->pos(), QPoint(100, 100));
    drag(*label, {50, 0});
    sendMouse(*label, QEvent::MouseButtonRelease, {3, 3});
    sendMouse(*label, QEvent::MouseMove, {90, 90});
    EXPECT_EQ(label->pos(), QPoint(150, 100));
}

TEST_P(EveryLabel, OtherButtonsNeitherStartNorEndADrag) {
    MoveLabel *label = make();
    label->move(100, 100);
    sendMouse(*label, QEvent::MouseButtonPress, {3, 3}, Qt::RightButton);
    sendMouse(*label, QEvent::MouseMove, {90, 90}, Qt::RightButton);
    EXPECT_EQ(label->pos(), QPoint(100, 100));
    drag(*label, {50, 0});
    sendMouse(*label, QEvent::MouseButtonRelease, {3, 3}, Qt::RightButton);
    sendMouse(*label, QEvent::MouseMove, {53, 3});
    EXPECT_EQ(label->pos(), QPoint(200, 100));
}

TEST_P(EveryLabel, AReleaseBringsItBackIntoItsScreen) {
    MoveLabel *label = make();
    label->setActualScreen({100, 50, 200, 100});
    label->move(10, 10);
    sendMouse(*label, QEvent::MouseButtonPress, {3, 3});
    EXPECT_EQ(label->pos(), QPoint(10, 10));
    sendMouse(*label, QEvent::MouseButtonRelease, {3, 3});
    EXPECT_EQ(label->pos(), QPoint(100, 50));
}

TEST_P(EveryLabel, SurvivesAParentWithoutSize) {
    QWidget parent;
    parent.resize(0, 0);
    const std::unique_ptr<MoveLabel> label(GetParam().make(&parent, true));
    label->resize(10, 10);
    label->moveInValidRegion({-4, -4});
    EXPECT_EQ(label->pos(), GetParam().heldOnAllSides ? QPoint(-10, -10) : QPoint(0, 0));
}

TEST(LabelRecords, NullOnesChangeNothing) {
    MoveImageLabel picture(nullptr, false, false);
    MoveOSDLabel osd(nullptr, false, false);
    MoveWatermarkLabel text(nullptr, false);
    EXPECT_FALSE(picture.setImage(nullptr, 0));
    EXPECT_FALSE(osd.setOSD(nullptr, "url"));
    EXPECT_FALSE(text.setOSD(nullptr, 0));
    text.updateText(nullptr);
    EXPECT_EQ(osd.text(), "");
    EXPECT_EQ(text.text(), "");
}

TEST(LabelClasses, AreFoundByTheirNames) {
    QWidget parent;
    new MoveImageLabel(&parent, false, false);
    new MoveOSDLabel(&parent, false, false);
    new MoveWatermarkLabel(&parent, false);
    EXPECT_EQ(parent.findChildren<MoveImageLabel *>().size(), 1);
    EXPECT_EQ(parent.findChildren<MoveOSDLabel *>().size(), 1);
    EXPECT_EQ(parent.findChildren<MoveWatermarkLabel *>().size(), 1);
}

}  // namespace
