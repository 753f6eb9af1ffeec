/**
 * @file picture_cache.h
 * The watermark picture: its file, its form on the screen, and a short memory of forms, because up
 * to sixteen labels show the same one.
 *
 * Thread: display.
 */
#ifndef APP_GUI_PICTURE_CACHE_H
#define APP_GUI_PICTURE_CACHE_H

#include <QByteArray>
#include <QImage>
#include <QPixmap>
#include <QSize>
#include <optional>

#include "record_codec/records.h"

/** How a picture fills its cell. */
enum PictureSizeMode { kPictureTile = 1, kPictureStretch = 2, kPictureFit = 3 };

/** What a record makes of a picture. */
struct PictureForm {
    QSize cell;    ///< pixels
    int sizemode;  ///< PictureSizeMode; others leave the picture's size
    int angle;     ///< degrees, -179 to 179
    int opacity;   ///< 0 to 255

    bool operator==(const PictureForm &other) const {
        return cell == other.cell && sizemode == other.sizemode && angle == other.angle &&
               opacity == other.opacity;
    }
};

/** The form that a record asks for in a cell of that size. */
PictureForm picture_form(const WatermarkPictureParameter &record, const QSize &cell);

/**
 * The bytes of a regular file of at most 64 MiB; nothing for others: a pipe or a device could
 * block.
 * @param path  as bytes, usually UTF-8. One that names no file is tried again as Latin-1, and then
 *              with the suffix of each picture format.
 */
std::optional<QByteArray> picture_bytes(const QByteArray &path);

/**
 * The picture in an image file's bytes, of any format that the toolkit reads. A null image for what
 * is none, and for one that claims more pixels than QImageReader::allocationLimit() allows.
 * @param suffix  of the file's name, which tells formats that the bytes do not.
 */
QImage decoded_picture(const QByteArray &bytes, const QByteArray &suffix);

/** The picture sized, turned and made translucent. A null image when the cell has no pixel. */
QImage formed_picture(const QImage &picture, const PictureForm &form);

/**
 * While one lives, cached_picture() reads a file once, however many labels ask for it: what they
 * show is to be one and the same picture, also of a file that is replaced meanwhile.
 */
class OneReading {
public:
    OneReading();
    ~OneReading();
    OneReading(const OneReading &) = delete;
    OneReading &operator=(const OneReading &) = delete;

    /** The file's bytes: what the innermost one that lives has read, else as they are now. */
    static std::optional<QByteArray> bytes(const QByteArray &path);

private:
    static inline OneReading *innermost = nullptr;

    OneReading *m_outer;
    QByteArray m_path;  ///< null before the first file
    std::optional<QByteArray> m_bytes;
};

/**
 * The picture of a file in a form; nothing when it cannot be loaded. The file is read each time
 * (see OneReading) and compared with what was read before, so that one replaced within the same
 * second is seen; decoding and forming are done once.
 */
std::optional<QPixmap> cached_picture(const QByteArray &path, const PictureForm &form);

#endif
