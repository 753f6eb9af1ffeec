/**
 * @file paint_memory.h
 * Memory to paint a window in.
 *
 * Thread: any.
 */
#ifndef WINDOW_SERVER_PAINT_MEMORY_H
#define WINDOW_SERVER_PAINT_MEMORY_H

#include <QImage>

namespace qws {

/**
 * A transparent image of 32 bits per pixel, on large pages where the system has them: painting a
 * screen goes through thousands of small ones, and each is looked up anew.
 * @return a null image when there is no memory or no size.
 */
QImage transparentImage(const QSize &size, QImage::Format format);

}  // namespace qws

#endif
