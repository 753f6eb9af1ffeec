/**
 * Labels with a past against fresh ones: whatever a label has shown before, the same screens,
 * record, files and addresses give the same text, style, place and pixels. Every round changes one
 * thing.
 */
#include <QDateTime>
#include <QEvent>
#include <QFile>
#include <QTemporaryDir>
#include <climits>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "labels_fixture.h"
#include "moveimage.h"
#include "network_comm.h"
#include "picture_cache.h"

namespace {

std::string hostAddress = "192.168.1.77";

}  // namespace

extern "C" int __wrap_get_host_lan_para(const char *, HostLanPara *out) {
    fill(out->macaddr, "00:1a:2b:3c:4d:5e");
    fill(out->ipaddr, hostAddress.c_str());
    return 0;
}

namespace {

const QDateTime kNoon(QDate(2024, 6, 11), QTime(12, 34, 56));

constexpr QSize kWindow{640, 400};

/** A label that never had a text is larger than one whose text has become empty. */
constexpr char kFirstText[] = "first";

class Chance {
public:
    explicit Chance(unsigned seed) : mEngine(seed) {}
    /** first to last, both included. */
    int in(int first, int last) { return std::uniform_int_distribution<int>(first, last)(mEngine); }
    template <typename Value, size_t size>
    Value of(const Value (&values)[size]) {
        return values[in(0, static_cast<int>(size) - 1)];
    }

private:
    std::mt19937 mEngine;
};

/** Any number, mostly one that means something. */
int anyNumber(Chance &chance) {
    static constexpr int kEnds[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, 2, 3, INT_MAX - 1, INT_MAX};
    return chance.in(0, 2) == 0 ? chance.of(kEnds) : chance.in(0, 300);
}

template <size_t size>
void fillAny(char (&field)[size], Chance &chance) {
    static constexpr const char *kTexts[] = {"",
                                             "X",
                                             "two words",
                                             "<img src='x'><b>bold</b> &amp; &more",
                                             "a\nb\n\nc",
                                             "\xe9\xad\x91\xe4\xb8\xad\xe6\x96\x87 text",
                                             "bad \xff\xc3\x28 bytes",
                                             "'at' 'any' 'time'",
                                             "MAC and IP",
                                             "a long text of many words, longer than its cell"};
    if (chance.in(0, 11) == 0) {
        fillWhole(field, chance.in(0, 1) != 0 ? 'W' : '\xfe');
    } else {
        fill(field, chance.of(kTexts));
    }
}

template <size_t size>
void fillColor(char (&field)[size], Chance &chance) {
    static constexpr const char *kColors[] = {"#FF8000", "#0000FF", "#12ff34", "red",
                                              "",        "#12",     "no"};
    fill(field, chance.of(kColors));
}

QRect anyCell(Chance &chance) {
    return {chance.in(0, 200), chance.in(0, 100), chance.in(1, 320), chance.in(1, 200)};
}

/** Two windows alike: the label with a past lives in one, the fresh one in the other. */
template <typename Label>
class Pair {
public:
    template <typename... Arguments>
    explicit Pair(Arguments... arguments)
        : make([=](QWidget *parent) { return std::make_unique<Label>(parent, arguments...); }) {
        mPastWindow.resize(kWindow);
        mFreshWindow.resize(kWindow);
        past = make(&mPastWindow);
    }

    void renewFresh() { fresh = make(&mFreshWindow); }

    /** The label with a past paints another text in its size. */
    void showFromOutside() {
        const QSize size = past->size();
        past->updateText("text from outside");
        past->resize(size);
        mPastWindow.pixels();
    }

    /** Lets both paint, so that what painting changes is settled, and compares them. */
    void expectSame(const std::string &what) {
        for (Label *label : {past.get(), fresh.get()})
            label->checkIsVisible(true);
        QImage shown, expected;
        for (int round = 0; round < 2; ++round) {
            shown = mPastWindow.pixels();
            expected = mFreshWindow.pixels();
        }
        ASSERT_EQ(past->text(), fresh->text()) << what;
        ASSERT_EQ(past->styleSheet(), fresh->styleSheet()) << what;
        ASSERT_EQ(past->geometry(), fresh->geometry()) << what;
        ASSERT_EQ(past->maximumSize(), fresh->maximumSize()) << what;
        ASSERT_EQ(past->isHidden(), fresh->isHidden()) << what;
        ASSERT_EQ(past->pixmap().size(), fresh->pixmap().size()) << what;
        ASSERT_EQ(shown, expected) << what;
    }

