#include "movewatermark.h"

#include <QDateTime>
#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <cstring>

#include "font_memory.h"
#include "label_geometry.h"
#include "label_paint.h"
#include "network_comm.h"
#include "record_text.h"

namespace {

constexpr QChar kIdeograph(0x9B51);
constexpr char kAddressesOf[] = "eth0";

bool isSame(const WatermarkOSDParameter &a, const WatermarkOSDParameter &b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

QString withAddresses(QString text) {
    HostLanPara host{};
    get_host_lan_para(kAddressesOf, &host);
    text.replace(QLatin1String("MAC"), record_text(host.macaddr));
    text.replace(QLatin1String("IP"), record_text(host.ipaddr));
    return text;
}

QString slotText(int type, const QString &text) {
    if (text.isEmpty()) return {};
    switch (type) {
        case kSlotText:
            return text;
        case kSlotDateTime:
            return QDateTime::currentDateTime().toString(text);
        case kSlotAddresses:
            return withAddresses(text);
        default:
            return {};
    }
}

bool showsClock(const WatermarkOSDParameter &record) {
    return record.type1 == kSlotDateTime || record.type2 == kSlotDateTime;
}

qint64 pixelsOf(const QSize &size) {
    return qint64{size.width()} * size.height();
}

/** The middle of a label of that size, from which a turned text is drawn. */
QPoint centreOf(const QSize &size) {
    return {(size.width() - 1) / 2, (size.height() - 1) / 2};
}

/** The columns of some of an image's rows that hold pixels which are not transparent. */
QRect painted_in_rows(const QImage &image, int top, int rows) {
    int first = image.width();
    int last = -1;
    for (int y = top; y < top + rows; ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        int left = 0;
        while (left < first && row[left] == 0)
            ++left;
        int right = image.width() - 1;
        while (right > last && row[right] == 0)
            --right;
        first = std::min(first, left);
        last = std::max(last, right);
    }
    return {QPoint(first, top), QPoint(last, top + rows - 1)};
}

/** Bands that hold all pixels of the image that are not transparent: a few, because painting costs
 * by the rectangle as well. */
QRegion painted_bands(const QImage &image) {
    constexpr int kLeastRows = 16;
    constexpr int kMostBands = 32;
    const int rows = std::max(kLeastRows, (image.height() + kMostBands - 1) / kMostBands);
    QRegion bands;
    for (int top = 0; top < image.height(); top += rows)
        bands += painted_in_rows(image, top, std::min(rows, image.height() - top));
    return bands;
}

}  // namespace

MoveWatermarkLabel::MoveWatermarkLabel(QWidget *parent, bool movable)
    : MoveLabel(parent, movable, kWatermarkTextKind), mMetrics(font()) {}

bool MoveWatermarkLabel::setOSD(const WatermarkOSDParameter *param, int) {
    if (param == nullptr) return false;
    mRecord = *param;
    creatRealTxtResize();
    scrollForward();
    move(placed_unsigned(mRecord.x, mRecord.y, actualScreen(), virtualScreen()));
    return true;
}

void MoveWatermarkLabel::updateDateTime(const QDateTime &now) {
    QString shown = text();
    if (mRecord.type1 == kSlotDateTime) {
        shown = now.toString(record_text(mRecord.text1));
    } else if (mRecord.type2 == kSlotDateTime) {
        shown = now.toString(record_text(mRecord.text2));
    }
    showText(shown);
}

void MoveWatermarkLabel::updateText(const char *text) {
    showText(QString::fromUtf8(text));
}

void MoveWatermarkLabel::showText(const QString &text) {
    setText(text);
    note_drawn_text(text, paintFont(mRecord.bold != 0, pointSize()), mRecord.angle);
    adjustSize();
    updatePlace();
}

void MoveWatermarkLabel::updatePlace() {
    if (parentWidget() == nullptr) {
        update();
    } else if (isVisible()) {
        parentWidget()->update(geometry());
    }
}

int MoveWatermarkLabel::getActualFontSize(int font, int size) const {
    return point_size(font, size, screen_height(actualScreen()) * double(mRecord.arrangement_mode));
}

void MoveWatermarkLabel::creatRealTxtResize() {
    if (mRecord.visible == 0) return;
    const QString first = slotText(mRecord.type1, record_text(mRecord.text1));
    const QString second = slotText(mRecord.type2, record_text(mRecord.text2));
    if (!isLaidOut(first, second)) layOut(first, second);
}

bool MoveWatermarkLabel::isLaidOut(const QString &first, const QString &second) const {
    return mLayout.screen == actualScreen() && mLayout.first == first && mLayout.second == second &&
           mLayout.text == text() && mLayout.size == size() && mLayout.font == font() &&
           isSame(mLayout.record, mRecord);
}

void MoveWatermarkLabel::layOut(const QString &first, const QString &second) {
    const QString contet = record_text(mRecord.contet);
    measureIn(contet, pointSize());
    const int limit = wrap_width(actualScreen(), mRecord.arrangement_mode);

    setFontStyle(mRecord.bold != 0, pointSize());
    setText(joined_lines(wrappedSlot(first, mRecord.type1, limit),
                         wrappedSlot(contet, kSlotText, limit),
                         wrappedSlot(second, mRecord.type2, limit)));
    adjustSize();
    if (width() > limit) wrapByMeasure(contet, limit);
    note_drawn_text(text(), paintFont(mRecord.bold != 0, pointSize()), mRecord.angle);
    if (mRecord.angle % 360 != 0) resize(width(), turned_height(size(), mRecord.angle));
    if (!isRendered()) mRendition.reset();
    updatePlace();
    mLayout = {mRecord, actualScreen(), first, second, text(), size(), font()};
}

void MoveWatermarkLabel::measureIn(const QString &family, int points) {
    if (mMeasuredIn.family == family && mMeasuredIn.points == points) return;
    // Kept: the text is measured in the family that bears its name, that is in the default one.
    const QFont font(family, points);
    note_measuring_font(font);
    const QFontMetrics metrics(font);
    mMetrics = metrics;
    mMeasure = {metrics.horizontalAdvance(QLatin1Char('A')), metrics.horizontalAdvance(kIdeograph),
                metrics.height()};
    mMeasuredIn = {family, points};
}

QString MoveWatermarkLabel::wrappedSlot(const QString &text, int type, int limit) const {
    if (text.isEmpty()) return {};
    const int width = mMetrics.horizontalAdvance(text);
    return type == kSlotDateTime ? wrapped_at_blanks(text, width, limit, mMeasure)
                                 : wrapped_once(text, width, limit, mMeasure);
}

void MoveWatermarkLabel::wrapByMeasure(const QString &contet, int limit) {
    const MeasuredText wrapped = wrapped_by_measure(text(), contet, limit, mMeasure);
    const int64_t needed = int64_t{mMeasure.lineHeight} * wrapped.lines;
    // Kept: the height is judged by the cell's width.
    const bool fits = needed <= screen_width(actualScreen()) - 1;
    setText(wrapped.text);
    resize(limit + (wrapped.wide ? mMeasure.ideograph / 2 : 0),
           static_cast<int>(fits ? needed : screen_height(actualScreen())));
}

bool MoveWatermarkLabel::checkIsVisible(bool show) {
    return setShown(mRecord.visible != 0 && show);
}

void MoveWatermarkLabel::checkAndMove(int tick) {
    if (mRecord.visible != 1 || !moves_on(tick, mRecord.speed)) return;
    if (showsClock(mRecord)) creatRealTxtResize();
    if (mRecord.en != 0) scrollText();
}

void MoveWatermarkLabel::scrollText() {
    QWidget *parent = parentWidget();
    if (parent == nullptr || !isVisible() || !isRendered() || !isRenditionCurrent()) {
        scroll(mRecord.direction, mRecord.step);
        return;
    }
    const QPoint before = pos();
    {
        const HeldUpdates label(*this);
        const HeldUpdates window(*parent);
        scroll(mRecord.direction, mRecord.step);
    }
    if (pos() == before) return;
    parent->update(mRendition->painted.translated(before) + mRendition->painted.translated(pos()));
}

void MoveWatermarkLabel::actualScreenChanged(const QRect &) {
    creatRealTxtResize();
}

void MoveWatermarkLabel::paintEvent(QPaintEvent *event) {
    QPainter painter(this);
    if (!isRendered()) {
        mRendition.reset();
        paintText(painter, event->rect());
        return;
    }
    renderTurned();
    // Within one rectangle an image is copied at once, else row by row by several threads.
    for (const QRect &part : event->region() & mRendition->painted) {
        painter.setClipRect(part);
        painter.drawImage(part, mRendition->image, part);
    }
}

bool MoveWatermarkLabel::isRendered() const {
    return mRecord.angle != 0 && mRecord.en != 0 &&
           window()->testAttribute(Qt::WA_TranslucentBackground) &&
           pixelsOf(size()) <= pixelsOf(window()->size());
}

bool MoveWatermarkLabel::isRenditionCurrent() const {
    return mRendition && isRenditionOfThis(*mRendition);
}

bool MoveWatermarkLabel::isRenditionOfThis(const Rendition &rendition) const {
    return rendition.text == text() && rendition.image.size() == size() &&
           rendition.font == paintFont(mRecord.bold != 0, pointSize()) &&
           isSame(rendition.record, mRecord);
}

void MoveWatermarkLabel::renderTurned() {
    if (isRenditionCurrent()) return;
    static QWeakPointer<const Rendition> latest;
    mRendition = latest.toStrongRef();
    if (isRenditionCurrent()) return;
    QImage image(size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setLayoutDirection(layoutDirection());
        paintText(painter, rect());
    }
    const QFont font = paintFont(mRecord.bold != 0, pointSize());
    mRendition.reset(new Rendition{text(), font, mRecord, image, painted_bands(image)});
    latest = mRendition;
}

void MoveWatermarkLabel::hideEvent(QHideEvent *event) {
    mRendition.reset();
    MoveLabel::hideEvent(event);
}

void MoveWatermarkLabel::paintText(QPainter &painter, const QRect &visible) const {
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setFont(paintFont(mRecord.bold != 0, pointSize()));
    const TextColors colors = record_colors(mRecord);
    if (!colors.outlined) painter.fillRect(rect(), colors.back);
    QRect textRect = rect();
    if (mRecord.angle != 0) {
        const QPoint centre = centreOf(size());
        textRect.translate(-centre);
        painter.translate(centre);
        painter.rotate(mRecord.angle);
    }
    draw_text(painter, textRect, Qt::AlignCenter, text(), colors, visible);
}
