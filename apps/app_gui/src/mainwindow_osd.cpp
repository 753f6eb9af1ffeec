// The main window's overlay labels: OSD texts of the windows and the two watermarks.

#include <QString>
#include <cstring>

#include "basewidget.h"
#include "mainwindow.h"
#include "picture_cache.h"
#include "window_geometry.h"

namespace {

/// Content kind of an OSD entry that names the window's source.
constexpr int kSourceKind = 3;

bool names_source(const VideoOutputOSDParameter &osd) {
    return osd.type == kSourceKind;
}

/// A record's text; one without a NUL ends with its array.
template <size_t kSize>
QString text_of(const char (&field)[kSize]) {
    return QString::fromUtf8(field, static_cast<qsizetype>(strnlen(field, kSize)));
}

template <size_t kSize>
bool is_text(const char (&field)[kSize], const char *text) {
    return std::strncmp(field, text, kSize) == 0;
}

/// Kept: input 0 is named Video_in:49, the code of the character "1".
QString local_input_name(int input) {
    const QString name = QStringLiteral("Video_in:");
    return input < 0 ? name : name + QString::number(static_cast<int>(input + 49u));
}

}  // namespace

void MainWindow::updateAllDisplays() {
    for (unsigned i = 0; i < kOsdLabels; ++i) {
        updateDisplay(i);
    }
}

void MainWindow::updateDisplay(unsigned osd) {
    if (osd >= kOsdLabels) {
        return;
    }
    const int window = mOsd[osd].Channel;
    const QRect *rect = currentRect(window);
    if (mOsd[osd].visible != 0) {
        const QRect shown = rect != nullptr ? *rect : QRect();
        MAINWINDOW_DEBUG("rect%d %d %d x=%d,y=%d, w=%d, h=%d\n", window, splitFlag, maxWndNum,
                         shown.x(), shown.y(), shown.width(), shown.height());
    }
    initDisplay(osd);
    if (rect != nullptr) {
        setContorlsGeometry(osd, *rect);
    }
    showOrHideOsd(osd, maxWndNum);
}

void MainWindow::initDisplay(unsigned osd) {
    if (osd >= kOsdLabels) {
        return;
    }
    const VideoOutputOSDParameter &record = mOsd[osd];
    QString text;
    if (!names_source(record) || record.visible == 0 || sourceText(record, &text)) {
        mUi->osdLabels[osd]->setOSD(&record, text);
    }
}

/// What the source of the entry's window is called; false when the label is to stay as it is.
bool MainWindow::sourceText(const VideoOutputOSDParameter &osd, QString *text) const {
    text->clear();
    if (osd.Channel < 0 || osd.Channel >= kVideoSources) {
        return true;
    }
    const VideoOutSourceChange &source = mSources[osd.Channel];
    if (source.type == kLocalInput) {
        *text = local_input_name(source.index);
        return true;
    }
    if (source.type != kStreamInput) {
        return false;
    }
    if (source.index < 0 || source.index >= kStreams) {
        return true;
    }
    const StreamingInputStatusChange &stream = mStreams[source.index];
    if (is_text(osd.content, "URL")) {
        *text = text_of(stream.url);
        return true;
    }
    if (is_text(osd.content, "Name")) {
        *text = text_of(stream.name);
        return true;
    }
    return false;
}

/// Kept: only the window's first entry that names a source follows a change of the source.
void MainWindow::showSourceOfWindow(int window) {
    for (int i = 0; i < kOsdLabels; ++i) {
        const VideoOutputOSDParameter &record = mOsd[i];
        if (record.Channel != window || !names_source(record)) {
            continue;
        }
        QString text;
        if (record.visible != 0 && sourceText(record, &text)) {
            mUi->osdLabels[i]->updateURLInfo(text);
        }
        return;
    }
}

