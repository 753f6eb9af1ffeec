#include "paint_memory.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace qws {
namespace {

constexpr QImage::Format kFormat = QImage::Format_ARGB32_Premultiplied;

TEST(PaintMemory, IsTransparentAndCanBePaintedToItsLastPixel) {
    constexpr QSize kSizes[] = {{1, 1}, {13, 7}, {724, 724}, {1920, 1080}, {3840, 2160}};
    for (const QSize &size : kSizes) {
        QImage image = transparentImage(size, kFormat);
        ASSERT_EQ(size, image.size());
        EXPECT_EQ(kFormat, image.format());
        const uchar *end = image.constBits() + image.sizeInBytes();
        EXPECT_TRUE(std::all_of(image.constBits(), end, [](uchar byte) { return byte == 0; }));
        const uchar *first = image.constBits();
        image.fill(Qt::red);
        EXPECT_EQ(first, image.constBits()) << "filling made a copy";
        EXPECT_EQ(QColor(Qt::red).rgba(), image.pixel(size.width() - 1, size.height() - 1));
    }
}

TEST(PaintMemory, OfACopyOutlivesTheImage) {
    QImage copy;
    {
        QImage image = transparentImage({100, 100}, kFormat);
        image.fill(Qt::blue);
        copy = image;
    }
    EXPECT_EQ(QColor(Qt::blue).rgba(), copy.pixel(99, 99));
}

TEST(PaintMemory, OfNoSizeIsNone) {
    for (const QSize &size : {QSize(), QSize(0, 5), QSize(5, 0), QSize(-1, -1)})
        EXPECT_TRUE(transparentImage(size, kFormat).isNull());
}

}  // namespace
}  // namespace qws
