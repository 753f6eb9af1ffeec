/**
 * @file qws_fonts.h
 * What the toolkit keeps of the fonts in use.
 *
 * Thread: the display thread.
 */
#ifndef WINDOW_SERVER_QWS_FONTS_H
#define WINDOW_SERVER_QWS_FONTS_H

namespace qws {

/**
 * Frees the loaded fonts and the glyphs that were drawn with them. Every QFont stays valid and loads
 * anew what it needs. Not for use while something is being painted.
 *
 * The toolkit drops fonts that nothing uses at its leisure, but a font in use keeps every glyph it
 * ever drew, at every angle.
 */
void dropFontCaches();

}  // namespace qws

#endif
