/**
 * @file record_text.h
 * Texts of the records: bytes in a fixed array that end at their NUL or, without one, with the
 * array.
 */
#ifndef APP_GUI_RECORD_TEXT_H
#define APP_GUI_RECORD_TEXT_H

#include <QByteArray>
#include <QString>
#include <cstddef>
#include <cstring>

/** The field's bytes. */
template <size_t size>
QByteArray record_bytes(const char (&field)[size]) {
    return QByteArray(field, static_cast<int>(strnlen(field, size)));
}

/** The field read as UTF-8; bytes that are none become replacement characters. */
template <size_t size>
QString record_text(const char (&field)[size]) {
    return QString::fromUtf8(field, static_cast<int>(strnlen(field, size)));
}

#endif
