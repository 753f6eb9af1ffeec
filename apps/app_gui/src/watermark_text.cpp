#include "watermark_text.h"

#include <algorithm>
#include <cmath>

#include "label_geometry.h"

namespace {

constexpr double kPi = 3.1415926;

bool is_too_wide(int width, int limit, const TextMeasure &measure) {
    return measure.latin + width > limit;
}

bool is_printable_ascii(QChar character) {
    return character.unicode() >= 32 && character.unicode() <= 126;
}

bool is_ideograph(QChar character) {
    return character.unicode() >= 0x4E00 && character.unicode() <= 0x9FFF;
}

}  // namespace

int wrap_width(const QRect &cell, int arrangement) {
    const int64_t width = std::clamp<int64_t>(screen_width(cell), 0, INT32_MAX);
    switch (arrangement) {
        case 3:
            return static_cast<int>(width * 3 / 4);
        case 4:
            return static_cast<int>(width * 2 / 3);
        default:
            return static_cast<int>(width / 2);
    }
}

QString wrapped_once(const QString &text, int width, int limit, const TextMeasure &measure) {
    QString result = text;
    if (is_too_wide(width, limit, measure)) {
        result.insert(limit / std::max(measure.latin, 1), QLatin1Char('\n'));
    }
    return result;
}

QString wrapped_at_blanks(const QString &text, int width, int limit, const TextMeasure &measure) {
    QString result = text;
    if (is_too_wide(width, limit, measure)) result.replace(QLatin1Char(' '), QLatin1Char('\n'));
    return result;
}

QString joined_lines(const QString &first, const QString &contet, const QString &second) {
    QString text = first;
    for (const QString &part : {contet, second}) {
        if (part.isEmpty()) continue;
        if (!text.isEmpty()) text += QLatin1Char('\n');
        text += part;
    }
    return text;
}

MeasuredText wrapped_by_measure(const QString &label, const QString &contet, int limit,
                                const TextMeasure &measure) {
    MeasuredText result{label, static_cast<int>(label.count(QLatin1Char('\n'))) + 1, false};
    int64_t line = 0;
    int width = 0;
    for (int i = 0; i < contet.size(); ++i) {
        if (is_printable_ascii(contet[i])) {
            width = measure.latin;
        } else if (is_ideograph(contet[i])) {
            width = measure.ideograph;
            result.wide = true;
        }
        line += width;
        if (line <= limit) continue;
        result.text.insert(i + 1, QLatin1Char('\n'));
        ++result.lines;
        line = 0;
    }
    return result;
}

int turned_height(const QSize &label, int angle) {
    const double radians = angle % 360 * kPi / 180;
    return static_cast<int>(label.width() * std::abs(std::sin(radians)) +
                            label.height() * std::abs(std::cos(radians)));
}
