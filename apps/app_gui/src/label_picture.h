/**
 * @file label_picture.h
 * A short memory of painted labels: a text that several windows show, or one window again and
 * again, is a copy of pixels instead of a walk along its characters.
 *
 * Thread: display.
 */
#ifndef APP_GUI_LABEL_PICTURE_H
#define APP_GUI_LABEL_PICTURE_H

#include <QRect>
#include <QRegion>
#include <QString>

#include "label_paint.h"

class BackingPixels;
class QPainter;

/**
 * Paints a label: its box, where it has one, and its text at the top left of `rect`.
 * A picture is used only where its pixels do not meet painted ones: there they are those that
 * painting the text gives.
 *
 * @param painter  with the text's font.
 * @param pixels   what the painter paints on.
 * @param dirty    what of `rect` is painted; the painter's clip.
 */
void paint_label(QPainter &painter, const BackingPixels &pixels, const QRect &rect,
                 const QRegion &dirty, const QString &text, const TextColors &colors);

/** Frees all pictures. */
void forget_label_pictures();

#endif
