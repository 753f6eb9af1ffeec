#include "moveosd.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFont>
#include <QHash>
#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <cstring>
#include <utility>

#include "backing_pixels.h"
#include "font_memory.h"
#include "label_geometry.h"
#include "label_paint.h"
#include "label_picture.h"
#include "record_text.h"

namespace {

enum ContentType { kDateTime = 0, kText = 1, kOtherText = 2, kSource = 3 };

void appendLine(QString &text, const QString &line) {
    if (line.isEmpty()) return;
    if (!text.isEmpty()) text += QLatin1Char('\n');
    text += line;
}

QString composed(const VideoOutputOSDParameter &record, const QString &content) {
    QString text = record_text(record.head);
    appendLine(text, content);
    appendLine(text, record_text(record.tail));
    return text;
}

QString contentOf(const VideoOutputOSDParameter &record, const QString &url) {
    switch (record.type) {
        case kDateTime:
            return QDateTime::currentDateTime().toString(record_text(record.content));
        case kText:
        case kOtherText:
            return record_text(record.content);
        case kSource:
            return url;
        default:
            return {};
    }
}

/** Sizes of texts, of the clocks' first of all: most windows show the same one. */
class TextSizes {
public:
    template <typename Measure>
    QSize of(const QString &text, const QFont &font, Measure measure) {
        const auto known = mSizes.constFind({text, font});
        if (known != mSizes.constEnd()) return *known;
        if (mSizes.size() >= kMost) mSizes.clear();
        return *mSizes.insert({text, font}, measure());
    }
    void clear() { mSizes.clear(); }

private:
    /// Twice the number of labels, so that those of one tick fit.
    static constexpr int kMost = 128;
    QHash<std::pair<QString, QFont>, QSize> mSizes;
};

/** They hold fonts, which end before the application object does. */
TextSizes &textSizes() {
    static TextSizes sizes;
    static const bool clearedAtEnd = [] {
        qAddPostRoutine([] { textSizes().clear(); });
        return true;
    }();
    Q_UNUSED(clearedAtEnd);
    return sizes;
}

bool isAnchoredRight(const VideoOutputOSDParameter &record) {
    return record.corner == 1 || record.corner == 3;
}

}  // namespace

MoveOSDLabel::MoveOSDLabel(QWidget *parent, bool movable, bool second)
    : MoveLabel(parent, movable, kOsdKind), mSecond(second) {}

bool MoveOSDLabel::setOSD(const VideoOutputOSDParameter *param, const QString &url) {
    if (param == nullptr || std::memcmp(param, &mRecord, sizeof mRecord) == 0) return false;
    mRecord = *param;
    setMaximumSize(widget_size(actualScreen()));
    applyFontStyle();
    setText(composed(mRecord, contentOf(mRecord, url)));
    note_drawn_text(text(), paintFont(mRecord.bold != 0, pointSize()));
    adjustSize();
    update();
    return true;
}

void MoveOSDLabel::updateDateTime(const QDateTime &now) {
    if (mRecord.type != kDateTime) return;
    updateText(composed(mRecord, now.toString(record_text(mRecord.content))));
}

void MoveOSDLabel::updateURLInfo(const QString &url) {
    if (mRecord.type == kSource) updateText(composed(mRecord, url));
}

void MoveOSDLabel::updateText(const QString &text) {
    const int previousWidth = width();
    showText(text);
    adjustSize();
    if (width() == previousWidth || !isAnchoredRight(mRecord)) return;
    const int64_t rightEdge = room_after(mRecord.x, screen_width(actualScreen()));
    move(corner_at(rightEdge - width() + actualScreen().left(), y()));
}

void MoveOSDLabel::showText(const QString &text) {
    const QString before = this->text();
    {
        const HeldUpdates held(*this);
        setText(text);
    }
    if (before == text) return;
    const QFont font(paintFont(mRecord.bold != 0, pointSize()), this);
    note_drawn_text(text, font);
    if (!isVisible()) return;
    const bool fromLeft = layoutDirection() == Qt::LeftToRight;
    update(fromLeft ? changed_part(rect(), before, text, font) : rect());
}

int MoveOSDLabel::getActualFontSize(int font, int size) const {
    return point_size(font, size, screen_height(actualScreen()));
}

bool MoveOSDLabel::checkIsVisible(bool) {
    const bool textComesLater = mRecord.type == kDateTime || mRecord.type == kSource;
    return setShown(mRecord.visible != 0 && (textComesLater || !text().isEmpty()));
}

void MoveOSDLabel::actualScreenChanged(const QRect &previous) {
    const int before = point_size(mRecord.font, mRecord.size, screen_height(previous));
    if (before != pointSize()) {
        applyFontStyle();
        note_drawn_text(text(), paintFont(mRecord.bold != 0, pointSize()));
        adjustSize();
    }
    // Painting holds the label within its room, which is another one now.
    update();
}

void MoveOSDLabel::applyFontStyle() {
    setFontStyle(mRecord.bold != 0, pointSize());
}

void MoveOSDLabel::paintEvent(QPaintEvent *event) {
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::TextAntialiasing);
        painter.setFont(paintFont(mRecord.bold != 0, pointSize()));
        paint_label(painter, BackingPixels(painter, *this), rect(), event->region(), text(),
                    record_colors(mRecord));
    }
    limitToRoom();
}

QSize MoveOSDLabel::sizeHint() const {
    ensurePolished();
    // A label that never had a text has another size than one whose text is empty.
    if (text().isEmpty()) return QLabel::sizeHint();
    return textSizes().of(text(), font(), [this] { return QLabel::sizeHint(); });
}

void MoveOSDLabel::limitToRoom() {
    const auto limit = [](uint32_t position, int64_t extent) {
        return static_cast<int>(
            std::clamp<uint32_t>(room_after(position, extent), 1, QWIDGETSIZE_MAX));
    };
    setMaximumSize(limit(mRecord.x, screen_width(actualScreen())),
                   limit(mRecord.y, screen_height(actualScreen())));
}
