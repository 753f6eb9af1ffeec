#include "picture_cache.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>
#include <QImageReader>
#include <QPainter>
#include <QTransform>
#include <algorithm>
#include <vector>

namespace {

constexpr qint64 kLargestFile = 64 * 1024 * 1024;
/** One for the record that was and one for the record that comes, while labels change over. */
constexpr size_t kRemembered = 2;
constexpr int kWideTile = 64;

struct Remembered {
    QByteArray bytes;
    QByteArray suffix;
    PictureForm form;
    QPixmap picture;
};

/** The forms made last, the latest first. They go before the application object does. */
std::vector<Remembered> &memory() {
    static std::vector<Remembered> forms;
    static const bool clearedAtEnd = [] {
        qAddPostRoutine([] { memory().clear(); });
        return true;
    }();
    Q_UNUSED(clearedAtEnd);
    return forms;
}

bool is_regular_file(const QByteArray &path) {
    struct stat status {};
    return stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode);
}

/** A picture that is built into the process, such as a cursor's. */
std::optional<QByteArray> resource_bytes(const QByteArray &path) {
    QFile file(QString::fromUtf8(path));
    if (!file.open(QIODevice::ReadOnly)) return {};
    return file.readAll();
}

QByteArray suffix_of(const QByteArray &path) {
    const int dot = static_cast<int>(path.lastIndexOf('.'));
    return dot > path.lastIndexOf('/') ? path.mid(dot + 1).toLower() : QByteArray();
}

/** An image of premultiplied transparent pixels; null when it would have none. */
QImage empty_image(const QSize &size) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    if (!image.isNull()) image.fill(Qt::transparent);
    return image;
}

QImage filled(const QImage &tile, const QSize &size) {
    QImage image = empty_image(size);
    if (image.isNull()) return image;
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(image.rect(), QBrush(tile));
    return image;
}

QImage tiled(const QImage &tile, const QSize &cell) {
    // Painting costs by the copy, so a narrow tile is first made a wide one.
    const int copies = (kWideTile + tile.width() - 1) / tile.width();
    return filled(filled(tile, {tile.width() * copies, tile.height()}), cell);
}

QImage sized(const QImage &picture, const PictureForm &form) {
    switch (form.sizemode) {
        case kPictureTile:
            return tiled(picture, form.cell);
        case kPictureStretch:
            return picture.scaled(form.cell, Qt::IgnoreAspectRatio, Qt::FastTransformation);
        case kPictureFit:
            return picture.scaled(form.cell, Qt::KeepAspectRatio, Qt::FastTransformation);
        default:
            return picture;
    }
}

QImage with_opacity(const QImage &picture, int opacity) {
    QImage image = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (image.isNull() || opacity == 255) return image;
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    painter.fillRect(image.rect(), QColor(0, 0, 0, opacity));
    return image;
}

bool is_same(const QByteArray &a, const QByteArray &b) {
    return (a.size() == b.size() && a.constData() == b.constData()) || a == b;
}

/** Whether a picture that is shown in its own size takes more memory, once it is turned, than the
 * reader allows a picture. */
bool is_too_large(const QSize &picture, const PictureForm &form) {
    const bool fillsCell = form.sizemode >= kPictureTile && form.sizemode <= kPictureFit;
    if (fillsCell) return false;
    const qreal limit = qreal(QImageReader::allocationLimit()) * 1024 * 1024;
    const QRectF turned = QTransform().rotate(form.angle).mapRect(QRectF(QPointF(), picture));
    return limit > 0 && turned.width() * turned.height() * sizeof(QRgb) > limit;
}

/** The file that a path means: the path as it stands, as Latin-1, or one of these with the suffix
 * of a picture format behind it. Empty for none. */
QByteArray file_name(const QByteArray &path) {
    const QByteArray names[] = {path, QString::fromLatin1(path).toUtf8()};
    for (const QByteArray &name : names) {
        if (is_regular_file(name)) return name;
    }
    if (path.isEmpty()) return {};
    for (const QByteArray &name : names) {
        for (const QByteArray &suffix : QImageReader::supportedImageFormats()) {
            if (is_regular_file(name + '.' + suffix)) return name + '.' + suffix;
        }
    }
    return {};
}

}  // namespace

PictureForm picture_form(const WatermarkPictureParameter &record, const QSize &cell) {
    return {cell, record.sizemode, record.angle % 180, std::clamp(record.alpha, 0, 255)};
}

std::optional<QByteArray> picture_bytes(const QByteArray &path) {
    if (path.startsWith(":/")) return resource_bytes(path);
    const QByteArray name = file_name(path);
    if (name.isEmpty()) return {};
    const int descriptor = open(name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) return {};
    QFile file;
    if (!file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        close(descriptor);
        return {};
    }
    if (file.isSequential() || file.size() > kLargestFile) return {};
    // No more than there is: the room that is asked for is the room that is kept.
    return file.read(file.size());
}

QImage decoded_picture(const QByteArray &bytes, const QByteArray &suffix) {
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    if (!reader.canRead()) reader.setFormat(suffix);
    return reader.read();
}

QImage formed_picture(const QImage &picture, const PictureForm &form) {
    // A picture without transparent pixels is turned as one without alpha: its edges come out so.
    const QImage source = QPixmap::fromImage(picture).toImage();
    const bool fillsCell = form.sizemode >= kPictureTile && form.sizemode <= kPictureFit;
    if (fillsCell && form.cell.isEmpty()) return {};
    const QImage turned =
        sized(source, form).transformed(QTransform().rotate(form.angle), Qt::SmoothTransformation);
    return with_opacity(turned, form.opacity);
}

OneReading::OneReading() : m_outer(innermost) {
    innermost = this;
}

OneReading::~OneReading() {
    innermost = m_outer;
}

std::optional<QByteArray> OneReading::bytes(const QByteArray &path) {
    if (innermost == nullptr) return picture_bytes(path);
    if (innermost->m_path != path) {
        innermost->m_path = path;
        innermost->m_bytes = picture_bytes(path);
    }
    return innermost->m_bytes;
}

std::optional<QPixmap> cached_picture(const QByteArray &path, const PictureForm &form) {
    const std::optional<QByteArray> bytes = OneReading::bytes(path);
    if (!bytes) return {};
    const QByteArray suffix = suffix_of(path);
    std::vector<Remembered> &forms = memory();
    const auto known = std::find_if(forms.begin(), forms.end(), [&](const Remembered &entry) {
        return entry.form == form && entry.suffix == suffix && is_same(entry.bytes, *bytes);
    });
    if (known != forms.end()) {
        known->bytes = *bytes;  // the next comparison finds them at the same place
        std::rotate(forms.begin(), known, known + 1);
        return forms.front().picture;
    }
    const QImage picture = decoded_picture(*bytes, suffix);
    if (picture.isNull() || is_too_large(picture.size(), form)) return {};
    if (forms.size() == kRemembered) forms.pop_back();
    forms.insert(forms.begin(),
                 {*bytes, suffix, form, QPixmap::fromImage(formed_picture(picture, form))});
    return forms.front().picture;
}
