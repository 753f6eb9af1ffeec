/**
 * @file font_folder.h
 * The fonts of a folder, without fontconfig.
 *
 * Thread: the display thread.
 */
#ifndef WINDOW_SERVER_FONT_FOLDER_H
#define WINDOW_SERVER_FONT_FOLDER_H

#include <QtGui/private/qfreetypefontdatabase_p.h>
#include <QString>
#include <QStringList>

namespace qws {

enum class Depth { kFolderOnly, kWithSubfolders };

/**
 * The font files of a folder (ttf, ttc, otf, pfa, pfb in any case), sorted by path. Regular files
 * only: the folder may be /tmp/, where a FIFO would block. Nothing is opened. Empty when the folder
 * does not exist.
 */
QStringList fontFiles(const QString &folder, Depth depth);

/** The fonts that the application can name. */
class FontFolderDatabase : public QFreeTypeFontDatabase {
public:
    /** All of QT_QWS_FONTDIR; where that has no usable font, those of the fallback folder. */
    void populateFontDatabase() override;
    QString fontDir() const override;
    /** A family of plain upright text, for an application that names none. */
    QFont defaultFont() const override;
    /** Every family, proportional ones first, so that a missing one looks like text. */
    QStringList fallbacksForFamily(const QString &family, QFont::Style style,
                                   QFont::StyleHint styleHint, QChar::Script script) const override;

private:
    void add(const QStringList &files);

    QStringList m_families;
};

/** Families without doubles, fixed-width and styled ones (by their names) behind the others. */
QStringList plainFamiliesFirst(QStringList families);

}  // namespace qws

#endif
