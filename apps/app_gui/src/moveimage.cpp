#include "moveimage.h"

#include <QPixmap>
#include <algorithm>

#include "diagnostics.h"
#include "label_geometry.h"
#include "picture_cache.h"
#include "record_text.h"

MoveImageLabel::MoveImageLabel(QWidget *parent, bool movable, bool second)
    : MoveLabel(parent, movable, kPictureKind), mSecond(second) {}

bool MoveImageLabel::setImage(const WatermarkPictureParameter *param, int) {
    if (param == nullptr) return false;
    mRecord = *param;
    creatRealImageResize();
    return true;
}

void MoveImageLabel::creatRealImageResize() {
    const QByteArray file = record_bytes(mRecord.file);
    if (mRecord.visible == 0 || file.isEmpty()) return;
    const auto picture = cached_picture(file, picture_form(mRecord, widget_size(actualScreen())));
    if (!picture) {
        ERROR_LINE("load %s failed!\n", file.constData());
        return;
    }
    const bool placeable = has_units(virtualScreen());
    showPicture(placeable ? *picture : QPixmap());
    if (placeable) move(placed_signed(mRecord.x, mRecord.y, actualScreen(), virtualScreen()));
}

void MoveImageLabel::showPicture(const QPixmap &picture) {
    resize(picture.size());
    if (picture.cacheKey() != pixmap().cacheKey()) setPixmap(picture);
}

bool MoveImageLabel::checkIsVisible(bool show) {
    return setShown(mRecord.visible != 0 && show && !pixmap().isNull());
}

void MoveImageLabel::checkAndMove(int tick) {
    if (mRecord.en != 1 || mRecord.visible != 1 || !moves_on(tick, mRecord.speed)) return;
    scroll(mRecord.direction, mRecord.step);
}

void MoveImageLabel::actualScreenChanged(const QRect &) {
    creatRealImageResize();
}