    std::function<std::unique_ptr<Label>(QWidget *)> make;

private:
    LabelWindow mPastWindow, mFreshWindow;

public:
    std::unique_ptr<Label> past, fresh;
};

/** One field of a record, changed at random. */
template <typename Record>
struct Change {
    const char *field;
    void (*apply)(Record &, Chance &);
};

#define NUMBER(field)                                                                  \
    {                                                                                  \
#field, [](auto &record, Chance &chance) { record.field = anyNumber(chance); } \
    }
#define SMALL(field, first, last)                                                           \
    {                                                                                       \
#field, [](auto &record, Chance &chance) { record.field = chance.in(first, last); } \
    }
#define TEXT(field)                                                                 \
    {                                                                               \
#field, [](auto &record, Chance &chance) { fillAny(record.field, chance); } \
    }
#define COLOR(field)                                                                  \
    {                                                                                 \
#field, [](auto &record, Chance &chance) { fillColor(record.field, chance); } \
    }

template <typename Record, size_t size>
std::string changeOne(Record &record, const Change<Record> (&changes)[size], Chance &chance) {
    const Change<Record> &change = changes[chance.in(0, static_cast<int>(size) - 1)];
    change.apply(record, chance);
    return change.field;
}

constexpr Change<WatermarkOSDParameter> kWatermarkChanges[] = {SMALL(font, -1, 8),
                                                               NUMBER(font),
                                                               NUMBER(size),
                                                               SMALL(bold, 0, 1),
                                                               SMALL(stroke, 0, 1),
                                                               COLOR(forecolor),
                                                               NUMBER(forealpha),
                                                               COLOR(backcolor),
                                                               NUMBER(backalpha),
                                                               SMALL(x, 0, 4000),
                                                               SMALL(y, 0, 4000),
                                                               NUMBER(x),
                                                               NUMBER(y),
                                                               TEXT(contet),
                                                               SMALL(type1, -1, 3),
                                                               TEXT(text1),
                                                               SMALL(type2, -1, 3),
                                                               TEXT(text2),
                                                               SMALL(angle, -400, 400),
                                                               NUMBER(angle),
                                                               SMALL(arrangement_mode, 0, 5),
                                                               NUMBER(arrangement_mode),
                                                               TEXT(if_name),
                                                               NUMBER(en),
                                                               NUMBER(step),
                                                               NUMBER(speed),
                                                               NUMBER(direction)};

TEST(LabelsWithAPast, AWatermarkTextIsThatOfAFreshLabel) {
    Chance chance(20240611);
    Pair<MoveWatermarkLabel> labels(false);
    labels.past->updateText(kFirstText);
    WatermarkOSDParameter record{};
    record.visible = 1;
    record.font = 2;
    QRect cell = anyCell(chance), space{0, 0, 8192, 8192};
    for (int round = 0; round < 400; ++round) {
        std::string what;
        const int choice = chance.in(0, 12);
        if (choice == 0) {
            cell = anyCell(chance);
        } else if (choice == 1) {
            space = {0, 0, chance.in(1, 9000), chance.in(1, 9000)};
        } else if (choice == 2) {
            record.type2 = 2;
            fill(record.text2, "IP");
            labels.past->setOSD(&record, 1);
            hostAddress = "10.0.0." + std::to_string(chance.in(0, 255));
        } else if (choice == 3) {
            labels.showFromOutside();
        } else if (choice == 4) {
            labels.past->updateDateTime(kNoon);
        } else if (choice == 5) {
            labels.past->resize(chance.in(0, 300), chance.in(0, 200));
        } else if (choice == 6) {
            WatermarkOSDParameter hidden{};
            labels.past->setOSD(&hidden, 1);
        } else if (choice == 7) {
            for (int tick = 0; tick < 3; ++tick)
                labels.past->checkAndMove(tick);
        } else {
            what = changeOne(record, kWatermarkChanges, chance);
        }
        labels.renewFresh();
        labels.fresh->updateText(kFirstText);
        for (MoveWatermarkLabel *label : {labels.past.get(), labels.fresh.get()}) {
            label->setVirtualScreen(space);
            label->setActualScreen(cell);
            label->setOSD(&record, 1);
        }
        ASSERT_NO_FATAL_FAILURE(
            labels.expectSame(std::to_string(round) + " " + std::to_string(choice) + what));
    }
}

constexpr Change<VideoOutputOSDParameter> kOsdChanges[] = {
    NUMBER(Channel),   SMALL(type, -1, 4),  SMALL(font, -1, 8), NUMBER(font),      NUMBER(size),
    SMALL(bold, 0, 1), SMALL(stroke, 0, 1), COLOR(forecolor),   NUMBER(forealpha), COLOR(backcolor),
    NUMBER(backalpha), SMALL(corner, 0, 4), SMALL(x, 0, 8200),  SMALL(y, 0, 8200), NUMBER(x),
    NUMBER(y),         NUMBER(scale),       TEXT(content),      TEXT(head),        TEXT(tail)};

TEST(LabelsWithAPast, AnOsdTextIsThatOfAFreshLabel) {
    Chance chance(20240612);
    Pair<MoveOSDLabel> labels(false, false);
    labels.past->updateText(kFirstText);
    VideoOutputOSDParameter record{};
    record.visible = 1;
    record.font = 2;
    QRect cell = anyCell(chance);
    QString url = "rtsp://first";
    for (int round = 0; round < 400; ++round) {
        std::string what;
        const int choice = chance.in(0, 9);
        if (choice == 0) {
            cell = anyCell(chance);
        } else if (choice == 1) {
            url = QString::number(chance.in(0, INT_MAX));
        } else if (choice == 2) {
            labels.past->updateText("text from outside");
        } else {
            what = changeOne(record, kOsdChanges, chance);
        }
        ++record.Index;  // another record each time, so that it is not refused
        labels.renewFresh();
        labels.fresh->updateText(kFirstText);
        for (MoveOSDLabel *label : {labels.past.get(), labels.fresh.get()}) {
            label->setActualScreen(cell);
            ASSERT_TRUE(label->setOSD(&record, url));
            label->move(cell.topLeft());
            label->updateDateTime(kNoon);
            label->updateURLInfo(url);
            label->move(cell.topLeft());
        }
        ASSERT_NO_FATAL_FAILURE(
            labels.expectSame(std::to_string(round) + " " + std::to_string(choice) + what));
    }
}

constexpr Change<WatermarkPictureParameter> kPictureChanges[] = {SMALL(x, 0, 4000),
                                                                 SMALL(y, 0, 4000),
                                                                 NUMBER(x),
                                                                 NUMBER(y),
                                                                 NUMBER(w),
                                                                 NUMBER(h),
                                                                 SMALL(alpha, 0, 300),
                                                                 NUMBER(alpha),
                                                                 SMALL(sizemode, 0, 4),
                                                                 NUMBER(sizemode),
                                                                 SMALL(angle, -400, 400),
                                                                 NUMBER(angle),
                                                                 NUMBER(arramode),
                                                                 NUMBER(en),
                                                                 NUMBER(step),
                                                                 NUMBER(speed),
                                                                 NUMBER(direction),
                                                                 TEXT(if_name)};

void savePicture(const QString &path, Chance &chance) {
    QImage image(chance.in(1, 90), chance.in(1, 90),
                 chance.in(0, 1) != 0 ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    image.fill(QColor(chance.in(0, 255), chance.in(0, 255), 77, chance.in(0, 255)));
    image.setPixelColor(0, 0, Qt::white);
    ASSERT_TRUE(image.save(path, "PNG"));
}

TEST(LabelsWithAPast, APictureIsThatOfAFreshLabel) {
    Chance chance(20240613);
    const QTemporaryDir folder;
    const QString paths[] = {folder.filePath("one.png"), folder.filePath("two.png")};
    for (const QString &path : paths)
        savePicture(path, chance);
    Pair<MoveImageLabel> labels(false, false);
    WatermarkPictureParameter record{};
    record.visible = 1;
    record.alpha = 255;
    fill(record.file, QFile::encodeName(paths[0]).constData());
    QRect cell = anyCell(chance), space{0, 0, 8192, 8192};
    for (int round = 0; round < 400; ++round) {
        std::string what;
        const int choice = chance.in(0, 9);
        if (choice == 0) {
            cell = anyCell(chance);
        } else if (choice == 1) {
            space = {0, 0, chance.in(1, 9000), chance.in(1, 9000)};
        } else if (choice == 2) {
            savePicture(chance.of(paths), chance);
        } else if (choice == 3) {
            fill(record.file, QFile::encodeName(chance.of(paths)).constData());
        } else if (choice == 4) {
            WatermarkPictureParameter hidden{};
            labels.past->setImage(&hidden, 1);
        } else {
            what = changeOne(record, kPictureChanges, chance);
        }
        labels.renewFresh();
        for (MoveImageLabel *label : {labels.past.get(), labels.fresh.get()}) {
            label->setVirtualScreen(space);
            label->setActualScreen(cell);
            label->setImage(&record, 1);
        }
        ASSERT_NO_FATAL_FAILURE(
            labels.expectSame(std::to_string(round) + " " + std::to_string(choice) + what));
        // The labels share what was formed before, so the picture is also formed here.
        const auto bytes = picture_bytes(record.file);
        ASSERT_TRUE(bytes);
        const PictureForm form = picture_form(record, cell.size());
        ASSERT_EQ(
            labels.past->pixmap().toImage(),
            QPixmap::fromImage(formed_picture(decoded_picture(*bytes, "png"), form)).toImage())
            << round << " " << choice << what;
    }
}

/** Counts what costs: new styles, sizes and paint. */
class WorkCounter : public QObject {
public:
    explicit WorkCounter(QWidget *widget) { widget->installEventFilter(this); }
    bool eventFilter(QObject *, QEvent *event) override {
        if (event->type() == QEvent::StyleChange) ++styles;
        if (event->type() == QEvent::Resize) ++sizes;
        if (event->type() == QEvent::Move) ++moves;
        if (event->type() == QEvent::Paint) ++paints;
        return false;
    }
    int styles = 0, sizes = 0, moves = 0, paints = 0;
};

/** What `again` does once more costs nothing. */
void expectNoWork(LabelWindow &window, QWidget &label, const std::function<void()> &again) {
    again();
    window.settle();
    WorkCounter work(&label);
    again();
    window.settle();
    EXPECT_EQ(work.styles, 0);
    EXPECT_EQ(work.sizes, 0);
    EXPECT_EQ(work.moves, 0);
    EXPECT_EQ(work.paints, 0);
}

TEST(LabelsWithAPast, DoNoWorkForWhatTheyShowAlready) {
    LabelWindow window;
    WatermarkOSDParameter text{};
    text.visible = text.arrangement_mode = 1;
    text.font = 4;
    text.angle = 30;
    text.type1 = 1;
    fill(text.text1, "'a time that stays the same over many a tick'");
    fill(text.contet, "a text too wide for its line, which is wrapped by measure, and by far so");
    MoveWatermarkLabel watermark(&window, false);
    expectNoWork(window, watermark, [&] {
        watermark.setActualScreen({10, 10, 500, 900});
        watermark.setOSD(&text, 1);
        watermark.checkAndMove(0);
        watermark.checkIsVisible(true);
    });

    VideoOutputOSDParameter entry{};
    entry.visible = 1;
    fill(entry.content, "'noon'");
    entry.x = 8000;
    MoveOSDLabel osd(&window, false, false);
    expectNoWork(window, osd, [&] {
        osd.setActualScreen({10, 10, 500, 300});
        osd.setOSD(&entry, "");
        osd.updateDateTime(kNoon);
        osd.checkIsVisible(true);
    });

    const QTemporaryDir folder;
    Chance chance(1);
    savePicture(folder.filePath("one.png"), chance);
    WatermarkPictureParameter logo{};
    logo.visible = 1;
    logo.alpha = 200;
    logo.sizemode = 2;
    fill(logo.file, QFile::encodeName(folder.filePath("one.png")).constData());
    MoveImageLabel picture(&window, false, false);
    expectNoWork(window, picture, [&] {
        picture.setActualScreen({10, 10, 500, 300});
        picture.setImage(&logo, 1);
        picture.checkIsVisible(true);
    });
}

TEST(LabelsWithAPast, AnotherColourPaintsButSetsNoStyle) {
    LabelWindow window;
    WatermarkOSDParameter text{};
    text.visible = text.arrangement_mode = 1;
    fill(text.contet, "text");
    MoveWatermarkLabel watermark(&window, false);
    VideoOutputOSDParameter entry{};
    entry.visible = entry.type = 1;
    fill(entry.content, "text");
    MoveOSDLabel osd(&window, false, false);
    WorkCounter watermarkWork(&watermark), osdWork(&osd);
    const auto show = [&] {
        watermarkWork.styles = watermarkWork.paints = osdWork.styles = osdWork.paints = 0;
        watermark.setOSD(&text, 1);
        watermark.checkIsVisible(true);
        osd.setOSD(&entry, "");
        osd.checkIsVisible(true);
        window.settle();
    };
    show();
    text.forealpha = entry.forealpha = 200;
    show();
    for (const WorkCounter *work : {&watermarkWork, &osdWork}) {
        EXPECT_EQ(work->styles, 0);
        EXPECT_EQ(work->paints, 1);
    }
    text.bold = entry.bold = 1;
    show();
    for (const WorkCounter *work : {&watermarkWork, &osdWork})
        EXPECT_EQ(work->styles, 1);
}

}  // namespace
