/** @file app_gui_colors.cpp Colour texts: part of what the process offers to others. */

#include <cstdio>
#include <cstring>

#include "app_gui.h"

namespace {

struct Color {
    int red = 0;
    int green = 0;
    int blue = 0;
};

/** Value of a hexadecimal digit, -1 for another character; does not ask the locale. */
int digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

/** Two digits; negative when one of them is none. */
int component(const char *text) {
    const int high = digit(text[0]);
    const int low = digit(text[1]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

bool read_color(const char *text, Color *out) {
    constexpr size_t kLength = 7;
    if (!text || strnlen(text, kLength + 1) != kLength || text[0] != '#') return false;
    const Color color{component(text + 1), component(text + 3), component(text + 5)};
    if (color.red < 0 || color.green < 0 || color.blue < 0) return false;
    *out = color;
    return true;
}

}  // namespace

int check_color_is_valid(const char *text) {
    Color color;
    return read_color(text, &color) ? 1 : 0;
}

int check_color_is_same(const char *a, const char *b) {
    Color first;
    Color second;
    if (!read_color(a, &first) || !read_color(b, &second)) return 0;
    return first.red == second.red && first.green == second.green && first.blue == second.blue;
}

char *get_color_standard_name(char *dst, size_t size, const char *text, const int *alpha, int r,
                              int g, int b) {
    if (!dst) return dst;
    Color color{r, g, b};
    read_color(text, &color);
    if (alpha) {
        std::snprintf(dst, size, "#%02X%02X%02X%02X", static_cast<unsigned>(*alpha),
                      static_cast<unsigned>(color.red), static_cast<unsigned>(color.green),
                      static_cast<unsigned>(color.blue));
    } else {
        std::snprintf(dst, size, "#%02X%02X%02X", static_cast<unsigned>(color.red),
                      static_cast<unsigned>(color.green), static_cast<unsigned>(color.blue));
    }
    return dst;
}
