#include "fb_window.h"

#include <QtFbSupport/private/qfbscreen_p.h>

#include <utility>

#include "paint_memory.h"
#include "pixel_rows.h"
#include "server_state.h"

namespace qws {

void FbWindow::repaint(const QRegion &dirty) {
    const QRect place = geometry();
    if (mOldGeometry != place) platformScreen()->setDirty(mOldGeometry);
    mOldGeometry = place;
    for (const QRect &rect : dirty)
        platformScreen()->setDirty(rect.translated(place.topLeft()));
}

void FbBackingStore::resize(const QSize &size, const QRegion &) {
    if (mImage.size() == size) return;
    mImage = {};
    mImage = transparentImage(size, QImage::Format_ARGB32_Premultiplied);
    m_isNew = true;
}

void FbBackingStore::beginPaint(const QRegion &region) {
    m_painting.start();
    lock();
    if (std::exchange(m_isNew, false)) return;
    uchar *pixels = mImage.bits();
    const auto lineLength = static_cast<size_t>(mImage.bytesPerLine());
    for (const QRect &rect : region &mImage.rect()) {
        uchar *first = pixels + rect.top() * lineLength + rect.left() * sizeof(QRgb);
        clearRows({first, lineLength}, rect.width(), rect.height());
    }
}

void FbBackingStore::endPaint() {
    unlock();
    serverState().counters.paintNanoseconds += static_cast<uint64_t>(m_painting.nsecsElapsed());
}

}  // namespace qws
