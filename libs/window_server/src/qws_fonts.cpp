#include "window_server/qws_fonts.h"

#include <private/qfont_p.h>

namespace qws {

void dropFontCaches() {
    QFontCache::instance()->clear();
}

}  // namespace qws
