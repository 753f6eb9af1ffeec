#include <sys/stat.h>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QPixmap>
#include <QTemporaryDir>
#include <QTransform>
#include <climits>

#include "labels_fixture.h"
#include "moveimage.h"
#include "picture_cache.h"

namespace {

/** A picture without two equal pixels, partly transparent. */
QImage gradient(int width, int height) {
    QImage image(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            image.setPixel(x, y, qRgba(x * 7 % 256, y * 11 % 256, (x + y) % 256, 55 + x * y % 200));
        }
    }
    return image;
}

QImage uniform(int width, int height, const QColor &color) {
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(color);
    return image;
}

class Picture : public testing::Test {
protected:
    Picture() {
        mWindow.resize(1920, 1080);
        mLabel.setVirtualScreen({0, 0, 8192, 8192});
        mLabel.setActualScreen({0, 0, 300, 200});
        mRecord.visible = 1;
        mRecord.alpha = 255;
    }

    QByteArray path(const char *name) const { return QFile::encodeName(mFolder.filePath(name)); }

    void save(const QImage &image, const char *name = "picture.png") {
        ASSERT_TRUE(image.save(mFolder.filePath(name)));
        fill(mRecord.file, path(name).constData());
    }

    void write(const QByteArray &bytes, const char *name) {
        QFile file(mFolder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        fill(mRecord.file, path(name).constData());
    }

    QImage shown() const {
        return mLabel.pixmap().toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    }

    /** Hands the record over and returns what went to standard error. */
    std::string errorsOf() {
        testing::internal::CaptureStderr();
        EXPECT_TRUE(mLabel.setImage(&mRecord, 1));
        return testing::internal::GetCapturedStderr();
    }

    QTemporaryDir mFolder;
    QWidget mWindow;
    MoveImageLabel mLabel{&mWindow, false, false};
    WatermarkPictureParameter mRecord{};
};

/** The rules of a picture's form once more, in pixmaps, copy by copy. */
QImage told(const QImage &loaded, const QSize &cell, int sizemode, int angle, int alpha) {
    const QPixmap picture = QPixmap::fromImage(loaded);
    QPixmap sized = picture;
    if (sizemode == 1) {
        sized = QPixmap(cell);
        sized.fill(Qt::transparent);
        QPainter painter(&sized);
        for (int y = 0; y < cell.height(); y += picture.height()) {
            for (int x = 0; x < cell.width(); x += picture.width())
                painter.drawPixmap(x, y, picture);
        }
    } else if (sizemode == 2) {
        sized = picture.scaled(cell, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    } else if (sizemode == 3) {
        sized = picture.scaled(cell, Qt::KeepAspectRatio, Qt::FastTransformation);
    }
    const QPixmap turned =
        sized.transformed(QTransform().rotate(angle % 180), Qt::SmoothTransformation);
    QPixmap result(turned.size());
    result.fill(Qt::transparent);
    QPainter painter(&result);
    painter.drawPixmap(0, 0, turned);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    painter.fillRect(result.rect(), QColor(0, 0, 0, std::clamp(alpha, 0, 255)));
    painter.end();
    return result.toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

TEST_F(Picture, IsSizedTurnedAndMadeTranslucentAsTold) {
    const QImage pictures[] = {gradient(37, 23), gradient(400, 250), gradient(1, 1),
                               gradient(64, 9).convertToFormat(QImage::Format_RGB32)};
    for (const QImage &picture : pictures) {
        save(picture);
        for (const int sizemode : {0, 1, 2, 3, 4, -1}) {
            for (const int angle : {0, 30, 90, 180, 270, 360, -45, 225}) {
                for (const int alpha : {255, 100, 0}) {
                    mRecord.sizemode = sizemode;
                    mRecord.angle = angle;
                    mRecord.alpha = alpha;
                    mLabel.setImage(&mRecord, 1);
                    const QImage expected = told(picture, {300, 200}, sizemode, angle, alpha);
                    ASSERT_EQ(mLabel.size(), expected.size());
                    ASSERT_EQ(shown(), expected) << picture.width() << " mode " << sizemode
                                                 << " angle " << angle << " alpha " << alpha;
                }
            }
        }
    }
}

TEST_F(Picture, AnglesCountModulo180) {
    save(gradient(30, 10));
    const auto at = [this](int angle) {
        mRecord.angle = angle;
        mLabel.setImage(&mRecord, 1);
        return shown();
    };
    const QImage upright = at(0);
    EXPECT_EQ(at(180), upright);
    EXPECT_EQ(at(360), upright);
    const QImage turned = at(90);
    EXPECT_EQ(turned.size(), QSize(10, 30));
    EXPECT_EQ(at(270), turned);
    EXPECT_NE(at(-90), turned) << "a negative angle keeps its sign";
    at(INT_MIN);
    at(INT_MAX);
}

TEST_F(Picture, AlphasBeyondTheirRangeAreCut) {
    save(uniform(4, 4, QColor(200, 100, 50, 255)));
    mRecord.alpha = 1000;
    mLabel.setImage(&mRecord, 1);
    EXPECT_EQ(qAlpha(shown().pixel(1, 1)), 255);
    for (const int none : {0, -1, INT_MIN}) {
        mRecord.alpha = none;
        mLabel.setImage(&mRecord, 1);
        EXPECT_EQ(shown().pixel(1, 1), 0u);
        EXPECT_EQ(mLabel.size(), QSize(4, 4)) << "it still takes its size";
        EXPECT_TRUE(mLabel.checkIsVisible(true));
    }
}

TEST_F(Picture, ALargePictureTiledGivesOneCutCopy) {
    const QImage picture = gradient(500, 400);
    save(picture);
    mRecord.sizemode = 1;
    mLabel.setImage(&mRecord, 1);
    EXPECT_EQ(shown(),
              picture.copy(0, 0, 300, 200).convertToFormat(QImage::Format_ARGB32_Premultiplied));
}

TEST_F(Picture, LiesAtTheRecordsPosition) {
    save(gradient(5, 5));
    mLabel.setVirtualScreen({4096, 0, 4096, 4096});
    mLabel.setActualScreen({960, 0, 960, 540});
    mRecord.x = 1024;
    mRecord.y = 2048;
    mLabel.setImage(&mRecord, 1);
    EXPECT_EQ(mLabel.pos(), QPoint(960 + 240, 270));
    mRecord.x = -1024;
    mRecord.y = -1;
    mLabel.setImage(&mRecord, 1);
    EXPECT_EQ(mLabel.pos(), QPoint(960 - 240, 0));
}

TEST_F(Picture, AnotherCellMakesItAnew) {
    save(gradient(5, 5));
    mRecord.sizemode = 2;
    mRecord.x = 4096;
    mLabel.setImage(&mRecord, 1);
    EXPECT_EQ(mLabel.size(), QSize(300, 200));
    EXPECT_TRUE(mLabel.setActualScreen({10, 20, 100, 50}));
    EXPECT_EQ(mLabel.size(), QSize(100, 50));
    EXPECT_EQ(mLabel.pos(), QPoint(60, 20));
}

TEST_F(Picture, AnInvisibleRecordAndOneWithoutFileLeaveItAsItWas) {
    save(gradient(5, 5));
    mLabel.setImage(&mRecord, 1);
    const QImage before = shown();
    mLabel.move(77, 88);
    mRecord.visible = 0;
    EXPECT_EQ(errorsOf(), "");
    EXPECT_EQ(shown(), before);
    EXPECT_EQ(mLabel.pos(), QPoint(77, 88));
    EXPECT_FALSE(mLabel.checkIsVisible(true)) << "the record hides it";
    mRecord.visible = 1;
    fill(mRecord.file, "");
    EXPECT_EQ(errorsOf(), "");
    EXPECT_EQ(shown(), before);
    EXPECT_TRUE(mLabel.checkIsVisible(true));
}

TEST_F(Picture, IsVisibleWithARecordAPictureAndARequest) {
    EXPECT_FALSE(mLabel.checkIsVisible(true)) << "no record";
    mRecord.visible = 1;
    mLabel.setImage(&mRecord, 1);
    EXPECT_FALSE(mLabel.checkIsVisible(true)) << "no picture";
    save(gradient(5, 5));
    mLabel.setImage(&mRecord, 1);
    EXPECT_FALSE(mLabel.checkIsVisible(false));
    EXPECT_TRUE(mLabel.isHidden());
    EXPECT_TRUE(mLabel.checkIsVisible(true));
    EXPECT_FALSE(mLabel.isHidden());
}

TEST_F(Picture, AFileThatDoesNotLoadLeavesItAsItWasAfterAnErrorLine) {
    save(gradient(5, 5));
    mLabel.setImage(&mRecord, 1);
    const QImage before = shown();
    mLabel.move(77, 88);
    const QByteArray truncated = [] {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        gradient(50, 50).save(&buffer, "PNG");
        return buffer.data().left(30);
    }();
    const struct {
        const char *name;
        QByteArray bytes;
    } rows[] = {{"text.png", "this is no picture"},
                {"empty.png", ""},
                {"cut.png", truncated},
                {"huge.ppm", "P6 60000 60000 255\n"},
                {"none.xyz", QByteArray(9, '\0')}};
    for (const auto &row : rows) {
        write(row.bytes, row.name);
        const std::string expected = "load " + path(row.name).toStdString() + " failed!\n\033[0m";
        const std::string errors = errorsOf();
        EXPECT_NE(errors.find(expected), std::string::npos) << errors;
        EXPECT_NE(errors.find("\033[1;31m<ERROR! "), std::string::npos);
        EXPECT_NE(errors.find("moveimage.cpp:"), std::string::npos);
        EXPECT_EQ(shown(), before) << row.name;
        EXPECT_EQ(mLabel.pos(), QPoint(77, 88));
    }
}

TEST_F(Picture, WhatIsNoRegularFileIsNotOpened) {
    ASSERT_EQ(mkfifo(path("pipe.png").constData(), 0600), 0);
    ASSERT_TRUE(QDir(mFolder.path()).mkdir("folder.png"));
    for (const QByteArray &name : {path("pipe.png"), path("folder.png"), path("missing.png"),
                                   QByteArray("/dev/zero"), QByteArray("/dev/fd/0/x")}) {
        fill(mRecord.file, name.constData());
        EXPECT_NE(errorsOf().find("load " + name.toStdString() + " failed!\n"), std::string::npos);
    }
    EXPECT_TRUE(mLabel.pixmap().isNull());
}

TEST_F(Picture, AFilesBytesTakeNoMoreRoomThanTheFile) {
    write(QByteArray(1000, 'x'), "small.png");
    const std::optional<QByteArray> bytes = picture_bytes(path("small.png"));
    ASSERT_TRUE(bytes);
    EXPECT_EQ(*bytes, QByteArray(1000, 'x'));
    EXPECT_LT(bytes->capacity(), 4096);
}

TEST_F(Picture, ALinkToAPictureIsFollowed) {
    save(gradient(5, 5));
    ASSERT_TRUE(QFile::link(mFolder.filePath("picture.png"), mFolder.filePath("link.png")));
    fill(mRecord.file, path("link.png").constData());
    EXPECT_EQ(errorsOf(), "");
    EXPECT_EQ(mLabel.size(), QSize(5, 5));
}

TEST_F(Picture, NamesAreTakenAsBytesAndElseAsLatin1) {
    const QImage picture = gradient(6, 3);
    const QByteArray utf8 = path("") + "/\xc3\xa9.png";
    ASSERT_TRUE(picture.save(QFile::decodeName(utf8)));
    fill(mRecord.file, utf8.constData());
    EXPECT_EQ(errorsOf(), "") << "UTF-8 as it is";
    fill(mRecord.file, (path("") + "/\xe9.png").constData());
    EXPECT_EQ(errorsOf(), "") << "Latin-1 of the same name";
    EXPECT_EQ(mLabel.size(), QSize(6, 3));
}

TEST_F(Picture, NamesMayLackTheSuffixOfAPicturesFormat) {
    ASSERT_TRUE(gradient(6, 3).save(mFolder.filePath("logo.png")));
    fill(mRecord.file, path("logo").constData());
    EXPECT_EQ(errorsOf(), "");
    EXPECT_EQ(mLabel.size(), QSize(6, 3));
    ASSERT_TRUE(gradient(9, 4).save(mFolder.filePath("logo"), "PNG"));
    EXPECT_EQ(errorsOf(), "") << "the name itself comes first";
    EXPECT_EQ(mLabel.size(), QSize(9, 4));
    write("no picture", "notes.txt");
    fill(mRecord.file, path("notes").constData());
    EXPECT_NE(errorsOf(), "") << "not any suffix";
}

TEST_F(Picture, OfTheProcesssOwnResourcesIsShown) {
    const QImage arrow(QStringLiteral(":/resources/picture/cursor_arrow.png"));
    ASSERT_FALSE(arrow.isNull());
    fill(mRecord.file, ":/resources/picture/cursor_arrow.png");
    EXPECT_EQ("", errorsOf());
    EXPECT_EQ(arrow.size(), mLabel.pixmap().size());
    EXPECT_FALSE(picture_bytes(":/resources/picture/none.png"));
}

TEST_F(Picture, TurnedBeyondTheReadersLimitLeavesItAsItWas) {
    QImage large(5700, 5700, QImage::Format_Mono);
    large.fill(1);
    save(large);
    mRecord.angle = 45;
    EXPECT_NE(errorsOf().find("picture.png failed!"), std::string::npos);
    EXPECT_TRUE(mLabel.pixmap().isNull());
}

TEST_F(Picture, APathWithoutNulIsNoFile) {
    fillWhole(mRecord.file, 'x');
    EXPECT_NE(errorsOf().find("load " + std::string(256, 'x') + " failed!\n"), std::string::npos);
}

TEST_F(Picture, AnyFormatIsReadWhateverItsNameSays) {
    const QImage picture = gradient(20, 10).convertToFormat(QImage::Format_RGB32);
    for (const char *format : {"PNG", "BMP", "PPM", "XPM"}) {
        for (const char *name : {"a.png", "b.jpg", "c", "d.PNG"}) {
            ASSERT_TRUE(picture.save(mFolder.filePath(name), format));
            fill(mRecord.file, path(name).constData());
            EXPECT_EQ(errorsOf(), "") << format << " as " << name;
            EXPECT_EQ(shown(), picture.convertToFormat(QImage::Format_ARGB32_Premultiplied))
                << format << " as " << name;
        }
    }
}

TEST_F(Picture, AReplacedFileIsSeenAtOnce) {
    const QColor colors[] = {Qt::red, Qt::green, Qt::blue, Qt::red, Qt::white};
    for (const QColor &color : colors) {
        save(uniform(8, 8, color), "same.bmp");
        mLabel.setImage(&mRecord, 1);
        EXPECT_EQ(QColor(shown().pixel(3, 3)), color);
    }
}

TEST_F(Picture, LabelsThatAreLaidOutTogetherReadAFileOnce) {
    save(uniform(8, 8, Qt::red), "same.bmp");
    {
        const OneReading reading;
        mLabel.setImage(&mRecord, 1);
        save(uniform(8, 8, Qt::green), "same.bmp");
        mLabel.setImage(&mRecord, 1);
        EXPECT_EQ(QColor(shown().pixel(3, 3)), QColor(Qt::red));
        save(uniform(8, 8, Qt::blue), "other.bmp");
        mLabel.setImage(&mRecord, 1);
        EXPECT_EQ(QColor(shown().pixel(3, 3)), QColor(Qt::blue));
        fill(mRecord.file, path("none.bmp").constData());
        EXPECT_NE(errorsOf(), "");
    }
    fill(mRecord.file, path("same.bmp").constData());
    mLabel.setImage(&mRecord, 1);
    EXPECT_EQ(QColor(shown().pixel(3, 3)), QColor(Qt::green));
}

TEST_F(Picture, ALabelThatShowsTheSameIsNotRepainted) {
    LabelWindow window;
    MoveImageLabel label(&window, false, false);
    save(gradient(50, 50));
    label.setImage(&mRecord, 1);
    label.checkIsVisible(true);
    window.settle();
    PaintCounter paints(&label);
    label.setImage(&mRecord, 1);
    label.checkIsVisible(true);
    label.checkAndMove(1);
    window.settle();
    EXPECT_EQ(paints.count, 0);
    mRecord.alpha = 100;
    label.setImage(&mRecord, 1);
    window.settle();
    EXPECT_EQ(paints.count, 1);
}

TEST_F(Picture, LabelsOfOneSizeShareOnePicture) {
    save(gradient(50, 50));
    MoveImageLabel other(&mWindow, false, false);
    other.setActualScreen({900, 500, 300, 200});
    mLabel.setImage(&mRecord, 1);
    other.setImage(&mRecord, 1);
    EXPECT_EQ(mLabel.pixmap().cacheKey(), other.pixmap().cacheKey());
    other.setActualScreen({900, 500, 301, 200});
    mRecord.sizemode = 2;
    mLabel.setImage(&mRecord, 1);
    other.setImage(&mRecord, 1);
    EXPECT_NE(mLabel.size(), other.size());
}

TEST_F(Picture, ACellWithoutPixelsOrUnitsShowsNothing) {
    save(gradient(50, 50));
    for (const int sizemode : {1, 2, 3}) {
        mRecord.sizemode = sizemode;
        mLabel.setActualScreen({0, 0, 300, 200});
        mLabel.setImage(&mRecord, 1);
        EXPECT_TRUE(mLabel.checkIsVisible(true));
        mLabel.setActualScreen({10, 10, 0, 200});
        mLabel.setImage(&mRecord, 1);
        EXPECT_FALSE(mLabel.checkIsVisible(true)) << sizemode;
    }
    mLabel.setActualScreen({0, 0, 300, 200});
    mLabel.setImage(&mRecord, 1);
    EXPECT_TRUE(mLabel.checkIsVisible(true));
    mLabel.setVirtualScreen({0, 0, 0, 8192});
    mLabel.setImage(&mRecord, 1);
    EXPECT_FALSE(mLabel.checkIsVisible(true));
}

TEST_F(Picture, ScrollsOnlyWhenVisibleAndEnabled) {
    save(gradient(10, 10));
    const struct {
        int visible, en, speed, tick;
        bool moves;
    } rows[] = {{1, 1, 0, 7, true},  {1, 1, 1, 7, true},  {1, 1, 2, 7, false}, {1, 1, 2, 8, true},
                {1, 0, 1, 8, false}, {1, 2, 1, 8, false}, {2, 1, 1, 8, false}, {0, 1, 1, 8, false}};
    for (const auto &row : rows) {
        mRecord.visible = row.visible;
        mRecord.en = row.en;
        mRecord.speed = row.speed;
        mRecord.step = 5;
        mLabel.setImage(&mRecord, 1);
        mLabel.move(50, 60);
        mLabel.checkAndMove(row.tick);
        EXPECT_EQ(mLabel.pos() != QPoint(50, 60), row.moves) << row.visible << row.en << row.speed;
    }
}

TEST_F(Picture, BouncesBetweenTheEdgesOfItsCell) {
    save(gradient(10, 10));
    mRecord.en = 1;
    mRecord.step = 100;
    mLabel.setImage(&mRecord, 1);
    std::vector<int> walk;
    for (int tick = 0; tick < 7; ++tick) {
        mLabel.checkAndMove(tick);
        walk.push_back(mLabel.x());
    }
    EXPECT_EQ(walk, (std::vector<int>{100, 200, 289, 189, 89, 0, 100}));
    mLabel.setImage(&mRecord, 1);
    mLabel.move(150, 0);
    mLabel.checkAndMove(0);
    EXPECT_EQ(mLabel.x(), 250);
    mLabel.checkAndMove(1);
    mLabel.setImage(&mRecord, 1);
    mLabel.move(150, 0);
    mLabel.checkAndMove(2);
    EXPECT_EQ(mLabel.x(), 50) << "a record does not turn a picture forward again";
}

TEST_F(Picture, AnyNumberInTheRecordDoesNoHarm) {
    save(gradient(10, 10));
    for (const int number : {INT_MIN, -1, 0, 1, INT_MAX}) {
        mRecord.x = mRecord.y = mRecord.w = mRecord.h = number;
        mRecord.alpha = mRecord.sizemode = mRecord.angle = mRecord.arramode = number;
        mRecord.step = mRecord.speed = mRecord.direction = number;
        mRecord.en = mRecord.visible = 1;
        mLabel.setImage(&mRecord, number);
        for (const int tick : {INT_MIN, -1, 0, 1, INT_MAX})
            mLabel.checkAndMove(tick);
        mLabel.checkIsVisible(true);
    }
}

}  // namespace
