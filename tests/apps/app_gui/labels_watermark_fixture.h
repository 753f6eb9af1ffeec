/**
 * @file labels_watermark_fixture.h
 * A watermark text label in a transparent window, and the host's addresses as its tests set them.
 */
#ifndef TESTS_APP_GUI_LABELS_WATERMARK_FIXTURE_H
#define TESTS_APP_GUI_LABELS_WATERMARK_FIXTURE_H

#include <QFontMetrics>
#include <string>

#include "labels_fixture.h"
#include "movewatermark.h"

/** What the host answers in these tests, and how often it was asked. */
struct FakeHost {
    std::string macaddr = "00:1a:2b:3c:4d:5e";
    std::string ipaddr = "192.168.1.77";
    std::string lastInterface;
    int queries = 0;
};
inline FakeHost fakeHost;

inline WatermarkOSDParameter watermarkRecord(const char *contet) {
    WatermarkOSDParameter record{};
    record.visible = 1;
    record.font = 3;
    fill(record.forecolor, "#FF8000");
    record.forealpha = 255;
    fill(record.backcolor, "#0000FF");
    record.backalpha = 255;
    fill(record.contet, contet);
    record.arrangement_mode = 1;
    return record;
}

class WatermarkLabel : public testing::Test {
protected:
    WatermarkLabel() { fakeHost = {}; }

    /** The font that the label measures its text in. */
    static QFontMetrics measuring(const QString &contet, int points) {
        return QFontMetrics(QFont(contet, points));
    }

    LabelWindow mWindow;
    MoveWatermarkLabel mLabel{&mWindow, false};
};

#endif
