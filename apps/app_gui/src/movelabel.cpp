#include "movelabel.h"

#include <QApplication>
#include <QMouseEvent>

#include "label_geometry.h"

namespace {

constexpr QRect kScreenWithoutParent{0, 0, 1920, 1080};
constexpr QRect kVirtualSpace{0, 0, 8192, 8192};

bool isInverted(const QRect &screen) {
    return screen.right() < screen.left() || screen.bottom() < screen.top();
}

QRect parentScreen(const QWidget *parent) {
    return parent != nullptr ? parent->rect() : kScreenWithoutParent;
}

}  // namespace

MoveLabel::MoveLabel(QWidget *parent, bool movable, const MoveLabelKind &kind)
    : QLabel(parent),
      mKind(kind),
      mMovable(movable),
      mActualScreen(parentScreen(parent)),
      mVirtualScreen(kind.startsWithVirtualSpace ? kVirtualSpace : mActualScreen) {
    setTextFormat(Qt::PlainText);
}

bool MoveLabel::event(QEvent *event) {
    const bool handled = QLabel::event(event);
    // Its style sheet gives the label no background, and the toolkit would paint that in as much
    // time as the label takes itself.
    if (event->type() == QEvent::Polish || event->type() == QEvent::StyleChange)
        setAttribute(Qt::WA_StyledBackground, false);
    return handled;
}

bool MoveLabel::setVirtualScreen(const QRect &screen) {
    if (isInverted(screen) && !mKind.takesInvertedScreens) return false;
    mVirtualScreen = screen;
    return true;
}

bool MoveLabel::setActualScreen(const QRect &screen) {
    if (isInverted(screen) && !mKind.takesInvertedScreens) return false;
    if (screen == mActualScreen) return true;
    const QRect previous = mActualScreen;
    mActualScreen = screen;
    actualScreenChanged(previous);
    return true;
}

void MoveLabel::moveInValidRegion(const QPoint &wanted) {
    if (isInverted(mActualScreen)) mActualScreen = parentScreen(parentWidget());
    move(mKind.heldOnAllSides ? held_on_all_sides(wanted, size(), mActualScreen)
                              : held_top_left(wanted, mActualScreen));
}

void MoveLabel::mousePressEvent(QMouseEvent *event) {
    if (!mMovable) {
        event->ignore();
        return;
    }
    if (event->button() != Qt::LeftButton) return;
    mPressPosition = event->position().toPoint();
    mDragging = true;
}

void MoveLabel::mouseMoveEvent(QMouseEvent *event) {
    if (!mMovable) {
        event->ignore();
        return;
    }
    if (!mDragging) return;
    const QPoint delta = event->position().toPoint() - mPressPosition;
    if (delta.manhattanLength() < QApplication::startDragDistance()) return;
    moveInValidRegion(mapToParent(delta));
    wasDragged();
}

void MoveLabel::mouseReleaseEvent(QMouseEvent *event) {
    if (!mMovable) {
        event->ignore();
        return;
    }
    if (event->button() != Qt::LeftButton) return;
    moveInValidRegion(pos());
    mDragging = false;
}

bool MoveLabel::setShown(bool shown) {
    setVisible(shown);
    return shown;
}

void MoveLabel::scroll(int direction, int step) {
    const ScrollStep next = scrolled({pos(), mForward}, size(), mActualScreen, direction, step);
    mForward = next.forward;
    move(next.corner);
}

void MoveLabel::setFontStyle(bool bold, int points) {
    const QString sheet = QStringLiteral("QLabel{border:none;font-weight:%1;font-size:%2pt;}")
                              .arg(bold ? QStringLiteral("bold") : QStringLiteral("normal"))
                              .arg(points);
    if (sheet != styleSheet()) setStyleSheet(sheet);
}

QFont MoveLabel::paintFont(bool bold, int points) const {
    QFont result = font();
    result.setPointSize(points);
    result.setWeight(bold ? QFont::Bold : QFont::Normal);
    return result;
}
