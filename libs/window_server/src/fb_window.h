/**
 * @file fb_window.h
 * A window on the framebuffer and the cached memory it is painted in.
 *
 * Thread: the display thread.
 */
#ifndef WINDOW_SERVER_FB_WINDOW_H
#define WINDOW_SERVER_FB_WINDOW_H

#include <QtFbSupport/private/qfbbackingstore_p.h>
#include <QtFbSupport/private/qfbwindow_p.h>
#include <QElapsedTimer>

namespace qws {

class FbWindow : public QFbWindow {
public:
    using QFbWindow::QFbWindow;

    /** Marks exactly `dirty` (window coordinates) for the next copy, not the box around it. */
    void repaint(const QRegion &dirty) override;
};

class FbBackingStore : public QFbBackingStore {
public:
    using QFbBackingStore::QFbBackingStore;

    /** New memory is transparent. */
    void resize(const QSize &size, const QRegion &staticContents) override;
    /**
     * Makes `region` transparent, so that translucent contents do not pile up. New memory is so
     * already, and its pages are not taken from the system before something is painted there.
     */
    void beginPaint(const QRegion &region) override;
    void endPaint() override;

private:
    QElapsedTimer m_painting;
    bool m_isNew = false;
};

}  // namespace qws

#endif
