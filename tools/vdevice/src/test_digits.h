/**
 * @file test_digits.h
 * Big numbers of seven segments: test cards need no font.
 */
#ifndef VDEVICE_TEST_DIGITS_H
#define VDEVICE_TEST_DIGITS_H

#include <QPainter>
#include <QPoint>

namespace vdevice {

/** Paints `number` (0 or more), `height` pixels high, centred on `centre`. */
void paint_number(QPainter &painter, const QPoint &centre, int height, int number);

}  // namespace vdevice

#endif