void MainWindow::setContorlsGeometry(unsigned osd, const QRect &rect) {
    if (osd >= kOsdLabels) {
        return;
    }
    MoveOSDLabel &label = *mUi->osdLabels[osd];
    label.setActualScreen(rect);
    const VideoOutputOSDParameter &record = mOsd[osd];
    const QPoint position = osd_position(record, rect, label.size());
    label.move(position);
    if (record.visible != 0) {
        MAINWINDOW_DEBUG("rect%d %d %d x=%d,y=%d, w=%d, h=%d\n", record.Channel, splitFlag,
                         maxWndNum, position.x(), position.y(), rect.width(), rect.height());
    }
}

int MainWindow::showOrHideOsd(unsigned osd, int windows) {
    if (osd >= kOsdLabels) {
        ERROR_LINE("Invalid Window index[%d]!\n", static_cast<int>(osd));
        return 0;
    }
    MoveOSDLabel &label = *mUi->osdLabels[osd];
    // Kept: an entry of a negative window is shown, where its label happens to be.
    if (mOsd[osd].Channel >= windows) {
        label.hide();
        return 0;
    }
    label.checkIsVisible(true);
    return 1;
}

void MainWindow::layOutTexts(const QSize &screen) {
    for (MoveWatermarkLabel *label : mUi->watermarkTxtLabels) {
        label->hide();
    }
    for (const WatermarkCell &cell : watermark_cells(screen, mText.arrangement_mode)) {
        MoveWatermarkLabel &label = *mUi->watermarkTxtLabels[cell.label];
        label.setVirtualScreen(cell.virtualScreen);
        label.setActualScreen(cell.actualScreen);
        label.setOSD(&mText, 1);
        label.checkIsVisible(true);
    }
}

void MainWindow::layOutPictures(const QSize &screen) {
    const OneReading reading;
    for (MoveImageLabel *label : mUi->watermarkImgLabels) {
        label->hide();
    }
    for (const WatermarkCell &cell : watermark_cells(screen, mPicture.arramode)) {
        MoveImageLabel &label = *mUi->watermarkImgLabels[cell.label];
        label.setVirtualScreen(cell.virtualScreen);
        label.setActualScreen(cell.actualScreen);
        label.setImage(&mPicture, 1);
        label.checkIsVisible(true);
    }
}

void MainWindow::dispWatermarkTxt() {
    const WatermarkOSDParameter &t = mText;
    MAINWINDOW_DEBUG("===dispWatermarkTxt===\n");
    MAINWINDOW_DEBUG(
        "visible=%d font=%d bold=%d stroke=%d forecolor=%.64s backcolor=%.64s forealpha=%x "
        "backalpha=%x\n",
        t.visible, t.font, t.bold, t.stroke, t.forecolor, t.backcolor, t.forealpha, t.backalpha);
    MAINWINDOW_DEBUG("\t x=%d y=%d contet=%.256s angle=%d arrangement_mode=%d\n", t.x, t.y,
                     t.contet, t.angle, t.arrangement_mode);
    MAINWINDOW_DEBUG("\t en=%d speed=%d direction=%d\n", t.en, t.speed, t.direction);
    layOutTexts(size());
}

void MainWindow::dispWatermarkImage() {
    const WatermarkPictureParameter &p = mPicture;
    MAINWINDOW_DEBUG("===dispWatermarkImage===\n");
    MAINWINDOW_DEBUG("visible=%d x=%d y=%d w=%d h=%d alpha=%d sizemode=%d angle=%d arramode=%d\n",
                     p.visible, p.x, p.y, p.w, p.h, p.alpha, p.sizemode, p.angle, p.arramode);
    MAINWINDOW_DEBUG("\ten=%d speed=%d direction=%d file=%.256s\n", p.en, p.speed, p.direction,
                     p.file);
    layOutPictures(size());
}

void MainWindow::dispWatermarkDot() {
    const WatermarkDotmatrixParameter &d = mDots;
    MAINWINDOW_DEBUG("visible=%d color=%.64s alpha=%d en=%d speed=%d direction=%d text=%.256s\n",
                     d.visible, d.color, d.alpha, d.en, d.speed, d.direction, d.text);
}
