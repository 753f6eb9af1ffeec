#include "test_digits.h"

#include <QColor>
#include <QRect>
#include <algorithm>
#include <string>

namespace vdevice {
namespace {

/** A segment in units of a digit cell that is 4 wide and 7 high, strokes 1 thick. */
struct SegmentCell {
    int x, y, width, height;
};

constexpr SegmentCell kSegments[] = {
    {0, 0, 4, 1},  // top
    {3, 0, 1, 4},  // upper right
    {3, 3, 1, 4},  // lower right
    {0, 6, 4, 1},  // bottom
    {0, 3, 1, 4},  // lower left
    {0, 0, 1, 4},  // upper left
    {0, 3, 4, 1},  // middle
};

/** Bit n: the n-th segment of the table above is lit. */
constexpr unsigned char kDigits[] = {0x3f, 0x06, 0x5b, 0x4f, 0x66, 0x6d, 0x7d, 0x07, 0x7f, 0x6f};

constexpr int kCellWidth = 4;
constexpr int kCellHeight = 7;
constexpr int kAdvance = 5;  // a cell and the gap behind it

void paint_digit(QPainter &painter, const QPoint &corner, int unit, int digit,
                 const QColor &colour) {
    for (size_t i = 0; i < std::size(kSegments); ++i) {
        if ((kDigits[digit] >> i & 1) == 0) continue;
        const SegmentCell &cell = kSegments[i];
        painter.fillRect(corner.x() + cell.x * unit, corner.y() + cell.y * unit, cell.width * unit,
                         cell.height * unit, colour);
    }
}

}  // namespace

void paint_number(QPainter &painter, const QPoint &centre, int height, int number) {
    const std::string digits = std::to_string(std::max(0, number));
    const int unit = std::max(1, height / kCellHeight);
    const int width = (int(digits.size()) * kAdvance - (kAdvance - kCellWidth)) * unit;
    const QPoint corner = centre - QPoint(width / 2, kCellHeight * unit / 2);
    const QPoint shadow(std::max(1, unit / 4), std::max(1, unit / 4));
    for (const auto &[offset, colour] :
         {std::pair(shadow, QColor(0, 0, 0)), std::pair(QPoint(0, 0), QColor(235, 235, 235))}) {
        for (size_t i = 0; i < digits.size(); ++i) {
            const QPoint place = corner + offset + QPoint(int(i) * kAdvance * unit, 0);
            paint_digit(painter, place, unit, digits[i] - '0', colour);
        }
    }
}

}  // namespace vdevice
