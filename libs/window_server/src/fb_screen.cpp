#include "fb_screen.h"

#include <qpa/qwindowsysteminterface.h>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPainter>
#include <QWindow>

#include <algorithm>
#include <utility>

#include "fb_window.h"
#include "layer_plan.h"
#include "server_state.h"

namespace qws {
namespace {

constexpr QSize kUnseenSize(1920, 1080);

/// Rows composed at a time: a band of the widest screen stays in the cache.
constexpr int kBandRows = 16;

bool isTransparent(const QBrush &brush) {
    return brush.style() == Qt::NoBrush ||
           (brush.style() == Qt::SolidPattern && brush.color().alpha() == 0);
}

}  // namespace

struct FbScreen::Layer {
    QRect place;   ///< on the screen
    QImage image;  ///< shares the window's memory
};

FbScreen::FbScreen(FbCalls &calls) : m_device(calls) {
    mFormat = QImage::Format_ARGB32_Premultiplied;
    mDepth = kDepth;
    serverState().screen = this;
}

FbScreen::~FbScreen() {
    serverState().screen = nullptr;
}

bool FbScreen::initialize() {
    const bool usable = m_device.open(devicePath(qgetenv("QWS_DISPLAY").constData()));
    takeGeometry(usable ? QSize(m_device.mode().width, m_device.mode().height) : kUnseenSize);
    return true;
}

bool FbScreen::setMode(int width, int height, int depth) {
    if (!m_device.setMode(width, height, depth)) {
        refresh();
        return false;
    }
    takeGeometry(QSize(width, height));
    QWindowSystemInterface::handleScreenGeometryChange(screen(), mGeometry, availableGeometry());
    resizeWindows(Qt::WindowFullScreen, mGeometry);
    resizeWindows(Qt::WindowMaximized, availableGeometry());
    refresh();
    QWindowSystemInterface::flushWindowSystemEvents(QEventLoop::ExcludeUserInputEvents);
    return true;
}

void FbScreen::applyMaxWindowRect() {
    QWindowSystemInterface::handleScreenGeometryChange(screen(), mGeometry, availableGeometry());
    resizeWindows(Qt::WindowMaximized, availableGeometry());
}

void FbScreen::refresh() {
    setDirty(mGeometry);
}

QRect FbScreen::availableGeometry() const {
    const QRect cut = serverState().maxWindowRect & mGeometry;
    return cut.isEmpty() ? mGeometry : cut;
}

QRegion FbScreen::doRedraw() {
    const QRegion dirty = std::exchange(mRepaintRegion, QRegion()) & mGeometry;
    if (dirty.isEmpty()) return dirty;
    QElapsedTimer copying;
    copying.start();

    const QVector<Layer> layers = visibleLayers();
    if (isTransparent(serverState().background)) {
        QVector<QRect> places;
        for (const Layer &layer : layers)
            places.append(layer.place);
        const LayerPlan plan = planLayers(dirty, places);
        for (int i = 0; i < layers.size(); ++i) {
            copy(plan.alone[i], layers[i].image, layers[i].place.topLeft());
        }
        compose(plan.bare, {});
        compose(plan.shared, layers);
    } else {
        compose(dirty, layers);
    }

    ScreenCounters &counters = serverState().counters;
    counters.copyNanoseconds += static_cast<uint64_t>(copying.nsecsElapsed());
    ++counters.updates;
    for (const QRect &rect : dirty) {
        counters.pixels +=
            static_cast<uint64_t>(rect.width()) * static_cast<uint64_t>(rect.height());
    }
    return dirty;
}

/// From the lowest to the topmost; a window that was never painted has no pixels yet.
QVector<FbScreen::Layer> FbScreen::visibleLayers() const {
    QVector<Layer> layers;
    for (auto it = mWindowStack.crbegin(); it != mWindowStack.crend(); ++it) {
        QFbBackingStore *store = (*it)->backingStore();
        if (!store || !(*it)->window()->isVisible()) continue;
        const QImage image = store->image();
        // A window that is being resized may for a moment have less memory than room.
        const QRect place((*it)->geometry().topLeft(),
                          image.size().boundedTo((*it)->geometry().size()));
        if (!place.isEmpty()) layers.append({place, image});
    }
    return layers;
}

void FbScreen::takeGeometry(const QSize &size) {
    constexpr double kMillimetresPerInch = 25.4;
    mGeometry = QRect(QPoint(), size);
    mPhysicalSize = QSizeF(size) * (kMillimetresPerInch / kDpi.first);
    mRepaintRegion = QRegion();
}

void FbScreen::copy(const QRegion &region, const QImage &image, const QPoint &origin) {
    const uchar *pixels = image.constBits();
    const qsizetype lineLength = image.bytesPerLine();
    for (const QRect &rect : region) {
        const QPoint from = rect.topLeft() - origin;
        const uchar *first = pixels + from.y() * lineLength + from.x() * sizeof(QRgb);
        m_device.write(rect.left(), rect.top(), reinterpret_cast<const uint32_t *>(first),
                       rect.width(), rect.height(), static_cast<size_t>(lineLength));
    }
}

/// Draws the layers over the background into a narrow canvas, band after band, and copies each.
void FbScreen::compose(const QRegion &region, const QVector<Layer> &layers) {
    for (const QRect &rect : region) {
        QImage canvas(rect.width(), std::min(rect.height(), kBandRows), mFormat);
        for (int top = rect.top(); top <= rect.bottom(); top += canvas.height()) {
            const QRect band = QRect(QPoint(rect.left(), top), canvas.size()) & rect;
            paintBand(band, layers, &canvas);
            copy(band, canvas, band.topLeft());
        }
    }
}

void FbScreen::paintBand(const QRect &band, const QVector<Layer> &layers, QImage *canvas) const {
    canvas->fill(Qt::transparent);
    QPainter painter(canvas);
    painter.translate(-band.topLeft());
    painter.fillRect(band, serverState().background);
    for (const Layer &layer : layers) {
        const QRect part = layer.place & band;
        if (part.isEmpty()) continue;
        painter.drawImage(part, layer.image, part.translated(-layer.place.topLeft()));
    }
}

void FbScreen::resizeWindows(Qt::WindowState state, const QRect &rect) const {
    for (QWindow *window : QGuiApplication::topLevelWindows()) {
        const bool here = window->handle() && window->screen() == screen();
        if (here && (window->windowStates() & state)) window->handle()->setGeometry(rect);
    }
}

}  // namespace qws
