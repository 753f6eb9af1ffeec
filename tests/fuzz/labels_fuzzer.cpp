// The overlay labels take records, screens, ticks, drags and picture files of any content, and
// paint. An input is a list of steps: a letter for the step's place in kSteps ('a' is the first),
// then what the step takes.

#include <QDateTime>
#include <QMouseEvent>

#include "moveimage.h"
#include "offscreen.h"
#include "scratch_folder.h"

namespace {

constexpr QSize kScreen(640, 360);
constexpr int kMostSteps = 64;

/** The labels of one input, and the records that they were given last. */
struct Stage {
    QWidget window;
    MoveOSDLabel osd{&window, true, false};
    MoveWatermarkLabel text{&window, true};
    MoveImageLabel picture{&window, true, false};
    VideoOutputOSDParameter osdRecord{};
    WatermarkOSDParameter textRecord{};
    WatermarkPictureParameter pictureRecord{};

    Stage() { window.resize(kScreen); }

    template <typename Use>
    void each(Use use) {
        use(osd);
        use(text);
        use(picture);
    }
};

const record_codec::Record &table(const char *name) {
    return *record_codec::find_record(name);
}

std::string pictureFile(const std::string &content) {
    static const fuzz::ScratchFolder folder;
    return folder.write("picture", content);
}

/** An edge of a screen of at most some thousand pixels, as the window's own are. */
QRect actualScreen(fuzz::Input &input) {
    const auto edge = [&] { return input.value<int16_t>() / 8; };
    const QPoint corner(edge(), edge());
    return {corner, QSize(edge(), edge())};
}

QRect virtualScreen(fuzz::Input &input) {
    const auto edge = [&] { return input.value<int32_t>(); };
    const int left = edge(), top = edge(), right = edge(), bottom = edge();
    return {QPoint(left, top), QPoint(right, bottom)};
}

void sendMouse(QWidget &label, QEvent::Type type, const QPoint &at) {
    const Qt::MouseButtons held =
        type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, QPointF(at), QPointF(label.mapToGlobal(at)), Qt::LeftButton, held,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(&label, &event);
}

// ---- steps --------------------------------------------------------------------------------------

void setOsdRecord(Stage &stage, fuzz::Input &input) {
    input.patch(table("VideoOutputOSDParameter"), &stage.osdRecord);
    const QString source = QString::fromStdString(input.text());
    stage.osd.setOSD(&stage.osdRecord, source);
}

void setTextRecord(Stage &stage, fuzz::Input &input) {
    input.patch(table("WatermarkOSDParameter"), &stage.textRecord);
    stage.text.setOSD(&stage.textRecord, 0);
}

void setPictureRecord(Stage &stage, fuzz::Input &input) {
    input.patch(table("WatermarkPictureParameter"), &stage.pictureRecord);
    stage.picture.setImage(&stage.pictureRecord, 0);
}

void setPictureFile(Stage &stage, fuzz::Input &input) {
    const std::string path = pictureFile(input.until("\n\n"));
    std::strncpy(stage.pictureRecord.file, path.c_str(), sizeof stage.pictureRecord.file - 1);
    stage.picture.setImage(&stage.pictureRecord, 0);
}

void setVirtualScreen(Stage &stage, fuzz::Input &input) {
    const QRect screen = virtualScreen(input);
    stage.each([&](MoveLabel &label) { label.setVirtualScreen(screen); });
}

void setActualScreen(Stage &stage, fuzz::Input &input) {
    const QRect screen = actualScreen(input);
    stage.each([&](MoveLabel &label) { label.setActualScreen(screen); });
}

void tick(Stage &stage, fuzz::Input &input) {
    const int first = input.value<int32_t>();
    const int last = first > INT32_MAX - 8 ? first : first + 8;
    for (int now = first; now < last; ++now) {
        stage.text.checkAndMove(now);
        stage.picture.checkAndMove(now);
    }
}

void tellTime(Stage &stage, fuzz::Input &input) {
    const QDateTime now = QDateTime::fromMSecsSinceEpoch(input.value<int64_t>(), Qt::UTC);
    stage.osd.updateDateTime(now);
    stage.text.updateDateTime(now);
}

void tellSource(Stage &stage, fuzz::Input &input) {
    const std::string text = input.text();
    stage.osd.updateURLInfo(QString::fromStdString(text));
    stage.text.updateText(text.c_str());
}

void moveLabels(Stage &stage, fuzz::Input &input) {
    const QPoint to(input.value<int32_t>(), input.value<int32_t>());
    stage.each([&](MoveLabel &label) { label.moveInValidRegion(to); });
}

void dragLabels(Stage &stage, fuzz::Input &input) {
    const QPoint from(input.value<int16_t>(), input.value<int16_t>());
    const QPoint to(input.value<int16_t>(), input.value<int16_t>());
    stage.each([&](MoveLabel &label) {
        sendMouse(label, QEvent::MouseButtonPress, from);
        sendMouse(label, QEvent::MouseMove, to);
        sendMouse(label, QEvent::MouseButtonRelease, to);
    });
}

void paint(Stage &stage, fuzz::Input &) {
    stage.each([](auto &label) { label.checkIsVisible(true); });
    fuzz::paint(stage.window, kScreen);
}

constexpr void (*kSteps[])(Stage &, fuzz::Input &) = {
    setOsdRecord,    setTextRecord, setPictureRecord, setPictureFile, setVirtualScreen,
    setActualScreen, tick,          tellTime,         tellSource,     moveLabels,
    dragLabels,      paint,
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::start_application();
    fuzz::Input input(data, size);
    Stage stage;
    for (int step = 0; step < kMostSteps && !input.empty(); ++step) {
        kSteps[static_cast<uint8_t>(input.byte() - 'a') % std::size(kSteps)](stage, input);
    }
    paint(stage, input);
    return 0;
}
