/**
 * @file fb_screen.h
 * The framebuffer as Qt's screen: stacks the windows (QFbScreen does) and copies what is dirty to
 * the device, once and row by row.
 *
 * Thread: the display thread.
 */
#ifndef WINDOW_SERVER_FB_SCREEN_H
#define WINDOW_SERVER_FB_SCREEN_H

#include <QtFbSupport/private/qfbscreen_p.h>
#include <QImage>
#include <QVector>

#include "fb_device.h"

namespace qws {

class FbScreen : public QFbScreen {
public:
    explicit FbScreen(FbCalls &calls);
    ~FbScreen() override;

    /** Opens the device that QWS_DISPLAY names. @return true: without one the screen is unseen. */
    bool initialize() override;

    /** As Screen::setMode. */
    bool setMode(int width, int height, int depth);
    /** Tells Qt and the maximised windows of a new largest rectangle. */
    void applyMaxWindowRect();
    /** Copies the whole screen again at the next turn of the event loop. */
    void refresh();

    QRect availableGeometry() const override;
    QDpi logicalDpi() const override { return kDpi; }
    QDpi logicalBaseDpi() const override { return kDpi; }
    Flags flags() const override { return DontForceFirstWindowToFullScreen; }

protected:
    QRegion doRedraw() override;

private:
    struct Layer;

    /// One point is one pixel.
    static constexpr QDpi kDpi{72, 72};

    QVector<Layer> visibleLayers() const;
    void takeGeometry(const QSize &size);
    void copy(const QRegion &region, const QImage &image, const QPoint &origin);
    void compose(const QRegion &region, const QVector<Layer> &layers);
    void paintBand(const QRect &band, const QVector<Layer> &layers, QImage *canvas) const;
    void resizeWindows(Qt::WindowState state, const QRect &rect) const;

    FbDevice m_device;
};

}  // namespace qws

#endif
