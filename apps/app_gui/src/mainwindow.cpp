#include "mainwindow.h"

#include <QApplication>
#include <QMenu>
#include <QPaintEvent>
#include <QPainter>
#include <QResizeEvent>

#include "backing_pixels.h"
#include "basewidget.h"
#include "border_paint.h"
#include "window_geometry.h"
#include "window_server/qws_screen.h"
#include "window_server/qws_server.h"

namespace {

constexpr int kTickPeriodMs = 500;
constexpr int kScreenDepth = 32;
constexpr unsigned kFirstTick = 10;
constexpr int kDotOrigin = 32;
/// No code of changeResolution(), so that the first call always applies its mode.
constexpr unsigned kNoResolution = ~0u;

}  // namespace

MainWindow *MainWindow::instance() {
    static MainWindow *const window = new MainWindow(nullptr);
    return window;
}

MainWindow::MainWindow(QWidget *parent)
    : QWidget(parent, Qt::FramelessWindowHint),
      mUi(new MainWindowUI),
      mResolution(kNoResolution),
      mTick(kFirstTick),
      mDotOrigin(kDotOrigin, kDotOrigin),
      mDot(mDotOrigin) {
    setAttribute(Qt::WA_TranslucentBackground);
    setMouseTracking(true);
    setContextMenuPolicy(Qt::CustomContextMenu);
    mUi->setupUi(this);
    const QRect virtualScreen(0, 0, kVirtualExtent, kVirtualExtent);
    for (int i = 0; i < kWatermarkLabels; ++i) {
        mUi->watermarkTxtLabels[i]->setVirtualScreen(virtualScreen);
        mUi->watermarkImgLabels[i]->setVirtualScreen(virtualScreen);
    }
    dispWatermarkImage();
    dispWatermarkTxt();
    dispWatermarkDot();
    update();
    for (unsigned i = 0; i < kOsdLabels; ++i) {
        initDisplay(i);
    }
    timerId = startTimer(kTickPeriodMs);
}

MainWindow::~MainWindow() = default;

unsigned MainWindow::changeResolution(unsigned code) {
    const QSize size = resolution_size(code);
    if (size.isEmpty()) {
        return 0;
    }
    if (code == mResolution) {
        return 1;
    }
    // A driver that refuses the mode has said so; the window follows the code either way.
    qws::Screen::setMode(size.width(), size.height(), kScreenDepth);
    qws::Server::setMaxWindowRect(QRect(QPoint(0, 0), size));
    resize(size);
    updateGeometry();
    update();
    QWidget *modal = QApplication::activeModalWidget();
    if (modal != nullptr && modal->isFullScreen()) {
        modal->resize(size);
        modal->updateGeometry();
        modal->repaint();
    }
    mResolution = code;
    return 1;
}

void MainWindow::showMenu(const QPoint &position) {
    const int tracking = disableMouseTracking();
    mUi->menu->popup(position);
    recoverMouseTracking(tracking != 0);
}

int MainWindow::disableMouseTracking() {
    const bool wasOn = hasMouseTracking();
    setMouseTracking(false);
    return wasOn ? 1 : 0;
}

void MainWindow::recoverMouseTracking(bool wasOn) {
    if (wasOn) {
        setMouseTracking(true);
    }
}

void MainWindow::enterFullScreen(int window) {
    if (maxWndNum > 1 && window >= 0 && window < maxWndNum) {
        fullScreenWnd = window;
        fullScreenFlag = true;
    }
}

void MainWindow::exitFullScreen() {
    if (maxWndNum > 1) {
        fullScreenWnd = -1;
        fullScreenFlag = false;
    }
}

void MainWindow::changeEvent(QEvent *event) {
    if (event->type() == QEvent::LanguageChange) {
        mUi->retranslateUi();
        event->accept();
    } else {
        QWidget::changeEvent(event);
    }
}

void MainWindow::resizeEvent(QResizeEvent *event) {
    MAINWINDOW_DEBUG("=== resizeEvent start\n");
    layOutTexts(event->size());
    layOutPictures(event->size());
    MAINWINDOW_DEBUG("resizeEvent %dx%d\n", event->size().width(), event->size().height());
    update();
}

BorderPicture MainWindow::borders() const {
    if (isUserSplit()) {
        const int layout = splitFlag - kFirstUserSplitMode;
        return line_borders(mUserLines[layout], mUserColours[layout], mBorderWidth);
    }
    return window_borders(rects(splitFlag), maxWndNum,
                          {mBorderWidth, mVideoColour, mAudioColour, mAudioWnd});
}

void MainWindow::repaintChanged(const BorderPicture &before) {
    repaintRegion(changed_region(before, borders()));
}

void MainWindow::repaintRegion(const QRegion &changed) {
    const QRegion shown = changed & rect();
    // Every change that the window took gives a paint event, be it of one pixel: whoever watches
    // the window sees that the change has arrived.
    update(shown.isEmpty() ? QRegion(0, 0, 1, 1) : shown);
}

void MainWindow::paintEvent(QPaintEvent *event) {
    MAINWINDOW_DEBUG("%s:%d\n", __func__, __LINE__);
    QPainter painter(this);
    painter.setWindow(0, 0, width(), height());
    if (mBorderWidth == 0) {
        return;
    }
    MAINWINDOW_DEBUG("%02x:%02x:%02x  %02x:%02x:%02x %d %d\n", qRed(mVideoColour),
                     qGreen(mVideoColour), qBlue(mVideoColour), qRed(mAudioColour),
                     qGreen(mAudioColour), qBlue(mAudioColour), mBorderWidth, maxWndNum);
    const BorderPicture picture = borders();
    if (isUserSplit()) {
        MAINWINDOW_DEBUG("line%d \n", static_cast<int>(picture.strokes.size()));
    }
    paint_borders(painter, BackingPixels(painter, *this), picture, event->region());
    for (int i = 0; i < picture.strokes.size(); ++i) {
        const BorderStroke &stroke = picture.strokes[i];
        if (stroke.shape == BorderStroke::kOutline) {
            MAINWINDOW_DEBUG("rect%d x=%d,y=%d, w=%d, h=%d lw=%d\n", i, stroke.outline.x(),
                             stroke.outline.y(), stroke.outline.width(), stroke.outline.height(),
                             picture.width / 2 + picture.width % 2);
        }
    }
}
